#include "trevolt/TurnedCoefFile.h"

#include <random>

#include <gtest/gtest.h>

#include "tests/formats/BinaryKinds.h"
#include "tests/support/CoefMaps.h"
#include "tests/support/ExtremeNumbers.h"
#include "tests/support/Streams.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

using namespace test;

constexpr std::size_t kBlockElements = 1U << 18;

using WriteTurned = Status (*)(const CChromaCorrectCoef&, const wchar_t*, const SPixelRect&,
                               std::uint32_t);
constexpr std::array<WriteTurned, 4> kWriteTurned{WriteTurned9fCoefFile, WriteTurned3fCoefFile,
                                                  WriteTurned9bCoefFile, WriteTurned3bCoefFile};
using WriteTurnedStream = Status (*)(const CChromaCorrectCoef&, std::ostream&, const SPixelRect&,
                                     std::uint32_t);
constexpr std::array<WriteTurnedStream, 4> kWriteTurnedStream{
    WriteTurned9fCoefFile, WriteTurned3fCoefFile, WriteTurned9bCoefFile, WriteTurned3bCoefFile};

/// A turned rectangle as a table of modes written out by hand.
struct Turned {
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t mode = 0;

    Turned(std::size_t w, std::size_t h, std::size_t turnMode)
        : width(turnMode == 2 ? w : h), height(turnMode == 2 ? h : w), mode(turnMode) {}

    /// Stored index of pixel (x, y) of the rectangle.
    std::size_t IndexOf(std::size_t x, std::size_t y) const {
        switch (mode) {
        case 1:
            return x * width + (width - 1 - y);
        case 2:
            return (height - 1 - y) * width + (width - 1 - x);
        default:
            return (height - 1 - x) * width + y;
        }
    }
};

/// The `.9fcoef` body as copies of twelve values leave it, made column by column; what would run
/// over a block of 2^18 elements or over the end is dropped.
std::vector<float> TwelveValueCopies(const CChromaCorrectCoef& map, const SPixelRect& rect,
                                     std::size_t mode) {
    const auto w = static_cast<std::size_t>(rect.Width());
    const auto h = static_cast<std::size_t>(rect.Height());
    const Turned turned(w, h, mode);
    std::vector<float> body(w * h * 9, -77.0F);
    for (std::size_t x = 0; x < w; ++x) {
        for (std::size_t y = 0; y < h; ++y) {
            const std::size_t index = turned.IndexOf(x, y);
            const SMatrixCoef* element = map.FindElement(rect.left + static_cast<std::int32_t>(x),
                                                         rect.top + static_cast<std::int32_t>(y));
            const bool hasNext = (index + 1) % kBlockElements != 0 && index + 1 < w * h;
            const std::size_t count = element != nullptr && hasNext ? 12 : 9;
            const SMatrixCoef source = element == nullptr ? SMatrixCoef{} : *element;
            std::copy_n(source.m.begin(), count,
                        body.begin() + static_cast<std::ptrdiff_t>(index * 9));
        }
    }
    return body;
}

/// The body of the other kinds.
Bytes PlainBody(std::size_t kind, const CChromaCorrectCoef& map, const SPixelRect& rect,
                std::size_t mode) {
    const auto w = static_cast<std::size_t>(rect.Width());
    const auto h = static_cast<std::size_t>(rect.Height());
    const Turned turned(w, h, mode);
    const BinaryKind& own = kBinaryKinds[kind];
    Bytes body(w * h * own.storedBytes);
    for (std::size_t x = 0; x < w; ++x) {
        for (std::size_t y = 0; y < h; ++y) {
            const SMatrixCoef* element = map.FindElement(rect.left + static_cast<std::int32_t>(x),
                                                         rect.top + static_cast<std::int32_t>(y));
            const SMatrixCoef source = element == nullptr ? SMatrixCoef{} : *element;
            std::byte* at = &body[turned.IndexOf(x, y) * own.storedBytes];
            for (std::size_t k = 0; k < 9; k += own.isDiagonal ? 4 : 1) {
                if (own.isFloat) {
                    std::memcpy(at, &source.m[k], sizeof(float));
                    at += sizeof(float);
                } else {
                    *at++ = static_cast<std::byte>(std::lround(source.m[k] * 255.0F) & 0xFF);
                }
            }
        }
    }
    return body;
}

