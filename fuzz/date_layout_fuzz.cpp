// DateLayout parsing and detection on any text: whatever is read is a real
// day within the checked range, and its ISO form reads back to the same day.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/model/date_layout.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace copperwick;
    const std::string text(reinterpret_cast<const char*>(data), size);
    for (const DateLayout layout : allCases<DateLayout>()) {
        const auto date = parseDate(layout, text);
        if (!date)
            continue;
        if (date->year < 1900 || date->year > 2200 ||
            date->day > LocalDate::daysInMonth(date->year, date->month))
            std::abort();
        if (LocalDate::fromISO(date->iso()) != date)
            std::abort();
    }
    // A month name reads the same day under every layout.
    if (const auto named = parseNamedMonthDate(text)) {
        for (const DateLayout layout : allCases<DateLayout>()) {
            if (parseDate(layout, text) != named)
                std::abort();
        }
    }
    std::vector<std::string> samples;
    std::string piece;
    for (const char c : text) {
        if (c == '\n') {
            samples.push_back(piece);
            piece.clear();
        } else {
            piece.push_back(c);
        }
    }
    samples.push_back(piece);
    (void)detectDateLayout(samples);
    return 0;
}
