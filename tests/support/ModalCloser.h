#pragma once

#include <QApplication>
#include <QDialog>
#include <QStringList>
#include <QTimer>

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
