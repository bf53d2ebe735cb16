// Shares independent pieces of work among several threads.
#pragma once

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <new>
#include <optional>
#include <system_error>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace trevolt {

/// Starts `count` threads with the same body, or as many as the system gives.
template <class Thread, class Body>
std::vector<Thread> StartThreads(std::size_t count, const Body& body) {
    std::vector<Thread> threads;
    try {
        while (threads.size() < count)
            threads.emplace_back(body);
    } catch (const std::system_error&) { // no more threads than these
    } catch (const std::bad_alloc&) {    // nor memory for another one
    }
    return threads;
}

/// Calls `work(i)` once for every i below `count`, begun in their order, on the calling thread and
/// up to `jobs` − 1 others. Where `work` answers whether to go on, a thread begins nothing more once
/// it is told not to. `work` must not throw.
template <class Thread = std::jthread, class Work>
void ShareOut(std::size_t count, std::size_t jobs, const Work& work) {
    std::atomic<std::size_t> next{0};
    const auto takeAll = [&] {
        for (std::size_t i = next++; i < count; i = next++) {
            if constexpr (std::is_void_v<decltype(work(i))>)
                work(i);
            else if (!work(i))
                return;
        }
    };
    const std::size_t workers = std::min(jobs, count);
    const std::vector<Thread> threads =
        StartThreads<Thread>(workers == 0 ? 0 : workers - 1, takeAll);
    takeAll();
}

/// The hand-over of `COrderedWork`: results wait here until those before them are taken.
template <class Result>
class CResultQueue {
  public:
    CResultQueue(std::size_t count, std::size_t ahead)
        : m_count(count), m_ahead(ahead), m_waiting(std::min(count, ahead)) {}

    /// The next piece of work, once no more than `ahead` results before it wait or are in work;
    /// nothing when none is left.
    std::optional<std::size_t> Next() {
        std::unique_lock lock(m_mutex);
        if (m_next == m_count)
            return std::nullopt;
        const std::size_t piece = m_next++;
        m_taken.wait(lock, [&] { return m_isStopped || piece - m_first < m_ahead; });
        return m_isStopped ? std::nullopt : std::optional(piece);
    }

    /// The next piece of work, if the result that is to be taken next is still in work and `Next` would
    /// not wait.
    std::optional<std::size_t> NextMeanwhile() {
        const std::lock_guard lock(m_mutex);
        if (m_next == m_count || m_next - m_first >= m_ahead || IsFirstThere())
            return std::nullopt;
        return m_next++;
    }

    void Put(std::size_t piece, Result result) {
        const std::lock_guard lock(m_mutex);
        PlaceOf(piece) = std::move(result);
        m_finished.notify_one();
    }

    /// No further piece is given out, and nobody waits for the taking of earlier ones.
    void Stop() {
        const std::lock_guard lock(m_mutex);
        m_isStopped = true;
        m_taken.notify_all();
    }

    /// Whether the result behind the last one taken is there.
    bool IsReady() {
        const std::lock_guard lock(m_mutex);
        return IsFirstThere();
    }

    /// The result behind the last one taken.
    Result Take() {
        std::unique_lock lock(m_mutex);
        m_finished.wait(lock, [&] { return IsFirstThere(); });
        Result result = *std::exchange(PlaceOf(m_first), std::nullopt);
        ++m_first;
        m_taken.notify_all();
        return result;
    }

  private:
    bool IsFirstThere() { return m_first < m_count && PlaceOf(m_first).has_value(); }

    /// No more pieces than there are places are on their way at once.
    std::optional<Result>& PlaceOf(std::size_t piece) {
        return m_waiting[piece % m_waiting.size()];
    }

    std::mutex m_mutex;
    std::condition_variable m_finished;
    std::condition_variable m_taken;
    std::size_t m_count;
    std::size_t m_ahead;
    std::size_t m_next = 0;
    std::size_t m_first = 0; ///< the piece whose result is taken next
    bool m_isStopped = false;
    /// All places are there from the start: threads have nobody to catch what they throw.
    std::vector<std::optional<Result>> m_waiting;
};

/// What the one does who takes the results of `COrderedWork`.
enum class ETaker {
    Works, ///< is one of the jobs, and works until the result that is asked for is there
    Waits  ///< has other things to do, which the work is to go on beside
};

/// Calls `work(i)` for every i below `count`, on up to `jobs` threads at once, while it lives, and
/// gives the results out in the order of i. No more than `ahead` (at least 1) pieces are in work or
/// wait to be taken. Of one piece, and where the system gives no thread, the taker does all the work.
/// `work` must not throw where threads do it. What is not taken when it goes is let go: the pieces in
/// work are finished, no further one is begun.
template <class Result, class Work, class Thread = std::jthread>
class COrderedWork {
  public:
    COrderedWork(std::size_t count, std::size_t jobs, const Work& work, ETaker taker,
                 std::size_t ahead = SIZE_MAX)
        : m_work(work), m_queue(count, ahead) {
        const std::size_t workers = std::min(std::max<std::size_t>(jobs, 1), count);
        const bool isOneLess = taker == ETaker::Works || count == 1;
        m_threads = StartThreads<Thread>(workers == 0 ? 0 : workers - (isOneLess ? 1 : 0), [this] {
            while (const auto piece = m_queue.Next())
                DoPiece(*piece);
        });
        m_doesTakerWork = taker == ETaker::Works || m_threads.empty();
    }
    ~COrderedWork() { m_queue.Stop(); }
    COrderedWork(const COrderedWork&) = delete;
    COrderedWork& operator=(const COrderedWork&) = delete;

    bool HasThreads() const { return !m_threads.empty(); }
    /// Whether `Take` would neither wait nor work.
    bool IsReady() { return m_queue.IsReady(); }
    /// The next result; to be called no more than `count` times.
    Result Take() {
        while (m_doesTakerWork) {
            const auto piece = m_queue.NextMeanwhile();
            if (!piece)
                break;
            DoPiece(*piece);
        }
        return m_queue.Take();
    }

  private:
    void DoPiece(std::size_t piece) { m_queue.Put(piece, m_work(piece)); }

    const Work& m_work;
    bool m_doesTakerWork = false;
    CResultQueue<Result> m_queue;
    std::vector<Thread> m_threads;
};

} // namespace trevolt
