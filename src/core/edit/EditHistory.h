#pragma once

#include "core/edit/EditOperation.h"

#include <QImage>

#include <deque>

// The undo and redo history of one picture window.
//
// Each step holds either the picture as it was (a copy of its pixels) or,
// for operations that undo themselves exactly (flips, inverting, quarter
// turns; see exactInverse()), only the operation, which costs nothing.
// Undoing or redoing a step that holds a picture swaps pictures, whatever
// its size; one that holds an operation runs the operation again.
//
// Bound: the pictures held by both directions together take at most
// byteBound bytes (DefaultByteBound: 1 GiB, ten steps of a 24-megapixel
// photo at 32 bits, two of a 100-megapixel one). When a new step would pass
// it, the oldest undo steps go first, then the redo steps farthest away; a
// step whose picture alone passes the bound is not kept, so that operation
// cannot be undone. Steps that hold only an operation are kept up to
// MaxSteps.
//
// Not thread-safe: the window's thread owns it.
namespace tarnby::edit {

class EditHistory
{
public:
    static constexpr qint64 DefaultByteBound = 1024LL * 1024 * 1024;
    static constexpr int MaxSteps = 1000;

    explicit EditHistory(qint64 byteBound = DefaultByteBound);

    // Records that operation turned before into the current picture; the
    // redo steps are dropped.
    void record(const QImage &before, const EditOperation &operation);
    // Records a change that no operation describes (a drawing): before is kept.
    void recordChange(const QImage &before);

    bool canUndo() const { return !m_undo.empty(); }
    bool canRedo() const { return !m_redo.empty(); }
    int undoCount() const { return int(m_undo.size()); }
    int redoCount() const { return int(m_redo.size()); }
    qint64 bytesHeld() const;

    // The picture before the last step, given the picture now; current is
    // kept for redo. Null when there is nothing to undo.
    QImage undo(const QImage &current);
    // The picture after the next undone step, given the picture now.
    QImage redo(const QImage &current);

    void clear();

private:
    struct Step {
        QImage picture;              // the other side of the step; null when the operations do it
        EditOperation forward;       // used when picture is null
        EditOperation backward;      // used when picture is null
        bool byOperation = false;
    };

    static qint64 bytesOf(const Step &step) { return step.byOperation ? 0 : step.picture.sizeInBytes(); }
    void trim();

    qint64 m_byteBound;
    std::deque<Step> m_undo; // oldest first
    std::deque<Step> m_redo; // next to redo last
};

} // namespace tarnby::edit
