// Runs independent pieces of work on several threads and hands their results over in order.
#pragma once

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace trevolt {

/// Calls `work(i)` for every i below `count`, on up to `jobs` threads at once but at least one, and
/// `deliver(result)` on the calling thread in the order of i, each as soon as it and those before
/// it are there. Where the system refuses a thread, those that it gave do the work; the calling
/// thread does when it gave none. `work` must not throw.
template <class Result, class Thread = std::jthread, class Work, class Deliver>
void RunOrdered(std::size_t count, std::size_t jobs, Work work, Deliver deliver) {
    std::mutex mutex;
    std::condition_variable finished;
    std::vector<std::optional<Result>> results(count);
    std::atomic<std::size_t> next{0};

    const auto takeWork = [&] {
        const std::size_t i = next++;
        if (i >= count)
            return false;
        Result result = work(i);
        const std::lock_guard lock(mutex);
        results[i] = std::move(result);
        finished.notify_one();
        return true;
    };
    std::vector<Thread> threads;
    const std::size_t threadCount = std::min(std::max<std::size_t>(jobs, 1), count);
    try {
        while (threads.size() < threadCount)
            threads.emplace_back([&] {
                while (takeWork()) {
                }
            });
    } catch (const std::system_error&) { // no more threads than these
    }
    for (std::optional<Result>& result : results) {
        if (threads.empty())
            takeWork();
        std::unique_lock lock(mutex);
        finished.wait(lock, [&] { return result.has_value(); });
        lock.unlock();
        deliver(*result);
        result.reset();
    }
}

} // namespace trevolt
