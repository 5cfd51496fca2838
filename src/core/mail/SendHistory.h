#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>
#include <QStringList>

// The send history: one line for every file sent to every address, kept in
// "FileSend.LOG" in the program folder (plain text, CR LF, oldest first, no
// header). The sending window reads it whole when it opens and writes it whole
// when it closes or the log is cleared.
namespace tarnby::mail {

inline const QString SendLogFileName = QStringLiteral("FileSend.LOG");

// "path - address - date time", the date and time in the locale's short forms
// (5/14/2000 3:12:09 PM in a United States locale).
QString historyLine(const QString &path, const QString &address, const QDateTime &when,
                    const QLocale &locale = QLocale::system());

// The history as the sending window holds it between open and close.
class SendHistory
{
public:
    // Reads the log whole. A missing log gives an empty history. Reading stops
    // at the first line that is not text; the lines before it are kept, and so
    // are the unread bytes: save() then adds the new lines after the old file
    // instead of rewriting it, so that nothing of it is lost.
    void load(const QString &path);

    const QStringList &lines() const { return m_lines; }
    void append(const QStringList &lines);
    void clear();

    // Writes the log: the whole history, replacing the file atomically (or,
    // after an incomplete read, the old file followed by the new lines).
    bool save(QString *error);

    QString path() const { return m_path; }
    // Why the last load stopped early; empty when it read the whole file.
    QString stoppedBecause() const { return m_stoppedBecause; }

private:
    QString m_path;
    QStringList m_lines;
    QString m_stoppedBecause;
    qsizetype m_loadedCount = 0; // lines of m_lines that came from the file
    bool m_cleared = false;
};

} // namespace tarnby::mail
