#pragma once

// A report as a printable PDF: US Letter pages in one of three styles,
// coloured by a skin's print palette. The pages are composed first
// (PDFLayout) and then drawn through Cairo's PDF surface.
//
// Safe to call on any thread, one PDF per thread at a time: the fonts come
// from that thread's own Pango font map.

#include <cstddef>
#include <filesystem>
#include <string>

#include "core/presentation/pdf_report_content.h"
#include "core/presentation/skin.h"

namespace copperwick::ReportPDF {

// The PDF's bytes, titled "Copperwick · " and the period, made by
// "Copperwick", with the scope and the style as its subject. Throws
// PDFExportError when no PDF surface can be made.
[[nodiscard]] std::string data(const PDFReportContent& content, PDFReportStyle style, Skin skin);

// Saves the PDF at `file` whole or not at all (written beside it, synced,
// then moved into place; nothing is left behind on failure) and says how
// many pages it has. Any failure throws PDFExportError.
std::size_t write(const PDFReportContent& content, PDFReportStyle style, Skin skin,
                  const std::filesystem::path& file);

}  // namespace copperwick::ReportPDF