std::vector<float> Floats(const Bytes& bytes) {
    std::vector<float> floats(bytes.size() / sizeof(float));
    if (!floats.empty())
        std::memcpy(floats.data(), bytes.data(), floats.size() * sizeof(float));
    return floats;
}

class TurnedCoefFile : public ::testing::Test {
  protected:
    std::wstring Path() const { return m_folder.File(L"turned"); }

    void ExpectHeader(std::size_t kind, std::uint32_t width, std::uint32_t height) {
        Bytes file = ReadFile(Path());
        file.resize(kFileHeaderBytes);
        EXPECT_EQ(file, Header(kBinaryKinds[kind], 1, width, height));
    }

    void ExpectTurned(std::size_t kind, const CChromaCorrectCoef& map, const SPixelRect& rect,
                      std::uint32_t mode) {
        SCOPED_TRACE(testing::Message() << kBinaryKinds[kind].name << ", mode " << mode);
        ASSERT_EQ(kWriteTurned[kind](map, Path().c_str(), rect, mode), S_OK);
        const auto w = static_cast<std::uint32_t>(rect.Width());
        const auto h = static_cast<std::uint32_t>(rect.Height());
        ExpectHeader(kind, mode == 2 ? w : h, mode == 2 ? h : w);
        if (kind == k9f)
            ASSERT_TRUE(Floats(RawBody(Path())) == TwelveValueCopies(map, rect, mode));
        else
            ASSERT_TRUE(RawBody(Path()) == PlainBody(kind, map, rect, mode));
    }

    CTemporaryFolder m_folder;
};

TEST_F(TurnedCoefFile, AQuarterTurnPutsPixelsWhereTheTableSays) {
    CChromaCorrectCoef map;
    map.Resize(4, 2);
    PaintMap(map, PatternPixel);
    EXPECT_EQ(WriteTurned3fCoefFile(map, Path().c_str(), {0, 0, 4, 2}, 1), S_OK);
    ExpectHeader(k3f, 2, 4);
    const std::vector<float> body = Floats(RawBody(Path()));
    ASSERT_EQ(body.size(), 8U * 3U);
    EXPECT_EQ(body[3 * 1], PatternPixel(0, 0).m[0]);           // stored (1, 0)
    EXPECT_EQ(body[3 * (3 * 2 + 0)], PatternPixel(3, 1).m[0]); // stored (0, 3)
}

TEST_F(TurnedCoefFile, IsWhatTheTableSaysForEveryKindModeAndRectangle) {
    std::mt19937 random(21);
    const auto below = [&random](std::uint32_t n) {
        return static_cast<std::int32_t>(random() % n);
    };
    for (int round = 0; round < 150; ++round) {
        const std::size_t kind = random() % kBinaryKinds.size();
        CChromaCorrectCoef map;
        map.Resize(1 + below(20), 1 + below(20));
        if (kBinaryKinds[kind].isFloat)
            PaintMap(map, PatternPixel);
        else
            PaintMap(map, BytePixel);
        // Some rectangles hang over the map's edges.
        const std::int32_t left = below(25) - 4;
        const std::int32_t top = below(25) - 4;
        const SPixelRect rect{left, top, left + 1 + below(20), top + 1 + below(20)};
        ExpectTurned(kind, map, rect, 1 + static_cast<std::uint32_t>(below(3)));
        if (HasFatalFailure())
            return;
    }
}

