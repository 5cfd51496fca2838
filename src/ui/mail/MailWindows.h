#pragma once

#include <QList>
#include <QString>

#include <functional>

class QWidget;

namespace tarnby {
class AppState;
class SettingsStore;
}

// Opening the e-mail windows from the browser and the viewing frame, with
// the address book wired to the sending window.
namespace tarnby::ui {

struct UiServices;

struct MailWindowHooks {
    // The document window that shows a file (its caption is the file's
    // name), for the sending window's database check.
    std::function<QWidget *(const QString &path)> findDocumentWindow;
    // Opens a received file in a document window.
    std::function<void(const QString &path)> openFile;
    std::function<void()> help;
    SettingsStore *store = nullptr;
};

// The window among windows whose caption is the file name of path.
QWidget *windowShowingFile(const QList<QWidget *> &windows, const QString &path);

// Each runs its window modally and returns when it closes.
void runSendWindow(AppState &state, UiServices &services, const MailWindowHooks &hooks, const QString &firstFile,
                   QWidget *parent);
void runReceiveWindow(AppState &state, UiServices &services, const MailWindowHooks &hooks, QWidget *parent);
void runAddressBook(AppState &state, UiServices &services, const MailWindowHooks &hooks, const QString &mode,
                    QWidget *parent);

} // namespace tarnby::ui
