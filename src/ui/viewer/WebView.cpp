#include "ui/viewer/WebView.h"

#include <QFile>
#include <QImage>
#include <QTextDocument>

namespace tarnby::ui {

namespace {
constexpr qint64 MaxResourceBytes = 64LL * 1024 * 1024;
} // namespace

WebView::WebView(QWidget *parent)
    : QTextBrowser(parent)
{
    setObjectName(QStringLiteral("WebBrowser1"));
    setToolTip(QStringLiteral("View Document or Hyper Text"));
    setOpenLinks(false);
    setOpenExternalLinks(false);
}

QVariant WebView::loadResource(int type, const QUrl &name)
{
    const QUrl url = name.isRelative() ? m_base.resolved(name) : name;
    if (!url.isLocalFile()) {
        ++m_refused;
        return {};
    }
    QFile file(url.toLocalFile());
    if (!file.open(QIODevice::ReadOnly) || file.size() > MaxResourceBytes)
        return {};
    const QByteArray data = file.readAll();
    if (type == QTextDocument::ImageResource) {
        QImage image;
        if (image.loadFromData(data))
            return image;
        return {};
    }
    return data;
}

} // namespace tarnby::ui
