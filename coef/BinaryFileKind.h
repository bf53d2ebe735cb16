// The binary kinds as the coefficient objects use them.
#pragma once

#include <cstdint>
#include <istream>

#include "coef/WordFileSource.h"
#include "formats/BinaryCoefKind.h"
#include "trevolt/BinaryCoefFile.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

struct SBinaryFileKind {
    CoefFileMagic magic;
    Status (*readSize)(std::istream& stream, std::uint32_t& width, std::uint32_t& height);
    Status (*read)(CChromaCorrectCoef& map, std::istream& stream);
};

inline constexpr SBinaryFileKind k9fFile{S9fCoefKind::kMagic, Read9fCoefSize, Read9fCoefFile};
inline constexpr SBinaryFileKind k3fFile{S3fCoefKind::kMagic, Read3fCoefSize, Read3fCoefFile};
inline constexpr SBinaryFileKind k9bFile{S9bCoefKind::kMagic, Read9bCoefSize, Read9bCoefFile};
inline constexpr SBinaryFileKind k3bFile{S3bCoefKind::kMagic, Read3bCoefSize, Read3bCoefFile};

/// The size of a file of the kind. E_COEF_INVALIDARG for a null path, E_COEF_OPENFAILED,
/// E_COEF_BADFORMAT, the outputs then unchanged.
inline Status ReadBinarySize(const SBinaryFileKind& kind, CWordFileSource& file,
                             std::uint32_t& width, std::uint32_t& height) {
    return file.Take([&](std::istream& stream) { return kind.readSize(stream, width, height); });
}

} // namespace trevolt
