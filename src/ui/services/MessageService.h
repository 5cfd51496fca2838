#pragma once

#include <QString>

#include <functional>

class QWidget;

namespace tarnby::ui {

enum class MessageButtons { Ok, YesNo };
enum class MessageAnswer { Ok, Yes, No };

struct MessageRequest {
    QString title;
    QString text;
    MessageButtons buttons = MessageButtons::Ok;
    // A question whose safe answer is No: No is the default button and the
    // box carries the stop icon.
    bool defaultNo = false;
};

// Every message box of the program goes through here: errors and results with
// an OK button, questions with Yes and No, all titled "Tarnby 3.0" unless a
// window has a title of its own (the database login). With a responder set, no
// box is shown: the responder answers, which is how tests drive the windows.
class MessageService
{
public:
    using Responder = std::function<MessageAnswer(const MessageRequest &)>;

    static QString defaultTitle() { return QStringLiteral("Tarnby 3.0"); }

    // An OK box titled "Tarnby 3.0".
    void inform(const QString &text, QWidget *parent = nullptr);
    // A Yes/No box titled "Tarnby 3.0"; true for Yes.
    bool ask(const QString &text, QWidget *parent = nullptr);
    // Any box, with its own title.
    MessageAnswer show(const MessageRequest &request, QWidget *parent = nullptr);

    void setResponder(Responder responder) { m_responder = std::move(responder); }

private:
    Responder m_responder;
};

} // namespace tarnby::ui
