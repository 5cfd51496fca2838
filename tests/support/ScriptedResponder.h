#pragma once

#include "ui/services/DialogService.h"
#include "ui/services/MessageService.h"

#include <QList>
#include <QQueue>

namespace tarnby::ui {

struct UiServices;

// Answers the message and dialog services from a script and records every
// request, so that a test can drive a window and then check what the user
// would have been shown. When the script runs out, an OK box is answered Ok,
// a question No and a dialog cancelled: the answers that change nothing.
class ScriptedResponder
{
public:
    explicit ScriptedResponder(UiServices &services);
    ~ScriptedResponder();
    ScriptedResponder(const ScriptedResponder &) = delete;
    ScriptedResponder &operator=(const ScriptedResponder &) = delete;

    void answerMessage(MessageAnswer answer) { m_messageAnswers.enqueue(answer); }
    void answerDialog(const DialogAnswer &answer) { m_dialogAnswers.enqueue(answer); }
    void acceptFile(const QString &path, int filterIndex = 0);
    void cancelDialog() { m_dialogAnswers.enqueue(DialogAnswer{}); }

    const QList<MessageRequest> &messages() const { return m_messages; }
    const QList<DialogRequest> &dialogs() const { return m_dialogs; }
    QStringList messageTexts() const;
    void clear();

private:
    UiServices &m_services;
    QQueue<MessageAnswer> m_messageAnswers;
    QQueue<DialogAnswer> m_dialogAnswers;
    QList<MessageRequest> m_messages;
    QList<DialogRequest> m_dialogs;
};

} // namespace tarnby::ui
