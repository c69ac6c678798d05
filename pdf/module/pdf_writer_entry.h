#pragma once

// The PDF writer module's face: two C-named functions that a program finds
// with dlsym. Nothing is thrown across it; the module is built from the same
// headers as its program, and says which version it was built as, so that a
// program never calls a writer of another build's types.

#include <cstddef>
#include <filesystem>
#include <string>

#include "core/presentation/pdf_report_content.h"
#include "core/presentation/skin.h"

namespace copperwick::pdf_writer_entry {

inline constexpr const char* kVersionSymbol = "copperwick_pdf_writer_version";
inline constexpr const char* kWriteSymbol = "copperwick_pdf_writer_write";

// The version the module was built as (COPPERWICK_VERSION).
using Version = const char* (*)();

// What became of a write.
enum class Written : int {
    saved,        // `pages` is set
    notSaved,     // ReportPDF::write threw PDFExportError
    interrupted,  // anything else was thrown; `failure` holds its what(), if it had one
};

// ReportPDF::write, its outcome as a value rather than thrown.
using Write = Written (*)(const PDFReportContent& content, PDFReportStyle style, Skin skin,
                          const std::filesystem::path& file, std::size_t& pages,
                          std::string& failure);

}  // namespace copperwick::pdf_writer_entry
