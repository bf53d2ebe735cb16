// What a buffer holds, as one run of bytes.
#pragma once

#include "tests/support/TestFiles.h"
#include "trevolt/MassiveBuf.h"

namespace trevolt::test {

inline Bytes Content(const CMassiveBuf& buffer) {
    Bytes all;
    for (std::uint64_t i = 0; i < buffer.ByteCount(); ++i)
        all.push_back(buffer.Block(
            static_cast<std::size_t>(i / buffer.BlockBytes()))[i % buffer.BlockBytes()]);
    return all;
}

} // namespace trevolt::test
