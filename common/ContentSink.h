// What takes the content of a frame that is never held whole.
#pragma once

#include <cstddef>

namespace trevolt {

/// Takes bytes in their order. The calls come one after the other, but not all by the same thread.
class CContentSink {
  public:
    virtual ~CContentSink() = default;
    CContentSink(const CContentSink&) = delete;
    CContentSink& operator=(const CContentSink&) = delete;

    /// Takes the next `count` bytes, which are there until it answers.
    virtual void Take(const std::byte* bytes, std::size_t count) noexcept = 0;

  protected:
    CContentSink() = default;
};

} // namespace trevolt
