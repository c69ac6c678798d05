#pragma once

// The PDF writer module's face: two C-named functions that a program finds
// with dlsym. Nothing is thrown across it; the module is built from the same
// headers as its program, and says which version it was built as, so that a
// program never calls a writer of another build's types.

#include <cstddef>
#include <filesystem>

#include "core/presentation/pdf_report_content.h"
#include "core/presentation/skin.h"

namespace copperwick::pdf_writer_entry {

inline constexpr const char* kVersionSymbol = "copperwick_pdf_writer_version";
inline constexpr const char* kWriteSymbol = "copperwick_pdf_writer_write";

// The version the module was built as (COPPERWICK_VERSION).
using Version = const char* (*)();

// ReportPDF::write: true with `pages` set when the file was saved whole,
// false when it wasn't (PDFExportError's case, and any other failure).
using Write = bool (*)(const PDFReportContent& content, PDFReportStyle style, Skin skin,
                       const std::filesystem::path& file, std::size_t& pages);

}  // namespace copperwick::pdf_writer_entry
