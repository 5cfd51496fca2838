#include "core/printing/PageCanvas.h"

#include <QFontMetricsF>
#include <QPagedPaintDevice>

namespace tarnby::printing {

PageCanvas::PageCanvas(QPagedPaintDevice &device)
    : m_device(device)
{
}

PageCanvas::~PageCanvas()
{
    if (m_painter.isActive())
        m_painter.end();
}

bool PageCanvas::begin()
{
    if (!m_painter.begin(&m_device)) {
        m_error = QStringLiteral("The printer could not be started.");
        return false;
    }
    // The printable area in device pixels becomes 8.5 by 11 inches.
    m_scaleX = m_device.width() / PageWidthInches;
    m_scaleY = m_device.height() / PageHeightInches;
    m_page = 1;
    currentX = 0;
    currentY = 0;
    m_painter.setPen(Qt::black);
    setFont(m_font);
    return true;
}

bool PageCanvas::end()
{
    if (!m_painter.isActive())
        return false;
    if (!m_painter.end()) {
        m_error = QStringLiteral("The printer failed while the document was printed.");
        return false;
    }
    return true;
}

PrintResult PageCanvas::finishJob(PrintResult result, JobControl *control)
{
    result.pages = m_page;
    if (control && control->progress)
        control->progress(result.pages);
    if (result.cancelled && control && control->abort)
        control->abort();
    if (!end() && result.errorString.isEmpty())
        result.errorString = m_error;
    return result;
}

void PageCanvas::setFont(const QFont &font)
{
    m_font = font;
    if (m_painter.isActive())
        m_painter.setFont(QFont(font, &m_device));
}

double PageCanvas::lineHeight() const
{
    return inchesY(QFontMetricsF(m_font, &m_device).height());
}

double PageCanvas::textWidth(const QString &text) const
{
    return inchesX(QFontMetricsF(m_font, &m_device).horizontalAdvance(text));
}

void PageCanvas::drawText(double x, double y, const QString &text)
{
    const QFontMetricsF metrics(m_font, &m_device);
    m_painter.drawText(QPointF(deviceX(x), deviceY(y) + metrics.ascent()), text);
}

void PageCanvas::printLine(const QString &text, double left)
{
    if (!text.isEmpty())
        drawText(left + currentX, currentY, text);
    currentY += lineHeight();
    currentX = 0;
}

void PageCanvas::blankLines(int count)
{
    currentY += count * lineHeight();
}

bool PageCanvas::newPage()
{
    if (!m_device.newPage()) {
        m_error = QStringLiteral("The printer could not start a new page.");
        return false;
    }
    ++m_page;
    currentX = 0;
    currentY = 0;
    return true;
}

void PageCanvas::printHeader(const QString &title, double titleLeft, const QFont &bodyFont)
{
    QFont titleFont = bodyFont;
    titleFont.setPointSize(TitlePointSize);
    setFont(titleFont);
    drawText(titleLeft, HeaderTop, title);
    const double titleHeight = lineHeight();

    QFont numberFont = bodyFont;
    numberFont.setPointSize(PageNumberPointSize);
    setFont(numberFont);
    drawText(PageNumberLeft, HeaderTop, pageNumberText(m_page));

    setFont(bodyFont);
    currentX = 0;
    currentY = HeaderTop + titleHeight;
    blankLines(2);
}

bool PageCanvas::newPageWithHeader(const QString &title, double titleLeft, const QFont &bodyFont)
{
    if (!newPage())
        return false;
    printHeader(title, titleLeft, bodyFont);
    return true;
}

} // namespace tarnby::printing
