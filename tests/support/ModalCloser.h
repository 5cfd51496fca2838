#pragma once

#include <QApplication>
#include <QDialog>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <memory>

// Cancels every modal dialog that opens while it lives, the way a user would
// press Cancel, and records the dialogs' object names. For tests of commands
// whose dialog runs its own exec(); header-only, for tests that link widgets.
class ModalCloser
{
public:
    ModalCloser()
    {
        m_timer.setInterval(20);
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            if (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
                m_seen << dialog->objectName();
                dialog->reject();
            }
        });
        m_timer.start();
    }

    const QStringList &seen() const { return m_seen; }

private:
    QTimer m_timer;
    QStringList m_seen;
};

// Runs action on the modal dialog called name (an empty name: whichever
// opens) as soon as it is up (its exec() is running then, so the action
// drives it as a user would). Gives up after about five seconds without one.
inline void whenModal(const QString &name, std::function<void(QDialog *)> action)
{
    auto *timer = new QTimer;
    auto tries = std::make_shared<int>(0);
    QObject::connect(timer, &QTimer::timeout, [=] {
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        const bool found = dialog && (name.isEmpty() || dialog->objectName() == name);
        if (found || ++*tries > 500) {
            timer->stop();
            timer->deleteLater();
            if (found)
                action(dialog);
        }
    });
    timer->start(10);
}
