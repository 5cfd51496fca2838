#include "ui/services/MessageService.h"

#include <QApplication>
#include <QMessageBox>

namespace tarnby::ui {

void MessageService::inform(const QString &text, QWidget *parent)
{
    show({defaultTitle(), text, MessageButtons::Ok}, parent);
}

bool MessageService::ask(const QString &text, QWidget *parent)
{
    return show({defaultTitle(), text, MessageButtons::YesNo}, parent) == MessageAnswer::Yes;
}

MessageAnswer MessageService::show(const MessageRequest &request, QWidget *parent)
{
    if (m_responder)
        return m_responder(request);

    if (!parent)
        parent = QApplication::activeWindow();
    QMessageBox box(parent);
    box.setWindowTitle(request.title);
    box.setText(request.text);
    if (request.buttons == MessageButtons::YesNo) {
        box.setIcon(request.defaultNo ? QMessageBox::Critical : QMessageBox::Question);
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        box.setDefaultButton(request.defaultNo ? QMessageBox::No : QMessageBox::Yes);
        return box.exec() == QMessageBox::Yes ? MessageAnswer::Yes : MessageAnswer::No;
    }
    box.setIcon(QMessageBox::Information);
    box.setStandardButtons(QMessageBox::Ok);
    box.exec();
    return MessageAnswer::Ok;
}

} // namespace tarnby::ui
