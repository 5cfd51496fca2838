#pragma once

#include "ui/viewer/DocumentView.h"

namespace tarnby::ui {

class WebView;

// The view of a text window that shows its document in the web view: HTML
// pages and Works and Word documents. The window goes to the frame's top left
// corner at the fixed text window size and shows the wait cursor until the
// document is there. A document that cannot be read leaves the window open,
// saying why it is empty.
class WebDocumentView : public DocumentView
{
    Q_OBJECT
public:
    WebDocumentView(viewer::Document &document, UiServices &services, DocumentViewHost &host,
                    QWidget *parent = nullptr);

    WebView *webView() const { return m_web; }

    void start() override;
    void showDocument() override;
    void showFailure(const QString &error) override;
    void copySelection() override;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void layoutControls();

    WebView *m_web = nullptr;
};

} // namespace tarnby::ui
