// The four binary kinds as tests see them: a table that is written out by hand, independent of the
// table in the code.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>

#include "platform/FileStream.h"
#include "tests/support/CoefMaps.h"
#include "trevolt/BinaryCoefFile.h"
#include "trevolt/MassiveBuf.h"

namespace trevolt::test {

struct BinaryKind {
    const char* name;
    Status (*read)(CChromaCorrectCoef&, const wchar_t*);
    Status (*write)(const CChromaCorrectCoef&, const wchar_t*, const CMassiveGrid*);
    Status (*readSize)(const wchar_t*, std::uint32_t&, std::uint32_t&);
    Status (*readStream)(CChromaCorrectCoef&, std::istream&);
    Status (*writeStream)(const CChromaCorrectCoef&, std::ostream&, const CMassiveGrid*);
    Status (*readStreamSize)(std::istream&, std::uint32_t&, std::uint32_t&);
    std::array<int, 16> magic;
    std::size_t storedBytes;
    bool isDiagonal;
    bool isFloat;
    Status wholeMap; ///< status of a read whose file has the map's size
};

inline const std::array kBinaryKinds{
    BinaryKind{"9fcoef",
               Read9fCoefFile,
               Write9fCoefFile,
               Read9fCoefSize,
               Read9fCoefFile,
               Write9fCoefFile,
               Read9fCoefSize,
               {0xa7, 0x00, 0xf3, 0xce, 0x46, 0xc7, 0x1e, 0x48, 0xb3, 0xd2, 0x5e, 0xdd, 0x63, 0x31,
                0x46, 0x61},
               36,
               false,
               true,
               MakeStatus(1)},
    BinaryKind{"3fcoef",
               Read3fCoefFile,
               Write3fCoefFile,
               Read3fCoefSize,
               Read3fCoefFile,
               Write3fCoefFile,
               Read3fCoefSize,
               {0xf0, 0x5f, 0xd4, 0xa2, 0xcf, 0x9e, 0x93, 0x4f, 0x8f, 0x8a, 0xcd, 0xd1, 0x1e, 0x52,
                0xca, 0x32},
               12,
               true,
               true,
               S_OK},
    BinaryKind{"9bcoef",
               Read9bCoefFile,
               Write9bCoefFile,
               Read9bCoefSize,
               Read9bCoefFile,
               Write9bCoefFile,
               Read9bCoefSize,
               {0x1b, 0xd1, 0xf3, 0xca, 0x70, 0xd5, 0x9e, 0x42, 0x97, 0xbb, 0x9b, 0xa3, 0x1f, 0x0c,
                0x48, 0xd6},
               9,
               false,
               false,
               S_OK},
    BinaryKind{"3bcoef",
               Read3bCoefFile,
               Write3bCoefFile,
               Read3bCoefSize,
               Read3bCoefFile,
               Write3bCoefFile,
               Read3bCoefSize,
               {0xcc, 0x88, 0x57, 0x02, 0xe6, 0x46, 0xc1, 0x49, 0x94, 0xe1, 0x82, 0x32, 0xd6, 0x15,
                0xfa, 0xa2},
               3,
               true,
               false,
               S_OK},
};
constexpr std::size_t k9f = 0;
constexpr std::size_t k3f = 1;
constexpr std::size_t k9b = 2;
constexpr std::size_t k3b = 3;

constexpr std::size_t kFileHeaderBytes = 24;

inline void PrintTo(const BinaryKind& kind, std::ostream* out) { *out << kind.name; }

/// Names the tests of a kind.
inline std::string KindName(const testing::TestParamInfo<BinaryKind>& kind) {
    return std::string("Of") + kind.param.name;
}

inline Bytes Header(const BinaryKind& kind, std::uint32_t version, std::uint32_t width,
                    std::uint32_t height) {
    Bytes bytes;
    for (const int byte : kind.magic)
        bytes.push_back(static_cast<std::byte>(byte));
    for (unsigned shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<std::byte>(version >> shift));
    for (const std::uint32_t side : {width, height})
        for (unsigned shift = 0; shift < 16; shift += 8)
            bytes.push_back(static_cast<std::byte>(side >> shift));
    return bytes;
}

/// Writes a file of header and `raw` compressed as the body.
inline void WriteCoefFile(const std::wstring& path, const Bytes& header, const Bytes& raw) {
    CMassiveBuf body(1U << 16);
    ASSERT_TRUE(body.Allocate(raw.size()));
    for (std::size_t i = 0; i < raw.size(); ++i)
        body.Block(i >> 16)[i & 0xFFFF] = raw[i];
    std::fstream stream;
    ASSERT_TRUE(OpenFileStream(stream, path.c_str(), std::ios::out | std::ios::trunc));
    stream.write(reinterpret_cast<const char*>(header.data()),
                 static_cast<std::streamsize>(header.size()));
    ASSERT_EQ(body.CompressToFile(stream), S_OK);
}

/// The decompressed body of a coefficient file.
inline Bytes RawBody(const std::wstring& path) {
    std::fstream stream;
    EXPECT_TRUE(OpenFileStream(stream, path.c_str(), std::ios::in));
    stream.seekg(kFileHeaderBytes);
    CMassiveBuf body(1U << 16);
    EXPECT_EQ(body.UncompressFromFile(stream, BytesToEnd(stream).value_or(0)), S_OK);
    Bytes raw;
    for (std::uint64_t i = 0; i < body.ByteCount(); ++i)
        raw.push_back(body.Block(i >> 16)[i & 0xFFFF]);
    return raw;
}

inline Bytes FloatBytes(std::initializer_list<float> values) {
    Bytes bytes(values.size() * sizeof(float));
    std::size_t at = 0;
    for (const float value : values) {
        std::memcpy(&bytes[at], &value, sizeof value);
        at += sizeof value;
    }
    return bytes;
}

} // namespace trevolt::test
