// Streams that are used from several threads.
#pragma once

#include <ios>

namespace trevolt {

/// The answer of `work`. What `stream` is set to throw for failures, it throws when the work has
/// ended: never on a thread that has nobody to catch it.
template <class Work>
auto HoldingExceptions(std::ios& stream, Work work) {
    const std::ios::iostate thrown = stream.exceptions();
    stream.exceptions(std::ios::goodbit);
    const auto answer = work();
    stream.exceptions(thrown);
    return answer;
}

} // namespace trevolt
