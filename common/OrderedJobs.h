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

/// Calls `work(i)` once for every i below `count`, in any order, on the calling thread and up to
/// `jobs` − 1 others. `work` must not throw.
template <class Thread = std::jthread, class Work>
void ShareOut(std::size_t count, std::size_t jobs, const Work& work) {
    std::atomic<std::size_t> next{0};
    const auto takeAll = [&] {
        for (std::size_t i = next++; i < count; i = next++)
            work(i);
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
        m_delivered.wait(lock, [&] { return piece - m_first < m_ahead; });
        return piece;
    }

    void Put(std::size_t piece, Result result) {
        const std::lock_guard lock(m_mutex);
        PlaceOf(piece) = std::move(result);
        m_finished.notify_one();
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
    /// All places are there from the start: threads have nobody to catch what they throw.
    std::vector<std::optional<Result>> m_waiting;
};

/// Calls `work(i)` for every i below `count`, on up to `jobs` threads at once, and `deliver(result)`
/// on the calling thread in the order of i, each as soon as it and those before it are there. No
/// more than `ahead` (at least 1) pieces are in work or wait for their delivery. With one job, and
/// where the system gives no thread, the calling thread does the work itself. Neither `work` nor, with
/// a limit ahead, `deliver` may throw.
template <class Result, class Thread = std::jthread, class Work, class Deliver>
void RunOrdered(std::size_t count, std::size_t jobs, const Work& work, const Deliver& deliver,
                std::size_t ahead = SIZE_MAX) {
    CResultQueue<Result> queue(count, ahead);
    const std::size_t workers = std::min(std::max<std::size_t>(jobs, 1), count);
    const std::vector<Thread> threads = StartThreads<Thread>(workers <= 1 ? 0 : workers, [&] {
        while (const auto piece = queue.Next())
            queue.Put(*piece, work(*piece));
    });
    for (std::size_t i = 0; i < count; ++i)
        deliver(threads.empty() ? work(i) : queue.Take());
}

} // namespace trevolt
