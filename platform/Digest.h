// Digests of bytes that come in pieces, by the system's own hashing.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace trevolt {

/// One digest of so many bytes in the making, by a system's `State`. Used by one thread. What the steps
/// do stands in platform/DigestSteps.h, for the sources that know the state.
template <class State, std::size_t digestBytes>
class CDigest {
  public:
    /// Starts a digest; a system that offers none makes every further step fail.
    CDigest();
    ~CDigest();
    CDigest(const CDigest&) = delete;
    CDigest& operator=(const CDigest&) = delete;

    /// Adds `count` bytes. False when the system's hashing fails, now or before.
    bool Add(const std::byte* bytes, std::size_t count);

    /// Ends the digest and gives it out. False, and `digest` unchanged, when hashing fails.
    bool Finish(std::array<std::uint8_t, digestBytes>& digest);

  private:
    std::unique_ptr<State> m_state; ///< null when hashing has failed
};

} // namespace trevolt
