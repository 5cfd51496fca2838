#pragma once

#include <QTextBrowser>
#include <QUrl>

namespace tarnby::ui {

// The web view of a document window: HTML, Works and Word documents shown
// read-only. It runs no scripts and reaches no network: only files on this
// machine, named relative to the document or by file URL, are loaded as
// pictures and style sheets, and links are not followed.
class WebView : public QTextBrowser
{
    Q_OBJECT
public:
    explicit WebView(QWidget *parent = nullptr);

    void setBaseUrl(const QUrl &url) { m_base = url; }
    // How many resources were refused because they were not local files.
    int refusedResources() const { return m_refused; }

    QVariant loadResource(int type, const QUrl &name) override;

private:
    QUrl m_base;
    int m_refused = 0;
};

} // namespace tarnby::ui
