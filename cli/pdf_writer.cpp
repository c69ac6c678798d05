#include "cli/pdf_writer.h"

#include <cstring>
#include <stdexcept>
#include <system_error>

#include <dlfcn.h>

#include "copperwick_version.h"
#include "pdf/module/pdf_writer_entry.h"

namespace copperwick::cli::PDFWriter {

namespace {

namespace fs = std::filesystem;
namespace entry = pdf_writer_entry;

// Thrown for a failure that came back without words, so that the command
// ends as it does for any exception it doesn't know.
struct Unrecognised {};

struct Opened {
    entry::Write write = nullptr;
    std::string failure;
};

Opened open() {
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (error)
        return {.failure = "this program's own folder couldn't be found"};
    // The same place relative to the program, installed and in a build.
    const fs::path module =
        (program.parent_path() / COPPERWICK_PDF_WRITER_FROM_PROGRAM).lexically_normal();
    void* handle = ::dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        const char* detail = ::dlerror();
        if (!fs::exists(module, error))
            return {.failure = "the PDF writer isn't installed at " + module.string()};
        return {.failure = "the PDF writer couldn't be opened (" +
                           std::string(detail ? detail : "no reason given") + ")"};
    }
    const auto version = reinterpret_cast<entry::Version>(::dlsym(handle, entry::kVersionSymbol));
    const auto write = reinterpret_cast<entry::Write>(::dlsym(handle, entry::kWriteSymbol));
    if (!version || !write || std::strcmp(version(), COPPERWICK_VERSION) != 0) {
        ::dlclose(handle);
        return {.failure = "the PDF writer at " + module.string() +
                           " belongs to another version of Copperwick"};
    }
    // Kept open for the life of the process: Pango's font map outlives a write.
    return {.write = write};
}

const Opened& opened() {
    static const Opened once = open();
    return once;
}

}  // namespace

std::string openFailure() {
    return opened().failure;
}

std::size_t write(const PDFReportContent& content, PDFReportStyle style, Skin skin,
                  const std::filesystem::path& file) {
    if (!opened().write)
        throw PDFExportError();
    std::size_t pages = 0;
    std::string failure;
    switch (opened().write(content, style, skin, file, pages, failure)) {
        case entry::Written::saved:
            return pages;
        case entry::Written::notSaved:
            throw PDFExportError();
        case entry::Written::interrupted:
            break;
    }
    // As the writer linked in would have ended the command: in the
    // exception's own words, or as an error nobody recognises.
    if (failure.empty())
        throw Unrecognised{};
    throw std::runtime_error(failure);
}

}  // namespace copperwick::cli::PDFWriter
