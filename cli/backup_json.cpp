#include "cli/backup_json.h"

#include <boost/json/object.hpp>

#include "core/model/money.h"
#include "runtime/instant_text.h"

namespace copperwick::cli {

boost::json::value backupJSON(const BackupManager::Info& backup) {
    return boost::json::object{{"url", backup.url.string()},
                               {"date", backup.date.secondsSinceReference},
                               {"bytes", backup.bytes},
                               {"reason", backup.reason}};
}

std::string backupLine(const BackupManager::Info& backup) {
    return abbreviatedDateTime(backup.date) + " \u00B7 " + backup.reason + " \u00B7 " +
           Money::grouped(static_cast<uint64_t>(backup.bytes)) + " bytes \u00B7 " +
           backup.url.string();
}

}  // namespace copperwick::cli
