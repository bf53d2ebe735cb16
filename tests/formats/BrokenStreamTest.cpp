// Files whose bytes cannot be read to their end, through every reader.
#include <functional>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/formats/BinaryKinds.h"
#include "tests/support/FailingFile.h"
#include "tests/support/Streams.h"
#include "trevolt/PlacedCoefFile.h"
#include "trevolt/RawMapFile.h"
#include "trevolt/TextCoefFile.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

using test::Bytes;

CChromaCorrectCoef SmallMap() {
    CChromaCorrectCoef map;
    map.Resize(3, 2);
    test::PaintMap(map, test::BytePixel);
    return map;
}

struct SBreakableReader {
    const char* name;
    std::function<Status(CChromaCorrectCoef&, std::istream&)> read;
    std::size_t needed; ///< bytes of its file that it takes
};

struct SBrokenRead {
    Status status;
    bool hasReadFailed;
    Status failedRead;
};

SBrokenRead ReadBroken(const SBreakableReader& reader, std::istream& stream) {
    CChromaCorrectCoef map = SmallMap();
    const CTransferReport report;
    const Status status = reader.read(map, stream);
    return {status, report.HasReadFailed(), report.FailedRead()};
}

/// A read that breaks before the reader has what it needs is told, and none behind that.
void ExpectEveryBreakTold(const Bytes& file, const SBreakableReader& reader) {
    for (std::size_t readable = 0; readable <= file.size(); ++readable) {
        SCOPED_TRACE(::testing::Message() << reader.name << ", " << readable << " bytes");
        test::CFailingFile stream(file, readable);
        EXPECT_EQ(ReadBroken(reader, stream).hasReadFailed, readable < reader.needed);
    }
}

/// So is a file that has become shorter than its size was told, by the status or behind it.
void ExpectEveryShrinkingTold(const Bytes& file, const SBreakableReader& reader) {
    for (std::size_t readable = 0; readable <= file.size(); ++readable) {
        SCOPED_TRACE(::testing::Message() << reader.name << ", " << readable << " bytes");
        test::CFailingFile stream(file, readable, /*hasShrunk=*/true);
        const SBrokenRead told = ReadBroken(reader, stream);
        EXPECT_EQ(Failed(told.status) || Failed(told.failedRead), readable < reader.needed);
        EXPECT_FALSE(told.hasReadFailed);
    }
}

Bytes BinaryFile(const test::BinaryKind& kind) {
    std::ostringstream written(std::ios::binary);
    EXPECT_EQ(kind.writeStream(SmallMap(), written, nullptr), S_OK);
    return test::AsBytes(written.str());
}

TEST(BrokenStream, IsToldByEveryReaderOfTheBinaryKinds) {
    for (const test::BinaryKind& kind : test::kBinaryKinds) {
        const Bytes file = BinaryFile(kind);
        for (const SBreakableReader& reader :
             {SBreakableReader{kind.name, kind.readStream, file.size()},
              SBreakableReader{"size",
                               [&](CChromaCorrectCoef&, std::istream& stream) {
                                   std::uint32_t width = 0;
                                   std::uint32_t height = 0;
                                   return kind.readStreamSize(stream, width, height);
                               },
                               test::kFileHeaderBytes}}) {
            ExpectEveryBreakTold(file, reader);
            ExpectEveryShrinkingTold(file, reader);
        }
    }
}

template <class Mask>
SBreakableReader Placed(const char* name,
                        Status (*place)(CChromaCorrectCoef&, std::istream&, SPixelRect&, bool,
                                        const Mask&),
                        std::size_t needed) {
    return {name,
            [place](CChromaCorrectCoef& map, std::istream& stream) {
                SPixelRect rect{1, 0, 2, 2};
                Mask mask{};
                mask.fill(true);
                return place(map, stream, rect, true, mask);
            },
            needed};
}

TEST(BrokenStream, IsToldByThePlacedAndDiagonalReaders) {
    std::array<Bytes, 4> files;
    for (std::size_t i = 0; i < files.size(); ++i)
        files[i] = BinaryFile(test::kBinaryKinds[i]);
    const auto size = [&](std::size_t kind) { return files[kind].size(); };
    const auto expectAllTold = [&](std::size_t kind, const SBreakableReader& reader) {
        ExpectEveryBreakTold(files[kind], reader);
        ExpectEveryShrinkingTold(files[kind], reader);
    };
    expectAllTold(test::k9f, Placed<std::array<bool, 9>>("9f", Place9fCoefFile, size(test::k9f)));
    expectAllTold(test::k3f, Placed<std::array<bool, 3>>("3f", Place3fCoefFile, size(test::k3f)));
    expectAllTold(test::k9b, Placed<std::array<bool, 9>>("9b", Place9bCoefFile, size(test::k9b)));
    expectAllTold(test::k3b, Placed<std::array<bool, 3>>("3b", Place3bCoefFile, size(test::k3b)));
    expectAllTold(test::k9f, {"9f diagonal",
                              [](CChromaCorrectCoef& map, std::istream& stream) {
                                  return ReadDiagonal9fCoefFile(map, stream, nullptr);
                              },
                              size(test::k9f)});
    expectAllTold(test::k9b, {"9b diagonal",
                              [](CChromaCorrectCoef& map, std::istream& stream) {
                                  return ReadDiagonal9bCoefFile(map, stream);
                              },
                              size(test::k9b)});
}

