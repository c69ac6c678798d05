#include "core/model/ledger_settings.h"

#include <unicode/timezone.h>
#include <unicode/ucal.h>
#include <unicode/unistr.h>

#include "core/model/text.h"

namespace copperwick {

namespace {

// ICU answers an unknown identifier with its "Etc/Unknown" zone rather than
// with nothing; that zone is GMT in disguise, so treat it as a miss.
std::unique_ptr<icu::TimeZone> knownZone(std::string_view id) {
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(text::toUnicode(id)));
    if (!zone)
        return nullptr;
    icu::UnicodeString resolved;
    zone->getID(resolved);
    if (resolved == icu::UnicodeString(UCAL_UNKNOWN_ZONE_ID))
        return nullptr;
    return zone;
}

}  // namespace

std::unique_ptr<icu::TimeZone> LedgerSettings::timeZone() const {
    if (auto zone = knownZone(timeZoneID))
        return zone;
    if (auto zone = knownZone(kDefaultTimeZoneID))
        return zone;
    return std::unique_ptr<icu::TimeZone>(icu::TimeZone::createDefault());
}

}  // namespace copperwick
