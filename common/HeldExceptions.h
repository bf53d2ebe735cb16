// Streams that are used from several threads.
#pragma once

#include <ios>

namespace trevolt {

/// Sets what `stream` throws for, without throwing it now.
inline void RestoreExceptions(std::ios& stream, std::ios::iostate thrown) {
    try {
        stream.exceptions(thrown);
    } catch (const std::ios::failure&) { // it is set nevertheless; what `work` threw goes on
    }
}

/// The answer of `work`. What `stream` is set to throw for failures, it throws when the work has
/// ended: never on a thread that has nobody to catch it.
template <class Work>
auto HoldingExceptions(std::ios& stream, Work work) {
    const std::ios::iostate thrown = stream.exceptions();
    stream.exceptions(std::ios::goodbit);
    const auto answer = [&] {
        try {
            return work();
        } catch (...) {
            RestoreExceptions(stream, thrown);
            throw;
        }
    }();
    stream.exceptions(thrown);
    return answer;
}

} // namespace trevolt
