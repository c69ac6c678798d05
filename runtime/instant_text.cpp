#include "runtime/instant_text.h"

#include <memory>

#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

namespace copperwick {

std::string abbreviatedDateTime(Instant instant) {
    UErrorCode status = U_ZERO_ERROR;
    icu::SimpleDateFormat format(icu::UnicodeString("MMM d, y 'at' h:mm a"), icu::Locale("en_US"),
                                 status);
    if (U_FAILURE(status))
        return {};
    format.adoptTimeZone(icu::TimeZone::createDefault());
    icu::UnicodeString text;
    format.format(instant.unixSeconds() * 1000.0, text);
    std::string out;
    return text.toUTF8String(out);
}

}  // namespace copperwick
