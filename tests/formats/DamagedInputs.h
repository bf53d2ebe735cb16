// Inputs of a binary reader: a whole file, and each way in which one can be damaged.
#pragma once

#include <vector>

#include "tests/support/TestFiles.h"
#include "trevolt/StatusCodes.h"

namespace trevolt::test {

struct BinaryInput {
    const char* name;
    Bytes bytes;
    Status status; ///< of a read
};

/// From a whole file, whose read answers `whole`.
inline std::vector<BinaryInput> InputsFrom(const Bytes& file, Status whole) {
    const auto changed = [&](std::size_t at, int byte) {
        Bytes bytes = file;
        bytes[at] = static_cast<std::byte>(byte);
        return bytes;
    };
    const auto cut = [&](std::size_t size) {
        return Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
    };
    Bytes longer = file;
    longer.push_back(std::byte{0});
    return {{"whole", file, whole},
            {"empty", {}, E_COEF_BADFORMAT},
            {"short header", cut(23), E_COEF_BADFORMAT},
            {"header alone", cut(24), E_FAIL},
            {"wrong magic", changed(15, 0x5A), E_COEF_BADFORMAT},
            {"version 2", changed(16, 2), E_COEF_BADFORMAT},
            {"truncated body", cut(file.size() - 1), E_FAIL},
            {"bytes behind the frame", longer, E_FAIL},
            {"lying width", changed(20, 0xFF), E_FAIL},
            {"lying content size", changed(30, 0xFF), E_FAIL}};
}

} // namespace trevolt::test
