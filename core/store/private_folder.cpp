#include "core/store/private_folder.h"

#include <cerrno>
#include <system_error>
#include <vector>

#include <sys/stat.h>

#include "core/store/store_error.h"

namespace copperwick {

void createPrivateFolder(const std::filesystem::path& folder) {
    if (folder.empty())
        return;
    std::vector<std::filesystem::path> missing;
    for (auto path = folder; !path.empty(); path = path.parent_path()) {
        std::error_code error;
        if (std::filesystem::exists(path, error))
            break;
        missing.push_back(path);
        if (path == path.parent_path())
            break;
    }
    for (auto it = missing.rbegin(); it != missing.rend(); ++it) {
        // mkdir honours the umask, so set the mode again once the folder is there.
        if (::mkdir(it->c_str(), 0700) != 0 && errno != EEXIST) {
            throw FileError("Copperwick couldn't create the folder " + it->string() + ": " +
                            std::generic_category().message(errno));
        }
        ::chmod(it->c_str(), 0700);
    }
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error)) {
        throw FileError("Copperwick couldn't use the folder " + folder.string() +
                        ": it isn't a folder");
    }
}

}  // namespace copperwick
