#include "ScriptedResponder.h"

#include "ui/services/UiServices.h"

namespace tarnby::ui {

ScriptedResponder::ScriptedResponder(UiServices &services)
    : m_services(services)
{
    m_services.messages.setResponder([this](const MessageRequest &request) {
        m_messages.append(request);
        if (!m_messageAnswers.isEmpty())
            return m_messageAnswers.dequeue();
        return request.buttons == MessageButtons::YesNo ? MessageAnswer::No : MessageAnswer::Ok;
    });
    m_services.dialogs.setResponder([this](const DialogRequest &request) {
        m_dialogs.append(request);
        if (!m_dialogAnswers.isEmpty())
            return m_dialogAnswers.dequeue();
        return DialogAnswer{};
    });
}

ScriptedResponder::~ScriptedResponder()
{
    m_services.messages.setResponder({});
    m_services.dialogs.setResponder({});
}

void ScriptedResponder::acceptFile(const QString &path, int filterIndex)
{
    DialogAnswer answer;
    answer.accepted = true;
    answer.path = path;
    answer.filterIndex = filterIndex;
    m_dialogAnswers.enqueue(answer);
}

QStringList ScriptedResponder::messageTexts() const
{
    QStringList texts;
    for (const MessageRequest &m : m_messages)
        texts << m.text;
    return texts;
}

void ScriptedResponder::clear()
{
    m_messages.clear();
    m_dialogs.clear();
    m_messageAnswers.clear();
    m_dialogAnswers.clear();
}

} // namespace tarnby::ui
