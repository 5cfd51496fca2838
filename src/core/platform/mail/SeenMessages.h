#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

// The messages of a POP3 mailbox that this program has read already. POP3
// keeps no read marks on the server, so "unread" means "not read here": the
// server's unique id (UIDL) of every message read is kept in a small text
// file beside the options, one "account<TAB>id" a line. Several accounts
// share the file; each sees only its own lines.
namespace tarnby::mailnet {

class SeenMessages
{
public:
    SeenMessages(const QString &path, const QString &account);

    // Reads the file; a missing file is an empty list. A file that is too
    // large or has lines that make no sense is read as far as it is usable.
    void load();
    bool contains(const QString &uid) const { return m_ids.contains(uid); }
    void add(const QString &uid) { m_ids.insert(uid); }
    // Forgets the ids of this account that the server no longer has.
    void keepOnly(const QSet<QString> &onServer) { m_ids.intersect(onServer); }
    // Writes the file whole (atomically), the other accounts' lines as read.
    bool save(QString *error) const;

    int size() const { return int(m_ids.size()); }

private:
    QString m_path;
    QString m_account;
    QSet<QString> m_ids;
    QStringList m_otherLines;
};

} // namespace tarnby::mailnet
