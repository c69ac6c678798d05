#include "app/import/bundled_samples.h"

#include <system_error>

#include <QCoreApplication>

#include "app/import/file_panels.h"

#ifndef COPPERWICK_SAMPLES_INSTALL_DIR
#define COPPERWICK_SAMPLES_INSTALL_DIR "/usr/local/share/copperwick/samples"
#endif

namespace copperwick::app {

std::optional<std::filesystem::path> samplesFolder() {
    // A program of the build tree sits one folder down in the build folder,
    // which sits in the source tree; installed, the samples are data.
    const std::filesystem::path candidates[] = {
        localPath(QCoreApplication::applicationDirPath()) / ".." / ".." / "samples",
        std::filesystem::path(COPPERWICK_SAMPLES_INSTALL_DIR),
    };
    for (const auto& candidate : candidates) {
        std::error_code error;
        if (std::filesystem::is_regular_file(candidate / "chase-checking.csv", error))
            return candidate.lexically_normal();
    }
    return std::nullopt;
}

}  // namespace copperwick::app
