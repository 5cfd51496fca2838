#pragma once

#include "core/printing/PrintTypes.h"

#include <QFont>
#include <QPainter>
#include <QString>

#include <QPagedPaintDevice>

// A printer page seen as the fixed page of 8.5 by 11 inches, with the current
// position of the text output: the drawing surface every job prints on.
//
// Positions are inches on that page; the printable area of the device is
// mapped onto it, one scale across and one down, as a page scale does. Font
// sizes stay in points, so text keeps its shape on any paper.
//
// Use from one thread; a canvas paints on one device from begin() to end().
namespace tarnby::printing {

class PageCanvas
{
public:
    explicit PageCanvas(QPagedPaintDevice &device);
    ~PageCanvas();
    PageCanvas(const PageCanvas &) = delete;
    PageCanvas &operator=(const PageCanvas &) = delete;

    // Starts the document on the device. False (with errorString) when the
    // printer or the file cannot be opened.
    bool begin();
    // Ends the document. False when the device failed on the way.
    bool end();
    // Ends the document of a job: result.pages becomes the page count,
    // control hears it, and a failing end becomes the job's error unless it
    // has one already.
    PrintResult finishJob(PrintResult result, JobControl *control);
    QString errorString() const { return m_error; }

    QPainter &painter() { return m_painter; }
    QPagedPaintDevice &device() { return m_device; }
    QPaintDevice *paintDevice() const { return &m_device; }

    double deviceX(double inches) const { return inches * m_scaleX; }
    double deviceY(double inches) const { return inches * m_scaleY; }
    double inchesX(double devicePixels) const { return devicePixels / m_scaleX; }
    double inchesY(double devicePixels) const { return devicePixels / m_scaleY; }

    void setFont(const QFont &font);
    QFont font() const { return m_font; }
    // The current font's line height and a text's width, in inches.
    double lineHeight() const;
    double textWidth(const QString &text) const;

    // Draws text with its top left corner at (x, y) inches.
    void drawText(double x, double y, const QString &text);

    // The current position of the text output.
    double currentX = 0;
    double currentY = 0;
    // Prints text at the current position and moves down one line, back to
    // left.
    void printLine(const QString &text, double left = 0);
    void blankLines(int count);

    // Ends the page and starts the next. False when the device refuses.
    bool newPage();
    int pageNumber() const { return m_page; }

    // The page header of the text, listing and report jobs: title at
    // (titleLeft, 0.25) in 14 points, "Page No. n" at (7.2, 0.25) in 10
    // points, then the body font again and two blank lines below the title.
    void printHeader(const QString &title, double titleLeft, const QFont &bodyFont);
    // newPage() followed by printHeader().
    bool newPageWithHeader(const QString &title, double titleLeft, const QFont &bodyFont);
    // Whether a block of height inches still fits above the page length.
    bool fits(double height) const { return currentY + height <= PageLengthInches + 1e-9; }

private:
    QPagedPaintDevice &m_device;
    QPainter m_painter;
    QFont m_font;
    double m_scaleX = 1;
    double m_scaleY = 1;
    int m_page = 1;
    QString m_error;
};

} // namespace tarnby::printing
