#include "pdf/report_pdf.h"

#include <memory>
#include <utility>

#include <cairo-pdf.h>
#include <cairo.h>

#include "core/model/file_output.h"
#include "pdf/page_painter.h"
#include "pdf/pdf_layout.h"
#include "pdf/text_measure.h"

namespace copperwick::ReportPDF {

namespace {

cairo_status_t append(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

struct SurfaceDeleter {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
struct ContextDeleter {
    void operator()(cairo_t* cairo) const { cairo_destroy(cairo); }
};

struct Made {
    std::string bytes;
    std::size_t pages = 0;
};

Made make(const PDFReportContent& content, PDFReportStyle style, Skin skin) {
    using pdf::PDFLayout;
    std::string bytes;
    const std::unique_ptr<cairo_surface_t, SurfaceDeleter> surface(
        cairo_pdf_surface_create_for_stream(append, &bytes, PDFLayout::kPageWidth,
                                            PDFLayout::kPageHeight));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
        throw PDFExportError();
    const std::string title = "Copperwick \u00B7 " + content.report.filter.span.label();
    const std::string subject =
        content.report.scopeLabel + " \u00B7 " + std::string(rawValue(style));
    cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_TITLE, title.c_str());
    cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_CREATOR, "Copperwick");
    cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_SUBJECT, subject.c_str());

    const pdf::TextMeasure measure;
    PDFLayout layout(content, style, skin, measure);
    layout.compose();
    {
        const std::unique_ptr<cairo_t, ContextDeleter> cairo(cairo_create(surface.get()));
        if (cairo_status(cairo.get()) != CAIRO_STATUS_SUCCESS)
            throw PDFExportError();
        pdf::PagePainter painter(cairo.get(), measure);
        for (std::size_t i = 0; i < layout.pages().size(); ++i) {
            painter.play(layout.played(i));
            cairo_show_page(cairo.get());
        }
    }
    cairo_surface_finish(surface.get());
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
        throw PDFExportError();
    return {std::move(bytes), layout.pages().size()};
}

}  // namespace

std::string data(const PDFReportContent& content, PDFReportStyle style, Skin skin) {
    return make(content, style, skin).bytes;
}

std::size_t write(const PDFReportContent& content, PDFReportStyle style, Skin skin,
                  const std::filesystem::path& file) {
    const Made made = make(content, style, skin);
    if (saveFile(file, made.bytes))
        throw PDFExportError();
    return made.pages;
}

}  // namespace copperwick::ReportPDF
