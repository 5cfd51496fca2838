#pragma once

#include "core/browser/FileListModel.h"
#include "core/browser/FolderTreeModel.h"
#include "core/browser/MountTable.h"
#include "core/search/FileSearch.h"
#include "ui/browser/Tarnby1.h"

#include "UiFixture.h"

#include <QSignalSpy>

#include <memory>

Q_DECLARE_METATYPE(tarnby::search::SearchOutcome)

// A browser whose tree holds only a test folder and the network node, with
// one stand-in network mount below it when a folder is given for one.
struct SearchBrowser : UiFixture {
    TestDir files;
    std::unique_ptr<tarnby::ui::Tarnby1> window;

    explicit SearchBrowser(const QString &networkMount = {})
    {
        window = std::make_unique<tarnby::ui::Tarnby1>(state, services, store);
        tarnby::ui::StartupRequest request;
        request.homeOption = home.path();
        window->load(request);
        tarnby::FolderRoots roots;
        roots.volumes = {files.path()};
        if (!networkMount.isEmpty())
            roots.network = {tarnby::MountEntry{QStringLiteral("//server/share"), networkMount, QStringLiteral("cifs")}};
        window->folderTree()->setRoots(roots);
    }

    // Waits for the walk that has been started to end; Running when it did
    // not end within a minute.
    static tarnby::search::SearchOutcome waitForEnd(QSignalSpy &finished)
    {
        if (finished.isEmpty() && !finished.wait(60000))
            return tarnby::search::SearchOutcome::Running;
        return finished.takeFirst().first().value<tarnby::search::SearchOutcome>();
    }

    // Runs one walk to its end, the window's events running between slices.
    tarnby::search::SearchOutcome find(const QString &pattern, bool next = false)
    {
        state.searchPattern = pattern;
        QSignalSpy finished(window.get(), &tarnby::ui::Tarnby1::searchFinished);
        if (next)
            window->toolClick(QStringLiteral("ID_FindNextBtn"));
        else
            window->FindFileRoutine();
        return waitForEnd(finished);
    }
};
