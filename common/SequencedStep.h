// A step of shared-out work that is done for one piece after the other.
#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <limits>
#include <mutex>

namespace trevolt {

/// Pieces are numbered from 0. Every thread does the step for the pieces that it has in work, in the
/// order of their numbers; other steps of other pieces go on meanwhile.
class CSequencedStep {
  public:
    /// Whether the step is done for all pieces before this one, and not for this one.
    bool IsNext(std::uint64_t piece) {
        const std::lock_guard lock(m_mutex);
        return m_next == piece;
    }

    /// Waits until the step is done for all pieces before this one, and does it: `step` tells whether
    /// that went well, else it counts as not done and has stopped at this piece. `step` must not throw.
    /// False when it is not done for this piece.
    template <class Step>
    bool Do(std::uint64_t piece, const Step& step) {
        {
            std::unique_lock lock(m_mutex);
            m_moved.wait(lock, [&] { return m_next == piece || m_last < piece; });
            if (m_next != piece)
                return false;
        }
        if (!step()) {
            StopAt(piece);
            return false;
        }
        const std::lock_guard lock(m_mutex);
        ++m_next;
        m_moved.notify_all();
        return true;
    }

    /// Nobody waits for the step of a piece behind this one any more; those before it go on.
    void StopAt(std::uint64_t piece) {
        const std::lock_guard lock(m_mutex);
        m_last = std::min(m_last, piece);
        m_moved.notify_all();
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_moved;
    std::uint64_t m_next = 0;
    std::uint64_t m_last = std::numeric_limits<std::uint64_t>::max();
};

} // namespace trevolt
