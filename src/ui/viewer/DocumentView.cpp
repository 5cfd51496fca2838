#include "ui/viewer/DocumentView.h"

#include "core/app/Twips.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/viewer/Document.h"
#include "ui/services/UiServices.h"

#include <cmath>

namespace tarnby::ui {

namespace {
// The text box's size in the designer, kept until the first layout sets it.
const QSize InitialTextBoxTwips(6400, 3580);
} // namespace

DocumentView::DocumentView(viewer::Document &document, UiServices &services, DocumentViewHost &host,
                           QWidget *parent)
    : QWidget(parent)
    , m_document(document)
    , m_services(services)
    , m_host(host)
    , m_textBoxTwips(InitialTextBoxTwips)
{
}

void DocumentView::start()
{
    m_document.load();
}

void DocumentView::showFailure(const QString &error)
{
    Q_UNUSED(error)
}

viewer::StatusPanels DocumentView::statusPanels() const
{
    return viewer::fileStatusPanels(m_document.fileSize());
}

tables::FileProperties DocumentView::fileProperties() const
{
    if (m_document.kind() == viewer::DocumentKind::Picture && !m_document.picture().isNull())
        return tables::pictureFileProperties(m_document.picture());
    return tables::otherFileProperties(catalogue::GetFileCategoryName(m_document.path()), m_document.fileSize());
}

void DocumentView::saveAs()
{
    m_host.copyFileAs();
}

void DocumentView::notYetAvailable(const QString &what)
{
    m_services.messages.inform(what + QStringLiteral(" is not available in this version of Tarnby."), this);
}

void DocumentView::chooseTable() { notYetAvailable(QStringLiteral("Choosing a database table")); }
void DocumentView::chooseIndex() { notYetAvailable(QStringLiteral("Choosing a table index")); }
void DocumentView::showComments() { notYetAvailable(QStringLiteral("Table comments")); }
void DocumentView::flip() { notYetAvailable(QStringLiteral("Flip")); }
void DocumentView::rotate() { notYetAvailable(QStringLiteral("Rotate")); }
void DocumentView::reverse() { notYetAvailable(QStringLiteral("Reverse")); }
void DocumentView::resizePicture() { notYetAvailable(QStringLiteral("Resize")); }
void DocumentView::brightness() { notYetAvailable(QStringLiteral("Brightness")); }
void DocumentView::contrast() { notYetAvailable(QStringLiteral("Contrast")); }
void DocumentView::stretchColorIntensity() { notYetAvailable(QStringLiteral("Stretch Color Intensity")); }
void DocumentView::invertColors() { notYetAvailable(QStringLiteral("Color Invert")); }
void DocumentView::addText() { notYetAvailable(QStringLiteral("Adding text to pictures")); }
void DocumentView::addShapes() { notYetAvailable(QStringLiteral("Adding shapes to pictures")); }

void DocumentView::placeTextWindow()
{
    QWidget *outer = m_host.outerWindow();
    if (outer->isMaximized())
        return;
    const double dpiX = logicalDpiX();
    const double dpiY = logicalDpiY();
    // A window standing alone keeps its place; in the frame it goes to the
    // top left corner.
    if (outer != parentWidget())
        outer->move(0, 0);
    outer->resize(twipsToPixels(viewer::TextWindowWidthTwips, dpiX), twipsToPixels(viewer::TextWindowHeightTwips, dpiY));
}

QSize DocumentView::textBoxSize()
{
    const QWidget *outer = m_host.outerWindow();
    const double dpiX = logicalDpiX();
    const double dpiY = logicalDpiY();
    const QSize outerTwips(int(std::lround(pixelsToTwips(outer->width(), dpiX))),
                           int(std::lround(pixelsToTwips(outer->height(), dpiY))));
    m_textBoxTwips = viewer::textBoxTwips(outerTwips, m_textBoxTwips);
    return QSize(twipsToPixels(m_textBoxTwips.width(), dpiX), twipsToPixels(m_textBoxTwips.height(), dpiY));
}

} // namespace tarnby::ui
