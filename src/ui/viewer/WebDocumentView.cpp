#include "ui/viewer/WebDocumentView.h"

#include "core/viewer/Document.h"
#include "ui/viewer/WebView.h"

namespace tarnby::ui {

WebDocumentView::WebDocumentView(viewer::Document &document, UiServices &services, DocumentViewHost &host,
                                 QWidget *parent)
    : DocumentView(document, services, host, parent)
{
    m_web = new WebView(this);
    m_web->hide();
}

void WebDocumentView::start()
{
    placeTextWindow();
    layoutControls();
    setCursor(Qt::WaitCursor);
    DocumentView::start();
}

void WebDocumentView::showDocument()
{
    const viewer::TextContent &content = document().text();
    m_web->setBaseUrl(content.baseUrl);
    if (!content.html.isEmpty())
        m_web->setHtml(content.html);
    else
        m_web->setPlainText(content.webPlainText);
    m_web->show();
    unsetCursor();
    layoutControls();
}

void WebDocumentView::showFailure(const QString &error)
{
    unsetCursor();
    m_web->setPlainText(QStringLiteral("This document cannot be shown: ") + error);
    m_web->show();
    layoutControls();
}

void WebDocumentView::copySelection()
{
    m_web->copy();
}

void WebDocumentView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layoutControls();
}

void WebDocumentView::layoutControls()
{
    m_web->setGeometry(QRect(QPoint(0, 0), textBoxSize()));
}

} // namespace tarnby::ui
