// The digest of a store's content: of its blocks' whole data in the order of their allocation.
#pragma once

#include <cstddef>
#include <string>

#include "calibuf/WordPlanes.h"
#include "platform/Md5.h"

namespace trevolt {

/// One digest in the making.
class CStoreDigest {
  public:
    /// Adds a block's data. False when the system's hashing fails, now or before.
    bool AddBlock(const std::byte* data, std::size_t bytes) { return m_md5.Add(data, bytes); }

    /// Ends the digest and gives it out as 32 upper-case hexadecimal characters. False, and the text
    /// unchanged, when hashing fails.
    bool Finish(std::wstring& text);

  private:
    CMd5 m_md5;
};

/// The digest that a store has which was given the planes' size and their words. False, and the text
/// unchanged, when hashing fails or the memory for a block is refused, which the thread's transfer
/// report tells.
bool ComputeStoreDigest(const CWordPlanes& planes, std::wstring& text);

} // namespace trevolt
