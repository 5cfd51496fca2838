#pragma once

#include <QtGlobal>

#include <atomic>
#include <functional>

// Progress and cancellation of a picture operation.
//
// The banded operations of PictureEdits.h report each band of rows they
// finish to the EditProgress made current on the calling thread (by a
// ProgressScope), and skip the bands still to do once it is cancelled. The
// work that is not banded (a quarter turn, smooth resizing, drawing text and
// shapes) reports nothing and cannot stop half-way; it is quick beside the
// rest.
//
// A cancelled operation returns a picture that means nothing: its caller
// must drop it and keep the picture it had (applyToPicture does).
//
// Progress is counted in passes over the picture: the caller says how many
// it expects (frames times passes per frame); permille() gives the share
// done, never more than 999 until finish() is called.
namespace tarnby::edit {

class EditProgress
{
public:
    // Called after each band, from whichever thread did it (often a pool
    // thread): permille as permille() gives it. Returning false cancels.
    using Hook = std::function<bool(int permille)>;

    explicit EditProgress(int expectedPasses = 1);

    void setExpectedPasses(int passes);
    void setHook(Hook hook) { m_hook = std::move(hook); }

    // Thread-safe.
    void cancel() { m_cancelled.store(true, std::memory_order_relaxed); }
    bool isCancelled() const { return m_cancelled.load(std::memory_order_relaxed); }
    int permille() const { return m_permille.load(std::memory_order_relaxed); }
    // The whole operation is done.
    void finish() { m_permille.store(1000, std::memory_order_relaxed); }

    // For the operations: a pass of bands bands begins; one band of it is
    // done (any thread); the pass is over.
    void beginPass(int bands);
    void bandDone();
    void endPass();

private:
    void publish();

    Hook m_hook;
    int m_expectedPasses = 1;
    std::atomic<bool> m_cancelled{false};
    std::atomic<int> m_permille{0};
    std::atomic<int> m_passesDone{0};
    std::atomic<int> m_bandsInPass{1};
    std::atomic<int> m_bandsDone{0};
};

// Makes progress the current one of the calling thread while it lives (null:
// none); the previous one comes back when it ends.
class ProgressScope
{
public:
    explicit ProgressScope(EditProgress *progress);
    ~ProgressScope();
    ProgressScope(const ProgressScope &) = delete;
    ProgressScope &operator=(const ProgressScope &) = delete;

    static EditProgress *current();

private:
    EditProgress *m_previous;
};

} // namespace tarnby::edit
