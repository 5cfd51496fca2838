#include "core/printing/PrintTypes.h"

#include "core/catalogue/FileCatalogue.h"

#include <QFontDatabase>

namespace tarnby::printing {

QFont PrintFont::toFont() const
{
    QFont font(family);
    font.setPointSizeF(pointSize > 0 ? pointSize : 10);
    font.setBold(bold);
    font.setItalic(italic);
    // File names and table values are printed as they are spelt: no "fi"
    // ligature in "file.bmp", so the page reads (and copies) letter by letter.
    font.setStyleStrategy(QFont::PreferNoShaping);
    return font;
}

QString PrintFont::defaultFamily()
{
    return QStringLiteral("Sans Serif");
}

QString listingTitle(const QString &fileName)
{
    return QStringLiteral("List Data for File:  ") + fileName;
}

QString reportTitle(const QString &pattern, bool useFile, const QString &fileName)
{
    if (useFile)
        return QStringLiteral("Folder Locations for File:  ") + fileName;
    return QStringLiteral("Folder Locations for File Type: ") + pattern;
}

QString pageNumberText(int page)
{
    return QStringLiteral("Page No. ") + QString::number(page);
}

QString fileNamePart(const QString &path)
{
    const qsizetype cut = std::max(path.lastIndexOf(QLatin1Char('/')), path.lastIndexOf(QLatin1Char('\\')));
    return path.mid(cut + 1);
}

const QStringList &textTabExtensions()
{
    static const QStringList list{
        QStringLiteral("RTF"), QStringLiteral("TXT"), QStringLiteral("INI"), QStringLiteral("BAT"),
        QStringLiteral("BAK"), QStringLiteral("DOS"), QStringLiteral("LOG"), QStringLiteral("SYS"),
        QStringLiteral("DOC"), QStringLiteral("WDB"), QStringLiteral("HTML"), QStringLiteral("HTM"),
        QStringLiteral("WRI"), QStringLiteral("LST"), QStringLiteral("URL"), QStringLiteral("MSG"),
    };
    return list;
}

const QStringList &databaseTabExtensions()
{
    static const QStringList list{QStringLiteral("MDB"), QStringLiteral("DBF"), QStringLiteral("DB"),
                                  QStringLiteral("XLS"), QStringLiteral("WK4")};
    return list;
}

bool printsAsText(const QString &path)
{
    return textTabExtensions().contains(catalogue::GetFileExt(path));
}

bool printsAsListing(const QString &path)
{
    return databaseTabExtensions().contains(catalogue::GetFileExt(path));
}

} // namespace tarnby::printing
