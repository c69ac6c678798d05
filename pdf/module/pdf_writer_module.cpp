#include <exception>
#include <string>
#include <type_traits>

#include "copperwick_version.h"
#include "pdf/module/pdf_writer_entry.h"
#include "pdf/report_pdf.h"

namespace entry = copperwick::pdf_writer_entry;

extern "C" {

[[gnu::visibility("default")]] const char* copperwick_pdf_writer_version() {
    return COPPERWICK_VERSION;
}

[[gnu::visibility("default")]] entry::Written copperwick_pdf_writer_write(
    const copperwick::PDFReportContent& content, copperwick::PDFReportStyle style,
    copperwick::Skin skin, const std::filesystem::path& file, std::size_t& pages,
    std::string& failure) {
    // An exception's type is matched by name across a module's edge only
    // when both sides agree on how; a plain answer needs no agreement.
    try {
        pages = copperwick::ReportPDF::write(content, style, skin, file);
        return entry::Written::saved;
    } catch (const copperwick::PDFExportError&) {
        return entry::Written::notSaved;
    } catch (const std::exception& error) {
        failure = error.what();
    } catch (...) {
        failure.clear();  // nothing to say what it was
    }
    return entry::Written::interrupted;
}

}  // extern "C"

// Both functions have exactly the types the program looks them up as.
static_assert(std::is_same_v<decltype(&copperwick_pdf_writer_version), entry::Version>);
static_assert(std::is_same_v<decltype(&copperwick_pdf_writer_write), entry::Write>);
