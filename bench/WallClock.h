// How long something takes on the wall clock.
#pragma once

#include <chrono>

namespace trevolt {

template <class Work>
double SecondsOf(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace trevolt
