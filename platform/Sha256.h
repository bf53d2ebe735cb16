// SHA-256 of bytes that come in pieces, by the system's own hashing: CNG on Windows, libcrypto
// elsewhere.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace trevolt {

/// One digest in the making. Used by one thread.
class CSha256 {
  public:
    /// Starts a digest; a system that offers none makes every further step fail.
    CSha256();
    ~CSha256();
    CSha256(const CSha256&) = delete;
    CSha256& operator=(const CSha256&) = delete;

    /// Adds `count` bytes. False when the system's hashing fails, now or before.
    bool Add(const std::byte* bytes, std::size_t count);

    /// Ends the digest and gives it out. False, and `digest` unchanged, when hashing fails.
    bool Finish(std::array<std::uint8_t, 32>& digest);

  private:
    struct SState;
    std::unique_ptr<SState> m_state; ///< null when hashing has failed
};

} // namespace trevolt
