#pragma once

#include <QImage>
#include <QList>
#include <QProcess>
#include <QRegularExpression>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// Reading a printed PDF back with poppler's tools: the text of each page as
// pdftotext -layout sets it, the words with their boxes, and a page rendered
// to a picture.
namespace pdfreadback {

// The pages' text, in order; empty when pdftotext failed.
inline QStringList pages(const QString &pdf)
{
    QProcess p;
    p.start(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), pdf, QStringLiteral("-")});
    if (!p.waitForFinished(60000) || p.exitCode() != 0)
        return {};
    QStringList result = QString::fromUtf8(p.readAllStandardOutput()).split(QLatin1Char('\f'));
    if (!result.isEmpty() && result.last().trimmed().isEmpty())
        result.removeLast();
    return result;
}

// The lines of a page with their trailing blanks removed.
inline QStringList lines(const QString &page)
{
    QStringList result;
    for (const QString &line : page.split(QLatin1Char('\n')))
        result.append(line.trimmed().isEmpty() ? QString() : line);
    return result;
}

struct Word {
    int page = 0;    // from 1
    double x = 0;    // left edge, inches from the page's left
    double y = 0;    // top edge, inches from the page's top
    QString text;
};

// Every word with its box (pdftotext -bbox), in reading order.
inline QList<Word> words(const QString &pdf)
{
    QList<Word> result;
    QProcess p;
    p.start(QStringLiteral("pdftotext"), {QStringLiteral("-bbox"), pdf, QStringLiteral("-")});
    if (!p.waitForFinished(60000) || p.exitCode() != 0)
        return result;
    const QString html = QString::fromUtf8(p.readAllStandardOutput());
    static const QRegularExpression word(
        QStringLiteral("<page |<word xMin=\"([0-9.]+)\" yMin=\"([0-9.]+)\" xMax=\"[0-9.]+\" yMax=\"[0-9.]+\">([^<]*)</word>"));
    int page = 0;
    for (auto it = word.globalMatch(html); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        if (m.captured(0).startsWith(QLatin1String("<page"))) {
            ++page;
            continue;
        }
        result.append({page, m.captured(1).toDouble() / 72.0, m.captured(2).toDouble() / 72.0,
                       m.captured(3).replace(QLatin1String("&amp;"), QLatin1String("&"))});
    }
    return result;
}

// Page 1 rendered at dpi dots an inch; a null picture when pdftoppm failed.
inline QImage render(const QString &pdf, int dpi)
{
    QTemporaryDir dir;
    QProcess p;
    p.start(QStringLiteral("pdftoppm"), {QStringLiteral("-png"), QStringLiteral("-r"), QString::number(dpi),
                                         QStringLiteral("-f"), QStringLiteral("1"), QStringLiteral("-l"),
                                         QStringLiteral("1"), QStringLiteral("-singlefile"), pdf,
                                         dir.filePath(QStringLiteral("page"))});
    if (!p.waitForFinished(60000) || p.exitCode() != 0)
        return {};
    return QImage(dir.filePath(QStringLiteral("page.png")));
}

} // namespace pdfreadback
