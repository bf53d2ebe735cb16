// The binary kinds as the coefficient objects use them.
#pragma once

#include <cstdint>

#include "formats/BinaryCoefKind.h"
#include "trevolt/BinaryCoefFile.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

struct SBinaryFileKind {
    CoefFileMagic magic;
    Status (*readSize)(const wchar_t* path, std::uint32_t& width, std::uint32_t& height);
    Status (*read)(CChromaCorrectCoef& map, const wchar_t* path);
};

inline constexpr SBinaryFileKind k9fFile{S9fCoefKind::kMagic, Read9fCoefSize, Read9fCoefFile};
inline constexpr SBinaryFileKind k3fFile{S3fCoefKind::kMagic, Read3fCoefSize, Read3fCoefFile};
inline constexpr SBinaryFileKind k9bFile{S9bCoefKind::kMagic, Read9bCoefSize, Read9bCoefFile};
inline constexpr SBinaryFileKind k3bFile{S3bCoefKind::kMagic, Read3bCoefSize, Read3bCoefFile};

} // namespace trevolt
