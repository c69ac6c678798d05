#pragma once

// The PDF writer for `export pdf`, opened from the module installed beside
// the program the first time a PDF is written (pdf/CMakeLists.txt says why
// it isn't linked).

#include <cstddef>
#include <filesystem>
#include <string>

#include "core/presentation/pdf_report_content.h"
#include "core/presentation/skin.h"

namespace copperwick::cli::PDFWriter {

// Empty once the writer is open; otherwise why it can't be, worded to follow
// "Couldn't save the PDF: ".
[[nodiscard]] std::string openFailure();

// As ReportPDF::write: the page count, or PDFExportError. Only once
// openFailure() is empty.
std::size_t write(const PDFReportContent& content, PDFReportStyle style, Skin skin,
                  const std::filesystem::path& file);

}  // namespace copperwick::cli::PDFWriter
