#pragma once

#include <QDebug>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>

// Builds an SQLite database with the statements given, through a connection
// of its own that is gone before a reader opens the file. Header-only: the
// tests that use it link Qt6::Sql themselves.
namespace sqlitemaker {

inline bool makeDatabase(const QString &path, const QStringList &statements)
{
    bool ok = true;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("maker"));
        db.setDatabaseName(path);
        ok = db.open();
        QSqlQuery query(db);
        for (const QString &s : statements) {
            if (ok && !query.exec(s)) {
                qWarning() << s << query.lastError().text();
                ok = false;
            }
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("maker"));
    return ok;
}

} // namespace sqlitemaker
