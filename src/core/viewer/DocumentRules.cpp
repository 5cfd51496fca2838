#include "core/viewer/DocumentRules.h"

#include "core/catalogue/FileCatalogue.h"

#include <QDateTime>
#include <QLocale>

#include <cmath>

namespace tarnby::viewer {

QString kindLetter(DocumentKind kind)
{
    switch (kind) {
    case DocumentKind::Text:
        return QStringLiteral("T");
    case DocumentKind::Database:
        return QStringLiteral("D");
    case DocumentKind::Picture:
        break;
    }
    return QStringLiteral("I");
}

DocumentKind kindFromLetter(const QString &letter)
{
    if (letter == QLatin1String("T"))
        return DocumentKind::Text;
    if (letter == QLatin1String("D"))
        return DocumentKind::Database;
    return DocumentKind::Picture;
}

DocumentKind kindOf(const catalogue::FileType &type)
{
    // The catalogue's bands do not overlap, so at most one flag is set.
    if (type.databaseFile)
        return DocumentKind::Database;
    if (type.textFile)
        return DocumentKind::Text;
    return DocumentKind::Picture;
}

bool loadsAllPages(const QString &extension)
{
    const QString ext = extension.toUpper();
    return ext == QLatin1String("ANI") || ext == QLatin1String("FLC");
}

TextView textViewFor(const QString &extension, bool useTextDoc)
{
    const QString ext = extension.toUpper();
    if (ext == QLatin1String("RTF"))
        return TextView::RichText;
    static const QStringList web = {QStringLiteral("DOC"), QStringLiteral("HTM"), QStringLiteral("HTML"),
                                    QStringLiteral("SHTML"), QStringLiteral("WPS")};
    if (!useTextDoc && web.contains(ext))
        return TextView::WebView;
    return TextView::PlainText;
}

bool isInternetAddress(const QString &path)
{
    return path.startsWith(QLatin1String("http://"), Qt::CaseInsensitive)
           || path.startsWith(QLatin1String("https://"), Qt::CaseInsensitive);
}

QString saveAsFileName(const QString &path)
{
    if (path.startsWith(QLatin1String("HTTP:"), Qt::CaseInsensitive))
        return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
    const qsizetype cut = std::max(path.lastIndexOf(QLatin1Char('/')), path.lastIndexOf(QLatin1Char('\\')));
    return path.mid(cut + 1);
}

QSize pictureWindowTwips(QSize picturePixels, double twipsPerPixelX, double twipsPerPixelY, QSize nonClientTwips)
{
    return QSize(int(std::lround(picturePixels.width() * twipsPerPixelX)) + nonClientTwips.width(),
                 int(std::lround(picturePixels.height() * twipsPerPixelY)) + nonClientTwips.height());
}

QSize textBoxTwips(QSize windowTwips, QSize previousBoxTwips)
{
    QSize box = previousBoxTwips;
    if (windowTwips.height() > 420)
        box.setHeight(windowTwips.height() - 420);
    if (windowTwips.width() > 100)
        box.setWidth(windowTwips.width() - 100);
    return box;
}

QString formatByteCount(qint64 bytes)
{
    // The status bar always groups by thousands with commas, whatever the
    // desktop's language, as it always has.
    return QLocale(QLocale::English, QLocale::UnitedStates).toString(bytes) + QStringLiteral("  Bytes");
}

StatusPanels pictureStatusPanels(int width, int height, int bitsPerPixel, qint64 sizeOnDisk)
{
    return {QString::number(width) + QStringLiteral(" x ") + QString::number(height),
            QString::number(bitsPerPixel) + QStringLiteral(" Bitmap Bits"), formatByteCount(sizeOnDisk)};
}

StatusPanels fileStatusPanels(qint64 fileLength)
{
    return {QString(), QString(), formatByteCount(fileLength)};
}

InternetFetchWatch::InternetFetchWatch(Clock clock)
    : m_clock(std::move(clock))
{
}

InternetFetchWatch::Clock InternetFetchWatch::systemClock()
{
    return [] { return QDateTime::currentSecsSinceEpoch(); };
}

void InternetFetchWatch::start()
{
    m_started = m_clock();
    m_running = true;
}

InternetFetchWatch::Verdict InternetFetchWatch::check(bool completed)
{
    if (!m_running)
        return Verdict::Idle;
    if (completed) {
        m_running = false;
        return Verdict::Completed;
    }
    if (m_clock() - m_started >= TimeoutSeconds) {
        m_running = false;
        return Verdict::TimedOut;
    }
    return Verdict::Waiting;
}

} // namespace tarnby::viewer
