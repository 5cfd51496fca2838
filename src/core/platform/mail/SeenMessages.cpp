#include "core/platform/mail/SeenMessages.h"

#include <QFile>
#include <QSaveFile>

#include <algorithm>

namespace tarnby::mailnet {

namespace {
// A mailbox of a hundred thousand messages fits many times over.
constexpr qint64 MaxFileBytes = 32 * 1024 * 1024;
constexpr qsizetype MaxLineBytes = 2048;
} // namespace

SeenMessages::SeenMessages(const QString &path, const QString &account) : m_path(path), m_account(account) {}

void SeenMessages::load()
{
    m_ids.clear();
    m_otherLines.clear();
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    qint64 total = 0;
    while (!file.atEnd() && total < MaxFileBytes) {
        QByteArray raw = file.readLine(MaxLineBytes);
        total += raw.size();
        if (!raw.endsWith('\n') && !file.atEnd()) {
            // An overlong line: skip the rest of it.
            while (!file.atEnd() && !raw.endsWith('\n') && total < MaxFileBytes) {
                raw = file.readLine(MaxLineBytes);
                total += raw.size();
            }
            continue;
        }
        const QString line = QString::fromUtf8(raw).trimmed();
        const qsizetype tab = line.indexOf(QLatin1Char('\t'));
        if (tab <= 0 || tab == line.size() - 1)
            continue;
        if (line.left(tab) == m_account)
            m_ids.insert(line.mid(tab + 1));
        else
            m_otherLines << line;
    }
}

bool SeenMessages::save(QString *error) const
{
    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly)) {
        *error = QStringLiteral("%1 could not be written: %2").arg(m_path, file.errorString());
        return false;
    }
    QStringList ids(m_ids.begin(), m_ids.end());
    std::sort(ids.begin(), ids.end());
    QByteArray data;
    for (const QString &line : m_otherLines)
        data += line.toUtf8() + '\n';
    for (const QString &id : ids)
        data += (m_account + QLatin1Char('\t') + id).toUtf8() + '\n';
    if (file.write(data) != data.size() || !file.commit()) {
        *error = QStringLiteral("%1 could not be written: %2").arg(m_path, file.errorString());
        return false;
    }
    return true;
}

} // namespace tarnby::mailnet
