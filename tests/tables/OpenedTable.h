#pragma once

#include "core/platform/tables/TableReader.h"

#include <memory>

// The first step of most reader tests: open a file that holds one table and
// open that table, keeping the reader's words when either step fails.
struct OpenedTable {
    tarnby::tables::OpenResult file;
    std::unique_ptr<tarnby::tables::Table> table;
    QString error;
};

inline OpenedTable openFirstTable(const QString &path)
{
    using namespace tarnby::tables;
    OpenedTable o;
    o.file = openTableFile(path);
    if (!o.file.ok()) {
        o.error = o.file.errorString;
        return o;
    }
    const QStringList names = o.file.file->tableNames();
    if (names.size() != 1) {
        o.error = QStringLiteral("expected one table, got %1").arg(names.size());
        return o;
    }
    Result<std::unique_ptr<Table>> t = o.file.file->openTable(names.first());
    if (!t.ok())
        o.error = t.errorString;
    else
        o.table = std::move(t.value);
    return o;
}

// Every row of table, or none when the read fails.
inline QList<tarnby::tables::Row> allRows(tarnby::tables::Table &table)
{
    const tarnby::tables::Result<QList<tarnby::tables::Row>> rows = table.readRows(0, int(table.rowCount()));
    return rows.ok() ? rows.value : QList<tarnby::tables::Row>();
}
