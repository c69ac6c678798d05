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
    // which sits in the source tree. Installed, the samples are data beside
    // the program's bin folder, wherever the package put both, and last in
    // the place the build was configured for.
    const std::filesystem::path program = localPath(QCoreApplication::applicationDirPath());
    const std::filesystem::path candidates[] = {
        program / ".." / ".." / "samples",
        program / ".." / "share" / "copperwick" / "samples",
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
