#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QStringList>

// Writes an SQLite database at path by running statements in one
// transaction; false when any of them fails. Header-only, for the table
// tests that link QtSql.
inline bool writeSqliteFile(const QString &path, const QStringList &statements)
{
    const QString connection = QStringLiteral("sample ") + path;
    bool ok = false;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
        db.setDatabaseName(path);
        if (db.open()) {
            QSqlQuery query(db);
            ok = query.exec(QStringLiteral("BEGIN"));
            for (const QString &statement : statements)
                ok = ok && query.exec(statement);
            ok = ok && query.exec(QStringLiteral("COMMIT"));
            db.close();
        }
    }
    QSqlDatabase::removeDatabase(connection);
    return ok;
}
