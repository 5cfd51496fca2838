#include "core/printing/TextPrint.h"

#include "core/catalogue/FileCatalogue.h"
#include "core/printing/PageCanvas.h"
#include "core/viewer/DocumentConverters.h"
#include "core/viewer/DocumentRules.h"
#include "core/viewer/RtfReader.h"
#include "core/viewer/TextFile.h"

#include <QAbstractTextDocumentLayout>
#include <QFile>
#include <QFileInfo>
#include <QPagedPaintDevice>
#include <QTextDocument>
#include <QTextFrame>
#include <QUrl>

namespace tarnby::printing {

namespace {

// A rich-text or web file is read whole; beyond this it is refused.
constexpr qint64 MaxDocumentBytes = 64LL * 1024 * 1024;

bool cancelled(const JobControl *control)
{
    return control && control->cancel.load(std::memory_order_relaxed);
}

void reportPage(JobControl *control, int pages)
{
    if (control && control->progress)
        control->progress(pages);
}

// Lays document out on the body of the page (from 0.5 inch at the top and
// left to 0.5 inch at the right and bottom) and prints its pages, the first
// on the page the canvas is on. Returns false when the printer failed or the
// job was cancelled.
bool printDocumentPages(PageCanvas &canvas, QTextDocument &document, JobControl *control, int *pages)
{
    const QRectF body(canvas.deviceX(BodyLeftInches), canvas.deviceY(BodyLeftInches),
                      canvas.deviceX(PageWidthInches - 2 * BodyLeftInches),
                      canvas.deviceY(PageHeightInches - 2 * BodyLeftInches));
    document.setPageSize(body.size());
    const int count = document.pageCount();
    QPainter &painter = canvas.painter();
    for (int page = 0; page < count; ++page) {
        if (cancelled(control))
            return false;
        if (page > 0 && !canvas.newPage())
            return false;
        painter.save();
        painter.translate(body.left(), body.top() - page * body.height());
        QAbstractTextDocumentLayout::PaintContext context;
        context.clip = QRectF(0, page * body.height(), body.width(), body.height());
        painter.setClipRect(context.clip);
        context.palette.setColor(QPalette::Text, Qt::black);
        document.documentLayout()->draw(&painter, context);
        painter.restore();
        ++*pages;
        reportPage(control, *pages);
    }
    return true;
}

void prepareDocument(QTextDocument &document, QPagedPaintDevice &device, const PrintFont &font)
{
    // Laid out for the printer, so that lines break where they will print.
    document.documentLayout()->setPaintDevice(&device);
    document.setDefaultFont(font.toFont());
    document.setDocumentMargin(0);
}

QString readWhole(const QString &path, QByteArray *bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("The file cannot be read - ") + path;
    if (file.size() > MaxDocumentBytes)
        return QStringLiteral("The file is too large to print - ") + path;
    *bytes = file.readAll();
    return {};
}

} // namespace

PrintResult printTextFile(QPagedPaintDevice &device, const QString &path, bool useTextDoc, const PrintFont &font,
                          JobControl *control)
{
    PrintResult result;
    const QString extension = catalogue::GetFileExt(path);
    const viewer::TextView view = viewer::textViewFor(extension, useTextDoc);

    // Everything that can fail before the first page is checked first, so
    // that a bad file leaves no half-printed document behind.
    QTextDocument document;
    prepareDocument(document, device, font);
    viewer::TextLayout layout;
    if (view == viewer::TextView::PlainText) {
        layout = viewer::TextFile::scan(path);
        if (!layout.ok()) {
            result.errorString = layout.errorString;
            return result;
        }
    } else if (view == viewer::TextView::RichText) {
        QByteArray bytes;
        result.errorString = readWhole(path, &bytes);
        if (!result.ok())
            return result;
        QString error;
        if (!viewer::RtfReader::read(bytes, &document, &error)) {
            result.errorString = error.isEmpty() ? QStringLiteral("The file is not rich text - ") + path : error;
            return result;
        }
    } else if (extension == QLatin1String("DOC") || extension == QLatin1String("WPS")) {
        // Word documents come back as text, Works documents as HTML.
        const viewer::ConvertedDocument converted = extension == QLatin1String("DOC")
                                                        ? viewer::convertWordDocument(path)
                                                        : viewer::convertWorksDocument(path);
        if (!converted.ok()) {
            result.errorString = converted.errorString;
            return result;
        }
        if (converted.html.isEmpty())
            document.setPlainText(converted.plainText);
        else
            document.setHtml(converted.html);
    } else {
        QByteArray bytes;
        result.errorString = readWhole(path, &bytes);
        if (!result.ok())
            return result;
        const viewer::DetectedEncoding encoding = viewer::detectEncoding(bytes, true);
        document.setBaseUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath() + QLatin1Char('/')));
        document.setHtml(viewer::decodeText(QByteArrayView(bytes).sliced(encoding.bomLength), encoding.encoding));
    }

    PageCanvas canvas(device);
    canvas.setFont(font.toFont());
    if (!canvas.begin()) {
        result.errorString = canvas.errorString();
        return result;
    }
    bool going = true;
    if (view != viewer::TextView::WebView) {
        // The header has the first page to itself; the text follows.
        canvas.printHeader(listingTitle(fileNamePart(path)), ListingTitleLeft, font.toFont());
        result.pages = 1;
        reportPage(control, result.pages);
        going = canvas.newPage();
    }
    if (going && view == viewer::TextView::PlainText) {
        for (int part = 0; going && part < layout.pageCount(); ++part) {
            if (cancelled(control))
                break;
            QString error;
            const QString text = viewer::TextFile::readPage(path, layout, part, &error);
            if (!error.isEmpty()) {
                result.errorString = error;
                going = false;
                break;
            }
            document.setPlainText(text);
            if (part > 0 && !canvas.newPage())
                going = false;
            else
                going = printDocumentPages(canvas, document, control, &result.pages);
        }
    } else if (going) {
        going = printDocumentPages(canvas, document, control, &result.pages);
    }
    if (!going && result.errorString.isEmpty() && !cancelled(control))
        result.errorString = canvas.errorString();
    result.cancelled = cancelled(control);
    if (result.cancelled && control->abort)
        control->abort();
    if (!canvas.end() && result.errorString.isEmpty() && !result.cancelled)
        result.errorString = canvas.errorString();
    return result;
}

} // namespace tarnby::printing
