#pragma once

#include "core/organizer/OrganizerStore.h"

#include <QDialog>

#include <functional>

class QCheckBox;
class QComboBox;
class QPushButton;

namespace tarnby {
class AppState;
}

namespace tarnby::search {
enum class SearchOutcome;
}

namespace tarnby::ui {

struct UiServices;

// "Add Files to a File Group": works beside the file search. Each OK adds
// every file of the folder the search has reached to the group in CMBGRP,
// all with one creation stamp (unless CHKSKIP is checked), then asks the
// browser to move the search on to its next folder (findNextRequested()).
// The window is not modal: the user goes on working in the browser.
class GrpBatch1 : public QDialog
{
    Q_OBJECT
public:
    struct FolderFiles {
        QString folder;
        QStringList names; // in list order
    };
    using FolderSource = std::function<FolderFiles()>;

    GrpBatch1(AppState &state, UiServices &services, const organizer::OrganizerStore &store, FolderSource source,
              QWidget *parent = nullptr);

    QComboBox *groupBox() const { return m_group; }
    QCheckBox *skipBox() const { return m_skip; }
    // While the search walks, the list shows whatever folder it passes
    // through: OK waits (disabled) until the walk has stopped on a folder.
    void setSearchRunning(bool running);
    // A walk that stopped on a found folder offers that folder anew, even one
    // this window has added before. Any other end (the end of the tree, a
    // cancel) leaves the list where it was: a folder already added from it
    // to the same group is not added a second time.
    void searchFinished(search::SearchOutcome outcome);
    void okClicked();
    // Reads the group names again, keeping the group chosen or the name
    // typed. Done whenever the window becomes active and before the list
    // drops down, so that groups made meanwhile (in another window or by
    // another process) can be chosen.
    void refreshGroups();

signals:
    void findNextRequested();
    void helpRequested();

protected:
    bool event(QEvent *event) override;

private:
    UiServices &m_services;
    organizer::OrganizerStore m_store;
    FolderSource m_source;
    QComboBox *m_group = nullptr;
    QCheckBox *m_skip = nullptr;
    QPushButton *m_ok = nullptr;
    bool m_searchRunning = false;
    // The folder and group of the last OK that added files; cleared when the
    // search stops on a found folder.
    QString m_addedFolder;
    QString m_addedGroup;
};

} // namespace tarnby::ui
