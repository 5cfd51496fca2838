#include "EditHistory.h"

namespace tarnby::edit {

EditHistory::EditHistory(qint64 byteBound)
    : m_byteBound(byteBound)
{
}

void EditHistory::record(const QList<QImage> &before, const EditOperation &operation)
{
    m_redo.clear();
    // One operation undoes every frame only if it undoes each of them.
    std::optional<EditOperation> inverse;
    for (const QImage &frame : before) {
        inverse = exactInverse(operation, frame);
        if (!inverse)
            break;
    }
    if (inverse && !before.isEmpty())
        m_undo.push_back({{}, operation, *inverse, true});
    else
        m_undo.push_back({before, operation, operation, false});
    trim();
}

qint64 EditHistory::bytesOf(const Step &step)
{
    qint64 bytes = 0;
    if (!step.byOperation)
        for (const QImage &frame : step.picture)
            bytes += frame.sizeInBytes();
    return bytes;
}

QList<QImage> EditHistory::applyToAll(const EditOperation &operation, const QList<QImage> &frames)
{
    QList<QImage> changed;
    changed.reserve(frames.size());
    for (const QImage &frame : frames)
        changed.append(apply(operation, frame));
    return changed;
}

void EditHistory::recordChange(const QList<QImage> &before)
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

QList<QImage> EditHistory::undo(const QList<QImage> &current)
{
    if (m_undo.empty())
        return {};
    Step step = std::move(m_undo.back());
    m_undo.pop_back();
    QList<QImage> previous;
    if (step.byOperation) {
        previous = applyToAll(step.backward, current);
    } else {
        previous = step.picture;
        step.picture = current;
    }
    m_redo.push_back(std::move(step));
    trim();
    return previous;
}

QList<QImage> EditHistory::redo(const QList<QImage> &current)
{
    if (m_redo.empty())
        return {};
    Step step = std::move(m_redo.back());
    m_redo.pop_back();
    QList<QImage> next;
    if (step.byOperation) {
        next = applyToAll(step.forward, current);
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
