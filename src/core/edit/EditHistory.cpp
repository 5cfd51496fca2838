#include "EditHistory.h"

namespace tarnby::edit {

EditHistory::EditHistory(qint64 byteBound)
    : m_byteBound(byteBound)
{
}

void EditHistory::record(const QImage &before, const EditOperation &operation)
{
    m_redo.clear();
    if (const std::optional<EditOperation> inverse = exactInverse(operation, before))
        m_undo.push_back({QImage(), operation, *inverse, true});
    else
        m_undo.push_back({before, operation, operation, false});
    trim();
}

void EditHistory::recordChange(const QImage &before)
{
    m_redo.clear();
    m_undo.push_back({before, {}, {}, false});
    trim();
}

qint64 EditHistory::bytesHeld() const
{
    qint64 total = 0;
    for (const Step &step : m_undo)
        total += bytesOf(step);
    for (const Step &step : m_redo)
        total += bytesOf(step);
    return total;
}

QImage EditHistory::undo(const QImage &current)
{
    if (m_undo.empty())
        return QImage();
    Step step = std::move(m_undo.back());
    m_undo.pop_back();
    QImage previous;
    if (step.byOperation) {
        previous = apply(step.backward, current);
    } else {
        previous = step.picture;
        step.picture = current;
    }
    m_redo.push_back(std::move(step));
    trim();
    return previous;
}

QImage EditHistory::redo(const QImage &current)
{
    if (m_redo.empty())
        return QImage();
    Step step = std::move(m_redo.back());
    m_redo.pop_back();
    QImage next;
    if (step.byOperation) {
        next = apply(step.forward, current);
    } else {
        next = step.picture;
        step.picture = current;
    }
    m_undo.push_back(std::move(step));
    trim();
    return next;
}

void EditHistory::clear()
{
    m_undo.clear();
    m_redo.clear();
}

void EditHistory::trim()
{
    qint64 held = bytesHeld();
    while (held > m_byteBound && !m_undo.empty()) {
        held -= bytesOf(m_undo.front());
        m_undo.pop_front();
    }
    while (held > m_byteBound && !m_redo.empty()) {
        held -= bytesOf(m_redo.front());
        m_redo.pop_front();
    }
    while (m_undo.size() + m_redo.size() > size_t(MaxSteps) && !m_undo.empty())
        m_undo.pop_front();
}

} // namespace tarnby::edit
