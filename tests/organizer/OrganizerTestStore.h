#pragma once

#include "core/organizer/OrganizerStore.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

// The catalogue a test works on: a new "FileTabl.MDB" in a folder of its own,
// or, when TARNBY_ORGANIZER_SERVER is set (the suite's PostgreSQL run), the
// database that the PG* variables of the throw-away server name, emptied
// first.
struct OrganizerTestStore {
    static bool onServer() { return qEnvironmentVariableIsSet("TARNBY_ORGANIZER_SERVER"); }

    static tarnby::organizer::StoreLocation serverLocation()
    {
        tarnby::organizer::StoreLocation l;
        l.engine = tarnby::organizer::StoreLocation::Engine::PostgreSQL;
        l.host = qEnvironmentVariable("PGHOST", QStringLiteral("localhost"));
        l.port = qEnvironmentVariableIntValue("PGPORT") ? qEnvironmentVariableIntValue("PGPORT") : 5432;
        l.database = qEnvironmentVariable("PGDATABASE", QStringLiteral("postgres"));
        l.user = qEnvironmentVariable("PGUSER", QStringLiteral("postgres"));
        l.password = qEnvironmentVariable("PGPASSWORD");
        return l;
    }

    // Drops the tables of the server database, so that each test starts
    // from a catalogue made anew.
    static bool dropServerTables()
    {
        const tarnby::organizer::StoreLocation l = serverLocation();
        bool ok = false;
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), QStringLiteral("test-drop"));
            db.setHostName(l.host);
            db.setPort(l.port);
            db.setDatabaseName(l.database);
            db.setUserName(l.user);
            db.setPassword(l.password);
            if (db.open()) {
                QSqlQuery q(db);
                ok = q.exec(QStringLiteral("DROP TABLE IF EXISTS \"FileTable\", \"GroupTable\""));
                // The index names live beside the tables and go with them.
            }
            db.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("test-drop"));
        return ok;
    }

    tarnby::organizer::StoreLocation location() const
    {
        return onServer() ? serverLocation() : tarnby::organizer::StoreLocation::inFolder(dir.path());
    }

    QTemporaryDir dir;
};
