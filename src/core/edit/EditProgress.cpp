#include "EditProgress.h"

#include <algorithm>

namespace tarnby::edit {

namespace {
thread_local EditProgress *currentProgress = nullptr;
}

EditProgress::EditProgress(int expectedPasses)
    : m_expectedPasses(std::max(1, expectedPasses))
{
}

void EditProgress::setExpectedPasses(int passes)
{
    m_expectedPasses = std::max(1, passes);
}

void EditProgress::beginPass(int bands)
{
    m_bandsDone.store(0, std::memory_order_relaxed);
    m_bandsInPass.store(std::max(1, bands), std::memory_order_relaxed);
}

void EditProgress::bandDone()
{
    m_bandsDone.fetch_add(1, std::memory_order_relaxed);
    publish();
}

void EditProgress::endPass()
{
    // A cancelled pass skipped its bands: it is not done.
    if (isCancelled())
        return;
    m_bandsDone.store(0, std::memory_order_relaxed);
    m_passesDone.fetch_add(1, std::memory_order_relaxed);
    publish();
}

void EditProgress::publish()
{
    const double passes = m_passesDone.load(std::memory_order_relaxed)
                          + double(m_bandsDone.load(std::memory_order_relaxed)) / m_bandsInPass.load(std::memory_order_relaxed);
    const int share = std::clamp(int(passes * 1000 / m_expectedPasses), 0, 999);
    // Bands finish out of order on several threads; the share only grows.
    int shown = m_permille.load(std::memory_order_relaxed);
    while (share > shown && !m_permille.compare_exchange_weak(shown, share, std::memory_order_relaxed)) {
    }
    if (m_hook && !isCancelled() && !m_hook(permille()))
        cancel();
}

ProgressScope::ProgressScope(EditProgress *progress)
    : m_previous(currentProgress)
{
    currentProgress = progress;
}

ProgressScope::~ProgressScope()
{
    currentProgress = m_previous;
}

EditProgress *ProgressScope::current()
{
    return currentProgress;
}

} // namespace tarnby::edit
