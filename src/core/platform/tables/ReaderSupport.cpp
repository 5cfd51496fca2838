#include "ReaderSupport.h"

#include <QDir>
#include <QFile>

namespace tarnby::tables {

QString companionFile(const QFileInfo &table, const QString &extension)
{
    const QString base = table.completeBaseName();
    const QDir dir = table.absoluteDir();
    const QString wanted = base + QLatin1Char('.') + extension;
    const QString exact = dir.filePath(wanted);
    if (QFileInfo(exact).isFile())
        return exact;
    const QStringList candidates = dir.entryList(QDir::Files);
    for (const QString &candidate : candidates) {
        if (candidate.compare(wanted, Qt::CaseInsensitive) == 0)
            return dir.filePath(candidate);
    }
    return {};
}

std::unique_ptr<QIODevice> openForReading(const QString &path)
{
    if (path.isEmpty())
        return nullptr;
    auto file = std::make_unique<QFile>(path);
    // Readers seek before nearly every read (a memo, a block): a buffered
    // device would fill its whole buffer after each seek.
    if (!file->open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return nullptr;
    return file;
}

QByteArray readExactly(QIODevice &device, qint64 offset, qint64 length)
{
    if (offset < 0 || length < 0 || offset > device.size() - length || !device.seek(offset))
        return {};
    QByteArray bytes = device.read(length);
    return bytes.size() == length ? bytes : QByteArray();
}

QList<Field> sheetFields(qint64 rows, int columns, const std::function<QVariant(qint64, int)> &cell,
                         qint64 *firstDataRow, int sampleRows)
{
    bool header = rows > 0 && columns > 0;
    QStringList names;
    for (int c = 0; c < columns && header; ++c) {
        const QVariant v = cell(0, c);
        header = v.typeId() == QMetaType::QString && !v.toString().isEmpty();
        names << v.toString();
    }
    *firstDataRow = header ? 1 : 0;
    QList<Field> fields;
    for (int c = 0; c < columns; ++c) {
        bool numbers = true;
        bool dates = true;
        bool any = false;
        for (qint64 r = *firstDataRow; r < qMin<qint64>(rows, *firstDataRow + sampleRows); ++r) {
            const QVariant v = cell(r, c);
            if (!v.isValid() || (v.typeId() == QMetaType::QString && v.toString().isEmpty()))
                continue;
            any = true;
            const int t = v.typeId();
            numbers &= t == QMetaType::LongLong || t == QMetaType::Double;
            dates &= t == QMetaType::QDate || t == QMetaType::QDateTime || t == QMetaType::QTime;
        }
        const QString name = header ? names[c] : columnLetters(c);
        if (any && numbers)
            fields.append(Field{name, FieldType::Double, 8});
        else if (any && dates)
            fields.append(Field{name, FieldType::Date, 8});
        else
            fields.append(Field{name, FieldType::Text, 255});
    }
    return fields;
}

QStringDecoder codePageDecoder(int codePage)
{
    QByteArray name;
    if ((codePage >= 1250 && codePage <= 1258) || codePage == 874 || codePage == 949)
        name = "windows-" + QByteArray::number(codePage);
    else if (codePage == 32769)
        name = "windows-1252";
    else if (codePage == 10000 || codePage == 32768)
        name = "macintosh";
    else if (codePage == 367)
        name = "US-ASCII";
    else if (codePage == 932)
        name = "Shift_JIS";
    else if (codePage == 936)
        name = "GBK";
    else if (codePage == 950)
        name = "Big5";
    else if (codePage > 0)
        name = "IBM" + QByteArray::number(codePage);
    else
        return {};
    return QStringDecoder(name.constData(), QStringConverter::Flag::Stateless);
}

QString columnLetters(int column)
{
    QString letters;
    for (int n = column + 1; n > 0; n = (n - 1) / 26)
        letters.prepend(QChar(u'A' + (n - 1) % 26));
    return letters;
}

} // namespace tarnby::tables