Bytes RawMap() {
    Bytes file = test::MakeBytes({0x20, 0xba, 0xca, 0x2d, 0xed, 0x0b, 0xb9, 0x44, 0xa4, 0xc1, 0xc9,
                                  0xd0, 0x19, 0x16, 0x81, 0x2c, 0,    0,    0,    0,    1,    0,
                                  1,    0,    48,   0,    0,    0,    0,    0,    0,    0});
    file.resize(file.size() + 48);
    for (const int byte : {4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0})
        file.push_back(static_cast<std::byte>(byte));
    return file;
}

TEST(BrokenStream, IsToldByTheRawMapsReader) {
    const Bytes file = RawMap();
    const SBreakableReader reader{
        "raw",
        [](CChromaCorrectCoef& map, std::istream& stream) { return ReadRawMapFile(map, stream); },
        file.size()};
    ExpectEveryBreakTold(file, reader);
    ExpectEveryShrinkingTold(file, reader);
}

// Its status stays 0, so the report is asked for what it says behind that.
TEST(BrokenStream, ARawMapThatIsNotWholeIsAFailedRead) {
    const Bytes file = RawMap();
    for (std::size_t size = 16; size <= file.size(); ++size) {
        CChromaCorrectCoef map = SmallMap();
        std::istringstream stream =
            test::StreamOf({file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size)});
        const CTransferReport report;
        EXPECT_EQ(ReadRawMapFile(map, stream), S_OK);
        EXPECT_EQ(report.FailedRead(), size < file.size() ? E_FAIL : S_OK) << size;
    }
    const test::CBudgetLimit none(0);
    CChromaCorrectCoef map;
    std::istringstream stream = test::StreamOf(file);
    const CTransferReport report;
    EXPECT_EQ(ReadRawMapFile(map, stream), S_OK);
    EXPECT_EQ(report.FailedRead(), E_OUTOFMEMORY);
}

TEST(BrokenStream, IsToldByTheReaderOfTextAndItsProbes) {
    const std::string text = "[T9COEF10]\n1,1,0.5,0,0,0,0.5,0,0,0,0.5\n2,0,1,0,0,0,1,0,0,0,1\n";
    const Bytes file = test::AsBytes(text);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    for (const SBreakableReader& reader :
         {SBreakableReader{"text",
                           [&](CChromaCorrectCoef&map, std::istream&stream) {
                               return ReadTextCoefFile(map, stream, 0, 0, width, height, false);
                           },
                           file.size()},
          SBreakableReader{"size",
                           [&](CChromaCorrectCoef&, std::istream&stream) {
                               return ProbeTextCoefFileSize(stream, width, height);
                           },
                           file.size()},
          SBreakableReader{"extent",
                           [&](CChromaCorrectCoef&, std::istream&stream) {
                               return ProbeCoefDataExtent(stream, width, height);
                           },
                           file.size()}})
        ExpectEveryBreakTold(file, reader);
}

// What came before stays, and the status is that of the shorter file.
TEST(BrokenStream, ATextThatBreaksBehindItsFirstPieceIsTold) {
    std::string text = "[VU30]\n1,1,0.5,0,0,0,0.5,0,0,0,0.5\n";
    text.resize((std::size_t{1} << 18) + 100, '\n');
    for (const std::size_t readable : {std::size_t{1} << 18, (std::size_t{1} << 18) + 99}) {
        test::CFailingFile stream(test::AsBytes(text), readable);
        CChromaCorrectCoef map = SmallMap();
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        const CTransferReport report;
        EXPECT_EQ(ReadTextCoefFile(map, stream, 0, 0, width, height, false), S_OK);
        EXPECT_TRUE(report.HasReadFailed());
        EXPECT_EQ(width, 2U);
        EXPECT_EQ(map.FindElement(1, 1)->m[0], 0.5F);
    }
}

} // namespace
} // namespace trevolt
