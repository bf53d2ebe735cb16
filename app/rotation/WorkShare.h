// How the files in work share the machine: its memory and its threads.
#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace trevolt {

/// Used by any threads. Every file first takes a part of the memory, once or several times, and says
/// when it is finished.
class CWorkShare {
  public:
    /// For `files` files on `threads` threads, each at least 1, in `memory` bytes.
    CWorkShare(std::size_t files, std::size_t threads, std::uint64_t memory)
        : m_memory(memory), m_threads(threads), m_unfinished(files) {}

    /// The memory of one file in work.
    class CPart {
      public:
        /// Waits until `bytes` fit beside what the other files take. A file that needs more than
        /// there is waits until it is alone; whether it fits is the memory budget's to say.
        CPart(CWorkShare& share, std::uint64_t bytes)
            : m_share(share), m_bytes(std::min(bytes, share.m_memory)) {
            std::unique_lock lock(m_share.m_mutex);
            m_share.m_given.wait(lock,
                                 [this] { return m_bytes <= m_share.m_memory - m_share.m_taken; });
            m_share.m_taken += m_bytes;
        }
        ~CPart() {
            const std::lock_guard lock(m_share.m_mutex);
            m_share.m_taken -= m_bytes;
            m_share.m_given.notify_all();
        }
        /// Takes `bytes` more up to `times` times, as often as they are free now, and tells how often.
        std::size_t Extend(std::uint64_t bytes, std::size_t times) {
            const std::lock_guard lock(m_share.m_mutex);
            const std::uint64_t free = (m_share.m_memory - m_share.m_taken) / bytes;
            const std::uint64_t taken = std::min<std::uint64_t>(times, free);
            m_bytes += taken * bytes;
            m_share.m_taken += taken * bytes;
            return static_cast<std::size_t>(taken);
        }
        CPart(const CPart&) = delete;
        CPart& operator=(const CPart&) = delete;

      private:
        CWorkShare& m_share;
        std::uint64_t m_bytes;
    };

    /// Whether a file alone may take `bytes`, whatever the others take now.
    bool Holds(std::uint64_t bytes) const { return bytes <= m_memory; }

    /// The threads among which one file's work may be shared: those that the unfinished files leave
    /// idle are divided between them. At least 1.
    std::size_t ThreadsOfOne() {
        const std::lock_guard lock(m_mutex);
        return std::max<std::size_t>(m_threads / std::max<std::size_t>(m_unfinished, 1), 1);
    }

    /// One more file is finished.
    void Finish() {
        const std::lock_guard lock(m_mutex);
        --m_unfinished;
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_given;
    const std::uint64_t m_memory;
    const std::size_t m_threads;
    std::size_t m_unfinished;
    std::uint64_t m_taken = 0;
};

} // namespace trevolt
