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

/// Calls `work(i)` once for every i below `count`, begun in their order, on the calling thread and up to
/// `jobs` − 1 others. Where `work` answers whether to go on, a thread begins nothing more once it is told
/// not to. `work` must not throw.
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
    const std::size_t workers = std::min(std::max<std::size_t>(jobs, 1), count);
    const std::vector<Thread> threads =
        StartThreads<Thread>(workers == 0 ? 0 : workers - 1, takeAll);
    takeAll();
}

/// The hand-over of `RunOrdered`: results wait here until those before them are delivered.
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
        m_delivered.wait(lock, [&] { return m_isStopped || piece - m_first < m_ahead; });
        return m_isStopped ? std::nullopt : std::optional(piece);
    }

    void Put(std::size_t piece, Result result) {
        const std::lock_guard lock(m_mutex);
        PlaceOf(piece) = std::move(result);
        m_finished.notify_one();
    }

    /// No further piece is given out, and nobody waits for the delivery of earlier ones.
    void Stop() {
        const std::lock_guard lock(m_mutex);
        m_isStopped = true;
        m_delivered.notify_all();
    }

    /// Whether the result behind the last one taken is there.
    bool IsReady() {
        const std::lock_guard lock(m_mutex);
        return m_first < m_count && PlaceOf(m_first).has_value();
    }

    /// The result behind the last one taken.
    Result Take() {
        std::unique_lock lock(m_mutex);
        std::optional<Result>& first = PlaceOf(m_first);
        m_finished.wait(lock, [&] { return first.has_value(); });
        Result result = *std::exchange(first, std::nullopt);
        ++m_first;
        m_delivered.notify_all();
        return result;
    }

  private:
    /// No more pieces than there are places are on their way at once.
    std::optional<Result>& PlaceOf(std::size_t piece) {
        return m_waiting[piece % m_waiting.size()];
    }

    std::mutex m_mutex;
    std::condition_variable m_finished;
    std::condition_variable m_delivered;
    std::size_t m_count;
    std::size_t m_ahead;
    std::size_t m_next = 0;
    std::size_t m_first = 0; ///< the piece whose result is taken next
    bool m_isStopped = false;
    /// All places are there from the start: threads have nobody to catch what they throw.
    std::vector<std::optional<Result>> m_waiting;
};

/// Calls `work(i)` for every i below `count`, on up to `jobs` threads at once, while it lives, and
/// gives the results out in the order of i. No more than `ahead` (at least 1) pieces are in work or
/// wait to be taken. With fewer jobs than `fewestThreads`, with one piece, and where the system gives no
/// thread, the taker does the work itself. `work` must not throw where threads do it. What is not taken when it goes is let go: the
/// pieces in work are finished, no further one is begun.
template <class Result, class Work, class Thread = std::jthread>
class COrderedWork {
  public:
    COrderedWork(std::size_t count, std::size_t jobs, const Work& work,
                 std::size_t ahead = SIZE_MAX, std::size_t fewestThreads = 2)
        : m_work(work), m_queue(count, ahead) {
        const std::size_t workers = std::min(std::max<std::size_t>(jobs, 1), count);
        m_threads =
            StartThreads<Thread>(workers < fewestThreads || count == 1 ? 0 : workers, [this] {
                while (const auto piece = m_queue.Next())
                    m_queue.Put(*piece, m_work(*piece));
            });
    }
    ~COrderedWork() { m_queue.Stop(); }
    COrderedWork(const COrderedWork&) = delete;
    COrderedWork& operator=(const COrderedWork&) = delete;

    bool HasThreads() const { return !m_threads.empty(); }
    /// Whether `Take` would neither wait nor work.
    bool IsReady() { return m_queue.IsReady(); }
    /// The next result; to be called no more than `count` times.
    Result Take() { return HasThreads() ? m_queue.Take() : m_work(m_taken++); }

  private:
    const Work& m_work;
    CResultQueue<Result> m_queue;
    std::size_t m_taken = 0; ///< without threads
    std::vector<Thread> m_threads;
};

/// Calls `work(i)` as `COrderedWork` does for every i below `count`, and `deliver(result)` on the
/// calling thread in the order of i, each as soon as it and those before it are there. What `deliver`
/// throws comes through, once the pieces in work are finished.
template <class Result, class Thread = std::jthread, class Work, class Deliver>
void RunOrdered(std::size_t count, std::size_t jobs, const Work& work, const Deliver& deliver,
                std::size_t ahead = SIZE_MAX) {
    COrderedWork<Result, Work, Thread> results(count, jobs, work, ahead);
    for (std::size_t i = 0; i < count; ++i)
        deliver(results.Take());
}

} // namespace trevolt
