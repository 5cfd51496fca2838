#pragma once

#include "ui/frame/DocumentWindow.h"

#include <QStringList>
#include <QWidget>

// A document window that records which of its operations the frame called.
class DocumentDouble : public QWidget, public tarnby::ui::DocumentWindow
{
public:
    DocumentDouble(const QString &kind, qint16 indexes = 0, const QString &path = QStringLiteral("/tmp/doc.jpg"))
        : m_kind(kind)
        , m_indexes(indexes)
        , m_path(path)
    {
    }

    QString FILE_TYPE() const override { return m_kind; }
    qint16 NUMINDEXES() const override { return m_indexes; }
    bool SHUTOFFCLICK_FLG() const override { return busy; }
    QString filePath() const override { return m_path; }
    bool showsNothing() const override { return empty; }

#define TARNBY_RECORD_OPERATION(op, name)                                                          \
    void name() override { calls << QStringLiteral(#name); }
    TARNBY_DOCUMENT_OPERATIONS(TARNBY_RECORD_OPERATION)
#undef TARNBY_RECORD_OPERATION

    QStringList calls;
    bool busy = false;
    bool empty = false;

private:
    QString m_kind;
    qint16 m_indexes;
    QString m_path;
};