TEST_F(TurnedCoefFile, TheTwelveValueCopyLeavesTrailingValuesWhereItIsKnownTo) {
    CChromaCorrectCoef map; // with default trailing values 0, 1, 0
    map.Resize(4, 3);
    PaintMap(map, BytePixel);
    for (std::uint32_t mode = 1; mode <= 3; ++mode) {
        ASSERT_EQ(WriteTurned9fCoefFile(map, Path().c_str(), {0, 0, 4, 3}, mode), S_OK);
        const std::vector<float> body = Floats(RawBody(Path()));
        const Turned turned(4, 3, mode);
        for (std::size_t x = 0; x < 4; ++x) {
            for (std::size_t y = 0; y < 3; ++y) {
                const std::size_t index = turned.IndexOf(x, y);
                const std::size_t column = index % turned.width;
                const std::size_t row = index / turned.width;
                const bool overrun = mode == 3 ? column == 0 && row != 0 : column != 0;
                SMatrixCoef expected =
                    BytePixel(static_cast<std::int32_t>(x), static_cast<std::int32_t>(y));
                if (overrun)
                    std::copy_n(std::array<float, 3>{0, 1, 0}.begin(), 3, expected.m.begin());
                EXPECT_TRUE(std::equal(expected.m.begin(), expected.m.begin() + 9,
                                       body.begin() + static_cast<std::ptrdiff_t>(index * 9)))
                    << "mode " << mode << ", stored " << column << ", " << row;
            }
        }
    }
}

TEST_F(TurnedCoefFile, TheTwelveValueCopyStopsAtABlock) {
    CChromaCorrectCoef map;
    map.Resize(520, 510); // 265,200 elements: more than one block
    PaintMap(map, PatternPixel);
    for (std::uint32_t mode = 1; mode <= 3; ++mode)
        ExpectTurned(k9f, map, {0, 0, 520, 510}, mode);
}

TEST_F(TurnedCoefFile, FourQuarterTurnsGiveTheStart) {
    for (std::size_t kind = 0; kind < kBinaryKinds.size(); ++kind) {
        SCOPED_TRACE(kBinaryKinds[kind].name);
        CChromaCorrectCoef map;
        map.Resize(13, 7);
        PaintMap(map, BytePixel);
        for (int turn = 0; turn < 4; ++turn) {
            const std::int32_t width = map.Width();
            const std::int32_t height = map.Height();
            ASSERT_EQ(kWriteTurned[kind](map, Path().c_str(), {0, 0, width, height}, 1), S_OK);
            map.Resize(height, width);
            ASSERT_EQ(kBinaryKinds[kind].read(map, Path().c_str()), kBinaryKinds[kind].wholeMap);
        }
        // The twelve-value copy of the `.9fcoef` writer spoils the first three values.
        const std::size_t firstKept = kind == k9f ? 3 : 0;
        for (std::int32_t y = 0; y < 7; ++y)
            for (std::int32_t x = 0; x < 13; ++x)
                for (std::size_t k = firstKept; k < 9; k += kBinaryKinds[kind].isDiagonal ? 4 : 1)
                    ASSERT_EQ(map.FindElement(x, y)->m[k], BytePixel(x, y).m[k])
                        << x << ", " << y << ", " << k;
    }
}

TEST_F(TurnedCoefFile, AnUnknownModeGivesAFileWithoutPixels) {
    CChromaCorrectCoef map;
    map.Resize(4, 2);
    for (std::size_t kind = 0; kind < kBinaryKinds.size(); ++kind) {
        for (const std::uint32_t mode : {0U, 4U, 5U, 0xFFFFFFFFU}) {
            EXPECT_EQ(kWriteTurned[kind](map, Path().c_str(), {0, 0, 4, 2}, mode), S_OK);
            ExpectHeader(kind, 0, 0);
            EXPECT_TRUE(RawBody(Path()).empty());
        }
    }
}

