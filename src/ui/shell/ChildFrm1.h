#pragma once

#include "DocumentWindow.h"

#include <QWidget>

class QLabel;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

struct UiServices;

// The document window: one per opened file, hosted by the viewing frame. It
// takes its kind letter ("I", "T", "D") when it is created and offers every
// operation the frame calls by name.
//
// FIXME: the picture, text and table views arrive with the document issue;
// until then the window names its file and each operation that is not built
// yet says so in a message instead of doing nothing.
class ChildFrm1 : public QWidget, public DocumentWindow
{
    Q_OBJECT
public:
    ChildFrm1(AppState &state, UiServices &services, const QString &path, const QString &kind,
              QWidget *parent = nullptr);

    QString FILE_TYPE() const override { return m_fileType; }
    qint16 NUMINDEXES() const override { return m_numIndexes; }
    bool SHUTOFFCLICK_FLG() const override { return m_shutOffClick; }
    QString filePath() const override { return m_path; }

#define TARNBY_OVERRIDE_OPERATION(op, name) void name() override;
    TARNBY_DOCUMENT_OPERATIONS(TARNBY_OVERRIDE_OPERATION)
#undef TARNBY_OVERRIDE_OPERATION

signals:
    // The user chose a file in this window's open dialog; the browser opens it.
    void openFileRequested(const QString &path);

private:
    void notYetAvailable(const QString &what);

    AppState &m_state;
    UiServices &m_services;
    QString m_path;
    QString m_fileType;
    QString m_extension;
    qint16 m_numIndexes = 0;
    bool m_shutOffClick = false;
    QLabel *m_label = nullptr;
};

} // namespace tarnby::ui
