#include "ui/mail/MailWindows.h"

#include "core/app/SettingsStore.h"
#include "ui/mail/MailAddr1.h"
#include "ui/mail/RecvFile1.h"
#include "ui/mail/SendFile1.h"
#include "ui/services/UiServices.h"
#include "ui/tools/About1.h"
#include "ui/tools/QuikTip1.h"

#include <QFileInfo>

namespace tarnby::ui {

QWidget *windowShowingFile(const QList<QWidget *> &windows, const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    for (QWidget *window : windows) {
        if (window->windowTitle() == name)
            return window;
    }
    return nullptr;
}

void runAddressBook(AppState &state, UiServices &services, const MailWindowHooks &hooks, const QString &mode,
                    QWidget *parent)
{
    MailAddr1 window(state, services, hooks.store, mode, parent);
    if (auto *send = qobject_cast<SendFile1 *>(parent))
        QObject::connect(&window, &MailAddr1::entrySelected, send, &SendFile1::addRecipient);
    if (hooks.help)
        QObject::connect(&window, &MailAddr1::helpRequested, &window, hooks.help);
    window.exec();
}

void runSendWindow(AppState &state, UiServices &services, const MailWindowHooks &hooks, const QString &firstFile,
                   QWidget *parent)
{
    SendFile1 window(state, services, parent);
    window.setWindowFinder(hooks.findDocumentWindow);
    QObject::connect(&window, &SendFile1::addressBookRequested, &window,
                     [&](const QString &mode) { runAddressBook(state, services, hooks, mode, &window); });
    if (hooks.help)
        QObject::connect(&window, &SendFile1::helpRequested, &window, hooks.help);
    // The sending window's own tips come under the e-mail key.
    QObject::connect(&window, &SendFile1::quickTipsRequested, &window,
                     [&] { showQuickTips(state, services, &window, QStringLiteral("EM")); });
    QObject::connect(&window, &SendFile1::aboutRequested, &window, [&] {
        // A window opened from the viewing frame has no store handed down:
        // the user's own store is the one the browser reads too.
        SettingsStore userStore;
        About1 about(state, services, hooks.store ? *hooks.store : userStore, &window);
        about.exec();
    });
    window.start(firstFile);
    window.exec();
}

void runReceiveWindow(AppState &state, UiServices &services, const MailWindowHooks &hooks, QWidget *parent)
{
    RecvFile1 window(state, services, parent);
    QObject::connect(&window, &RecvFile1::addressBookRequested, &window,
                     [&] { runAddressBook(state, services, hooks, QStringLiteral("O"), &window); });
    if (hooks.openFile)
        QObject::connect(&window, &RecvFile1::openFileRequested, &window, hooks.openFile);
    if (hooks.help)
        QObject::connect(&window, &RecvFile1::helpRequested, &window, hooks.help);
    window.exec();
}

} // namespace tarnby::ui