TEST_F(TurnedCoefFile, ARectangleFarFromTheMapGivesIdentities) {
    CChromaCorrectCoef map;
    map.Resize(4, 2);
    PaintMap(map, BytePixel);
    for (const SPixelRect& rect : {SPixelRect{kInt32Max - 2, kInt32Max - 1, kInt32Max, kInt32Max},
                                   SPixelRect{kInt32Min, kInt32Min, kInt32Min + 2, kInt32Min + 1}})
        for (std::size_t kind = 0; kind < kBinaryKinds.size(); ++kind)
            for (std::uint32_t mode = 1; mode <= 3; ++mode)
                ExpectTurned(kind, map, rect, mode);
}

TEST_F(TurnedCoefFile, RefusesWhatCannotBeTurnedBeforeTheFileIsTouched) {
    CChromaCorrectCoef map;
    map.Resize(4, 2);
    const CChromaCorrectCoef empty;
    for (const auto& write : kWriteTurned) {
        EXPECT_EQ(write(map, nullptr, {0, 0, 4, 2}, 1), E_COEF_INVALIDARG);
        EXPECT_EQ(write(empty, Path().c_str(), {0, 0, 4, 2}, 1), E_COEF_INVALIDARG);
        for (std::uint32_t mode = 1; mode <= 3; ++mode) {
            EXPECT_EQ(write(map, Path().c_str(), {1, 0, 0, 2}, mode), E_FAIL);
            EXPECT_EQ(write(map, Path().c_str(), {0, 0, 65536, 32768}, mode), E_FAIL); // 2^31
            EXPECT_EQ(
                write(map, Path().c_str(), {kInt32Min, kInt32Min, kInt32Max, kInt32Max}, mode),
                E_FAIL);
        }
        const CBudgetLimit none(0);
        EXPECT_EQ(write(map, Path().c_str(), {0, 0, 4, 2}, 1), E_FAIL);
    }
    EXPECT_FALSE(FileExists(Path()));
}

TEST_F(TurnedCoefFile, NeedsAPathThatOpens) {
    CChromaCorrectCoef map;
    map.Resize(4, 2);
    for (const auto& write : kWriteTurned)
        EXPECT_EQ(write(map, m_folder.Path().c_str(), {0, 0, 4, 2}, 1), E_COEF_OPENFAILED);
}

TEST_F(TurnedCoefFile, AStreamGetsTheFilesBytesWhereItStands) {
    CChromaCorrectCoef map;
    map.Resize(7, 5);
    PaintMap(map, PatternPixel);
    for (std::size_t kind = 0; kind < kBinaryKinds.size(); ++kind)
        for (std::uint32_t mode = 0; mode <= 3; ++mode) {
            const SPixelRect rect{1, 1, 9, 5};
            ASSERT_EQ(kWriteTurned[kind](map, Path().c_str(), rect, mode), S_OK);
            std::ostringstream stream;
            stream << kPrefix;
            EXPECT_EQ(kWriteTurnedStream[kind](map, stream, rect, mode), S_OK);
            EXPECT_EQ(stream.str(), std::string(kPrefix) + ReadText(Path()));
        }
}

TEST_F(TurnedCoefFile, AStreamTellsThatItRanFullAndIsNotTouchedWhereNoFileIs) {
    CChromaCorrectCoef map;
    map.Resize(4, 2);
    for (const auto& write : kWriteTurnedStream) {
        CFullDisk full(30);
        const CTransferReport report;
        EXPECT_EQ(write(map, full, {0, 0, 4, 2}, 1), E_FAIL);
        EXPECT_TRUE(full.bad());
        EXPECT_FALSE(report.HasWriteFailed());
        std::ostringstream untouched;
        EXPECT_EQ(write(CChromaCorrectCoef(), untouched, {0, 0, 4, 2}, 1), E_COEF_INVALIDARG);
        EXPECT_EQ(write(map, untouched, {1, 0, 0, 2}, 1), E_FAIL);
        EXPECT_TRUE(untouched.good());
        EXPECT_TRUE(untouched.str().empty());
    }
}

} // namespace
} // namespace trevolt
