// Digests of bytes that come in pieces, by the system's own hashing.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace trevolt {

/// What became of a step of a digest.
enum class EHashing : std::uint8_t {
    Done,
    NoMemory, ///< the system's hashing tells that it got none
    Failed,   ///< the system offers no such digest, or gives it up
};

/// One digest of so many bytes in the making, by a system's `State`. Used by one thread. What the steps
/// do stands in platform/DigestSteps.h, for the sources that know the state.
template <class State, std::size_t digestBytes>
class CDigest {
  public:
    /// Starts a digest; where the system's hashing fails, every further step does. Throws
    /// std::bad_alloc.
    CDigest();
    ~CDigest();
    CDigest(const CDigest&) = delete;
    CDigest& operator=(const CDigest&) = delete;

    /// Adds `count` bytes. False when the system's hashing fails, now or before.
    bool Add(const std::byte* bytes, std::size_t count);

    /// Ends the digest and gives it out. False, and `digest` unchanged, when hashing fails.
    bool Finish(std::array<std::uint8_t, digestBytes>& digest);

    /// Whether the system's hashing failed because it got no memory, as far as it tells.
    bool WasMemoryRefused() const { return m_last == EHashing::NoMemory; }

  private:
    /// Takes what became of a step; whether it is done.
    bool Take(EHashing step);

    std::unique_ptr<State> m_state; ///< null when hashing has failed
    EHashing m_last = EHashing::Done;
};

} // namespace trevolt
