// Stored records of every kind from any bytes: decoding never crashes, and a
// record that decodes encodes to text that decodes to the same record.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "core/model/record_json.h"

namespace {

template <typename T>
void roundTrip(std::string_view text) {
    using namespace copperwick;
    const auto decoded = record_json::decode<T>(text);
    if (!decoded)
        return;
    const auto again = record_json::decode<T>(record_json::encode(*decoded.value));
    if (!again)
        std::abort();
    // Instants may be NaN-free doubles only; compare through their encoding.
    if (record_json::encode(*again.value) != record_json::encode(*decoded.value))
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace copperwick;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    roundTrip<LedgerTransaction>(text);
    roundTrip<Person>(text);
    roundTrip<Account>(text);
    roundTrip<LedgerCategory>(text);
    roundTrip<Merchant>(text);
    roundTrip<Rule>(text);
    roundTrip<ImportBatch>(text);
    roundTrip<Budget>(text);
    roundTrip<ChangeSet>(text);
    roundTrip<ImportProfile>(text);
    roundTrip<AIFiling>(text);
    roundTrip<LedgerSettings>(text);
    return 0;
}
