#pragma once

#include "core/edit/EditOperation.h"

#include <QImage>
#include <QList>

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
// A picture of several frames (an animation, the pages of a TIFF) is changed
// as a whole, so a step holds all its frames; the QImage forms below are the
// same for a picture of one frame.
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
    void record(const QList<QImage> &before, const EditOperation &operation);
    void record(const QImage &before, const EditOperation &operation) { record(QList<QImage>{before}, operation); }
    // Records a change that no operation describes (a drawing): before is kept.
    void recordChange(const QList<QImage> &before);
    void recordChange(const QImage &before) { recordChange(QList<QImage>{before}); }

    bool canUndo() const { return !m_undo.empty(); }
    bool canRedo() const { return !m_redo.empty(); }
    int undoCount() const { return int(m_undo.size()); }
    int redoCount() const { return int(m_redo.size()); }
    qint64 bytesHeld() const;

    // The picture before the last step, given the picture now; current is
    // kept for redo. Empty (null) when there is nothing to undo.
    QList<QImage> undo(const QList<QImage> &current);
    QImage undo(const QImage &current) { return firstOf(undo(QList<QImage>{current})); }
    // The picture after the next undone step, given the picture now.
    QList<QImage> redo(const QList<QImage> &current);
    QImage redo(const QImage &current) { return firstOf(redo(QList<QImage>{current})); }

    void clear();

private:
    struct Step {
        QList<QImage> picture;       // the other side of the step; empty when the operations do it
        EditOperation forward;       // used when picture is null
        EditOperation backward;      // used when picture is null
        bool byOperation = false;
    };

    static qint64 bytesOf(const Step &step);
    static QImage firstOf(const QList<QImage> &frames) { return frames.isEmpty() ? QImage() : frames.constFirst(); }
    static QList<QImage> applyToAll(const EditOperation &operation, const QList<QImage> &frames);
    void trim();

    qint64 m_byteBound;
    std::deque<Step> m_undo; // oldest first
    std::deque<Step> m_redo; // next to redo last
};

} // namespace tarnby::edit
