#include "trevolt/PlacedCoefFile.h"

#include <functional>
#include <random>

#include <gtest/gtest.h>

#include "formats/BinaryCoefKind.h"
#include "platform/FileSystem.h"
#include "tests/formats/BinaryKinds.h"
#include "tests/formats/DamagedInputs.h"
#include "tests/support/CoefMaps.h"
#include "tests/support/ExtremeNumbers.h"
#include "tests/support/Streams.h"

namespace trevolt {
namespace {

using namespace test;

/// One flag per matrix entry; the diagonal kinds look at entries 0, 4 and 8.
using Mask = std::array<bool, 9>;
constexpr Mask kAll{true, true, true, true, true, true, true, true, true};
constexpr Mask kDiagonal{true, false, false, false, true, false, false, false, true};

DiagonalEntryMask DiagonalOf(const Mask& mask) { return {mask[0], mask[4], mask[8]}; }

/// `source` is a path or a stream.
template <class Source>
Status Place(std::size_t kind, CChromaCorrectCoef& map, Source&& source, SPixelRect& rect,
             bool clip, const Mask& mask) {
    switch (kind) {
    case k9f:
        return Place9fCoefFile(map, source, rect, clip, mask);
    case k3f:
        return Place3fCoefFile(map, source, rect, clip, DiagonalOf(mask));
    case k9b:
        return Place9bCoefFile(map, source, rect, clip, mask);
    default:
        return Place3bCoefFile(map, source, rect, clip, DiagonalOf(mask));
    }
}

/// What stands in the map before: twelve values that no file holds.
SMatrixCoef Ground(std::int32_t x, std::int32_t y) {
    SMatrixCoef pixel = PatternPixel(x, y);
    for (float& value : pixel.m)
        value = -1.0F - value;
    return pixel;
}

/// What becomes of a pixel of the map by a pixel of the file.
SMatrixCoef Placed(bool diagonalKind, SMatrixCoef pixel, const SMatrixCoef& stored,
                   const Mask& mask) {
    for (std::size_t k = 0; k < 9; ++k) {
        const bool onDiagonal = k % 4 == 0;
        if (diagonalKind && !onDiagonal)
            pixel.m[k] = 0.0F;
        else if (mask[k])
            pixel.m[k] = stored.m[k];
    }
    return pixel;
}

class PlacedCoefFile : public ::testing::Test {
  protected:
    std::wstring Path() const { return m_folder.File(L"part"); }

    /// A file of width × height byte pixels.
    std::wstring FileOf(std::size_t kind, std::int32_t width, std::int32_t height) {
        CChromaCorrectCoef map;
        map.Resize(width, height);
        PaintMap(map, BytePixel);
        EXPECT_EQ(kBinaryKinds[kind].write(map, Path().c_str(), nullptr), S_OK);
        return Path();
    }

    void MakeMap(std::int32_t width, std::int32_t height) {
        m_map.Resize(width, height);
        PaintMap(m_map, Ground);
    }

    /// The map holds the file's pixels in `region` and its ground elsewhere.
    void ExpectPlaced(std::size_t kind, const SPixelRect& region, const Mask& mask) {
        ExpectPixels(m_map, [&](std::int32_t x, std::int32_t y) {
            const bool inside =
                x >= region.left && x < region.right && y >= region.top && y < region.bottom;
            return inside ? Placed(kBinaryKinds[kind].isDiagonal, Ground(x, y),
                                   BytePixel(x - region.left, y - region.top), mask)
                          : Ground(x, y);
        });
    }

    CTemporaryFolder m_folder;
    CChromaCorrectCoef m_map;
};

TEST_F(PlacedCoefFile, IsCutAtTheMapsEdges) {
    for (std::size_t kind = 0; kind < kBinaryKinds.size(); ++kind) {
        SCOPED_TRACE(kBinaryKinds[kind].name);
        MakeMap(128, 64);
        SPixelRect rect{90, 0, 0, 0};
        EXPECT_EQ(Place(kind, m_map, FileOf(kind, 100, 50).c_str(), rect, false, kAll), S_OK);
        EXPECT_EQ(rect, (SPixelRect{90, 0, 128, 50}));
        ExpectPlaced(kind, {90, 0, 128, 50}, kAll);
    }
}

TEST_F(PlacedCoefFile, IsCutAtTheRectangleOnRequest) {
    for (std::size_t kind = 0; kind < kBinaryKinds.size(); ++kind) {
        SCOPED_TRACE(kBinaryKinds[kind].name);
        MakeMap(128, 64);
        SPixelRect rect{0, 0, 10, 10};
        EXPECT_EQ(Place(kind, m_map, FileOf(kind, 100, 50).c_str(), rect, true, kAll), S_OK);
        EXPECT_EQ(rect, (SPixelRect{0, 0, 10, 10}));
        ExpectPlaced(kind, {0, 0, 10, 10}, kAll);
    }
}

TEST_F(PlacedCoefFile, IgnoresTheRectanglesFarCornerWithoutTheRequest) {
    MakeMap(128, 64);
    SPixelRect rect{5, 6, -100, 7};
    EXPECT_EQ(Place(k9b, m_map, FileOf(k9b, 20, 10).c_str(), rect, false, kAll), S_OK);
    EXPECT_EQ(rect, (SPixelRect{5, 6, 25, 16}));
    ExpectPlaced(k9b, {5, 6, 25, 16}, kAll);
}

TEST_F(PlacedCoefFile, MasksChooseEntriesOfTheDiagonalBytes) {
    CChromaCorrectCoef map;
    map.Resize(1, 1);
    map.SetElement(0, 0, {{.1F, .2F, .3F, .4F, .5F, .6F, .7F, .8F, .9F, 7, 8, 9}});
    CChromaCorrectCoef stored;
    stored.Resize(1, 1);
    stored.SetElement(0, 0, {{0.2F, 0, 0, 0, 0.4F, 0, 0, 0, 0.6F, 0, 1, 0}}); // 51, 102, 153
    ASSERT_EQ(Write3bCoefFile(stored, Path().c_str(), nullptr), S_OK);
    SPixelRect rect;
    EXPECT_EQ(Place3bCoefFile(map, Path().c_str(), rect, false, {true, false, true}), S_OK);
    EXPECT_EQ(map.FindElement(0, 0)->m,
              (SMatrixCoef{{0.2F, 0, 0, 0, .5F, 0, 0, 0, 0.6F, 7, 8, 9}}.m));
}

TEST_F(PlacedCoefFile, MasksChooseEntriesOfTheMatrixBytes) {
    MakeMap(20, 10);
    SPixelRect rect;
    EXPECT_EQ(Place(k9b, m_map, FileOf(k9b, 20, 10).c_str(), rect, false, kDiagonal), S_OK);
    ExpectPlaced(k9b, {0, 0, 20, 10}, kDiagonal);
}

TEST_F(PlacedCoefFile, IsWhatTheRuleSaysForRandomPlaces) {
    std::mt19937 random(5);
    const auto below = [&random](std::uint32_t n) {
        return static_cast<std::int32_t>(random() % n);
    };
    for (int round = 0; round < 200; ++round) {
        const std::size_t kind = random() % kBinaryKinds.size();
        const std::int32_t width = 1 + below(30);
        const std::int32_t height = 1 + below(30);
        Mask mask;
        for (bool& flag : mask)
            flag = random() % 2 == 0;
        const bool clip = random() % 2 == 0;
        MakeMap(1 + below(40), 1 + below(40));
        const std::int32_t left = below(50);
        const std::int32_t top = below(50);
        SPixelRect rect{left, top, left + 1 + below(40), top + 1 + below(40)};
        SPixelRect expected{left, top, 0, 0};
        expected.right = std::min<std::int32_t>(
            m_map.Width(), clip ? std::min(rect.right, left + width) : left + width);
        expected.bottom = std::min<std::int32_t>(
            m_map.Height(), clip ? std::min(rect.bottom, top + height) : top + height);
        ASSERT_EQ(Place(kind, m_map, FileOf(kind, width, height).c_str(), rect, clip, mask), S_OK);
        ASSERT_EQ(rect, expected) << round;
        ExpectPlaced(kind, expected, mask);
    }
}

TEST_F(PlacedCoefFile, BeyondTheMapNothingIsWritten) {
    MakeMap(8, 4);
    const std::wstring path = FileOf(k3f, 5, 5);
    for (const SPixelRect& place :
         {SPixelRect{8, 0, 9, 1}, SPixelRect{kInt32Max - 1, kInt32Max - 1, kInt32Max, kInt32Max}}) {
        for (const bool clip : {false, true}) {
            SPixelRect rect = place;
            EXPECT_EQ(Place(k3f, m_map, path.c_str(), rect, clip, kAll), S_OK);
            EXPECT_EQ(rect.left, place.left);
            EXPECT_EQ(rect.right, 8);
            ExpectPixels(m_map, Ground);
        }
    }
}

TEST_F(PlacedCoefFile, AnEmptyMapTakesNothing) {
    SPixelRect rect{0, 0, 5, 5};
    EXPECT_EQ(Place(k9f, m_map, FileOf(k9f, 5, 5).c_str(), rect, true, kAll), S_OK);
    EXPECT_EQ(rect, (SPixelRect{0, 0, 0, 0}));
}

TEST_F(PlacedCoefFile, RefusesBadArgumentsAndKeepsMapAndRectangle) {
    for (std::size_t kind = 0; kind < kBinaryKinds.size(); ++kind) {
        SCOPED_TRACE(kBinaryKinds[kind].name);
        MakeMap(8, 4);
        const std::wstring path = FileOf(kind, 5, 5);
        const auto refuses = [&](const wchar_t* file, const SPixelRect& place, bool clip) {
            SPixelRect rect = place;
            EXPECT_EQ(Place(kind, m_map, file, rect, clip, kAll), E_COEF_INVALIDARG);
            EXPECT_EQ(rect, place);
        };
        refuses(nullptr, {0, 0, 5, 5}, false);
        refuses(path.c_str(), {-1, 0, 5, 5}, false);
        refuses(path.c_str(), {0, -1, 5, 5}, false);
        refuses(path.c_str(), {1, 0, 1, 5}, true);
        refuses(path.c_str(), {0, 1, 5, 1}, true);
        refuses(path.c_str(), {kInt32Max, 0, kInt32Min, 5}, true);
        ExpectPixels(m_map, Ground);
    }
}

TEST_F(PlacedCoefFile, AFileThatFailsLeavesMapAndRectangle) {
    constexpr std::array<Status, 5> kExpected{E_COEF_OPENFAILED, E_COEF_BADFORMAT, E_COEF_BADFORMAT,
                                              E_FAIL, E_FAIL};
    for (std::size_t kind = 0; kind < kBinaryKinds.size(); ++kind) {
        SCOPED_TRACE(kBinaryKinds[kind].name);
        const BinaryKind& own = kBinaryKinds[kind];
        const BinaryKind& other = kBinaryKinds[(kind + 1) % kBinaryKinds.size()];
        const Bytes raw(6 * own.storedBytes);
        const std::array<std::function<void()>, 5> kMakers{
            [] {},
            [&] { WriteCoefFile(Path(), Header(other, 1, 2, 3), raw); },
            [&] { WriteCoefFile(Path(), Header(own, 2, 2, 3), raw); },
            [&] { WriteCoefFile(Path(), Header(own, 1, 2, 4), raw); },
            [&] { WriteFile(Path(), Header(own, 1, 2, 3)); },
        };
        MakeMap(8, 4);
        RemoveFile(Path());
        for (std::size_t k = 0; k < kMakers.size(); ++k) {
            kMakers[k]();
            SPixelRect rect{1, 2, 3, 4};
            EXPECT_EQ(Place(kind, m_map, Path().c_str(), rect, true, kAll), kExpected[k]) << k;
            EXPECT_EQ(rect, (SPixelRect{1, 2, 3, 4}));
        }
        ExpectPixels(m_map, Ground);
    }
}

// Diagonal readers

/// Writes down what it is told, and asks to stop after some columns.
class CRecordingSink final : public CProgressSink {
  public:
    explicit CRecordingSink(int columnsUntilStop = -1) : m_columnsLeft(columnsUntilStop) {}

    struct Call {
        std::string what;
        double value = 0.0;
        bool operator==(const Call&) const = default;
    };

    void Begin(SOperationId id) override { Note(id, "begin"); }
    void Report(SOperationId id, double fraction) override { Note(id, "report", fraction); }
    void End(SOperationId id, Status status) override { Note(id, "end", status); }
    bool IsCancelled(SOperationId id) override {
        EXPECT_EQ(id, kId);
        return --m_columnsLeft == 0;
    }

    static constexpr SOperationId kId{0x7FFFFFFF, -5};
    std::vector<Call> calls;

  private:
    void Note(SOperationId id, const char* what, double value = 0.0) {
        EXPECT_EQ(id, kId);
        calls.push_back({what, value});
    }

    int m_columnsLeft;
};

using Calls = std::vector<CRecordingSink::Call>;

TEST_F(PlacedCoefFile, TheDiagonalReadersTakeTheDiagonalAlone) {
    MakeMap(20, 10);
    EXPECT_EQ(ReadDiagonal9fCoefFile(m_map, FileOf(k9f, 20, 10).c_str(), nullptr), S_OK);
    ExpectPlaced(k9f, {0, 0, 20, 10}, kDiagonal);
    MakeMap(20, 10);
    EXPECT_EQ(ReadDiagonal9bCoefFile(m_map, FileOf(k9b, 20, 10).c_str()), S_OK);
    ExpectPlaced(k9b, {0, 0, 20, 10}, kDiagonal);
}

TEST_F(PlacedCoefFile, TheDiagonalReadersTakeWhatFileAndMapBothHave) {
    MakeMap(20, 10);
    EXPECT_EQ(ReadDiagonal9fCoefFile(m_map, FileOf(k9f, 7, 30).c_str(), nullptr), S_OK);
    ExpectPlaced(k9f, {0, 0, 7, 10}, kDiagonal);
    MakeMap(20, 10);
    EXPECT_EQ(ReadDiagonal9bCoefFile(m_map, FileOf(k9b, 30, 7).c_str()), S_OK);
    ExpectPlaced(k9b, {0, 0, 20, 7}, kDiagonal);
}

TEST_F(PlacedCoefFile, ASinkIsToldEveryColumn) {
    MakeMap(4, 3);
    CRecordingSink sink;
    const SOperationRecord operation{&sink, CRecordingSink::kId};
    EXPECT_EQ(ReadDiagonal9fCoefFile(m_map, FileOf(k9f, 9, 2).c_str(), &operation), S_OK);
    EXPECT_EQ(sink.calls, (Calls{{"begin", 0.0},
                                 {"report", 0.0},
                                 {"report", 0.25},
                                 {"report", 0.5},
                                 {"report", 0.75},
                                 {"end", S_OK}}));
    ExpectPlaced(k9f, {0, 0, 4, 2}, kDiagonal);
}

TEST_F(PlacedCoefFile, ASinkMayStopAfterAColumn) {
    MakeMap(4, 3);
    CRecordingSink sink(2);
    const SOperationRecord operation{&sink, CRecordingSink::kId};
    EXPECT_EQ(ReadDiagonal9fCoefFile(m_map, FileOf(k9f, 4, 3).c_str(), &operation), E_FAIL);
    EXPECT_EQ(sink.calls, (Calls{{"begin", 0.0}, {"report", 0.0}, {"end", E_FAIL}}));
    ExpectPlaced(k9f, {0, 0, 2, 3}, kDiagonal);
}

TEST_F(PlacedCoefFile, ASinkMayStopAfterTheLastColumnToo) {
    MakeMap(2, 2);
    CRecordingSink sink(2);
    const SOperationRecord operation{&sink, CRecordingSink::kId};
    EXPECT_EQ(ReadDiagonal9fCoefFile(m_map, FileOf(k9f, 2, 2).c_str(), &operation), E_FAIL);
    EXPECT_EQ(sink.calls, (Calls{{"begin", 0.0}, {"report", 0.0}, {"end", E_FAIL}}));
}

TEST_F(PlacedCoefFile, ARecordWithoutASinkAndAMapWithoutColumnsAreNoHarm) {
    MakeMap(2, 2);
    const SOperationRecord nobody;
    EXPECT_EQ(ReadDiagonal9fCoefFile(m_map, FileOf(k9f, 2, 2).c_str(), &nobody), S_OK);
    ExpectPlaced(k9f, {0, 0, 2, 2}, kDiagonal);

    CChromaCorrectCoef empty;
    CRecordingSink sink;
    const SOperationRecord operation{&sink, CRecordingSink::kId};
    EXPECT_EQ(ReadDiagonal9fCoefFile(empty, Path().c_str(), &operation), S_OK);
    EXPECT_EQ(sink.calls, (Calls{{"begin", 0.0}, {"end", S_OK}}));
}

TEST_F(PlacedCoefFile, TheDiagonalReadersRefuseAsThePlainOnesAndTellNoSink) {
    MakeMap(2, 2);
    CRecordingSink sink;
    const SOperationRecord operation{&sink, CRecordingSink::kId};
    EXPECT_EQ(ReadDiagonal9fCoefFile(m_map, nullptr, &operation), E_COEF_INVALIDARG);
    EXPECT_EQ(ReadDiagonal9fCoefFile(m_map, Path().c_str(), &operation), E_COEF_OPENFAILED);
    EXPECT_EQ(ReadDiagonal9fCoefFile(m_map, FileOf(k9b, 2, 2).c_str(), &operation),
              E_COEF_BADFORMAT);
    EXPECT_EQ(ReadDiagonal9bCoefFile(m_map, nullptr), E_COEF_INVALIDARG);
    EXPECT_EQ(ReadDiagonal9bCoefFile(m_map, m_folder.File(L"none").c_str()), E_COEF_OPENFAILED);
    EXPECT_EQ(ReadDiagonal9bCoefFile(m_map, FileOf(k9f, 2, 2).c_str()), E_COEF_BADFORMAT);
    EXPECT_TRUE(sink.calls.empty());
    ExpectPixels(m_map, Ground);
}

// Streams

TEST_F(PlacedCoefFile, AStreamIsPlacedAsItsFileWhateverItHolds) {
    constexpr Mask kSome{true, true, false, false, false, true, false, true, true};
    constexpr SPixelRect kPlace{4, 5, 100, 7};
    for (std::size_t kind = 0; kind < kBinaryKinds.size(); ++kind) {
        SCOPED_TRACE(kBinaryKinds[kind].name);
        for (const BinaryInput& input : InputsFrom(ReadFile(FileOf(kind, 6, 5)), S_OK)) {
            SCOPED_TRACE(input.name);
            for (const bool clip : {false, true}) {
                MakeMap(8, 9);
                SPixelRect rect = kPlace;
                std::istringstream stream = StreamBehindPrefix(input.bytes);
                EXPECT_EQ(Place(kind, m_map, stream, rect, clip, kSome), input.status);
                const SPixelRect placed{4, 5, 8, clip ? 7 : 9};
                EXPECT_EQ(rect, Failed(input.status) ? kPlace : placed);
                ExpectPlaced(kind, Failed(input.status) ? SPixelRect{} : placed, kSome);
            }
        }
    }
}

TEST_F(PlacedCoefFile, AStreamIsNotReadForARectangleThatIsNoPlace) {
    for (std::size_t kind = 0; kind < kBinaryKinds.size(); ++kind) {
        MakeMap(8, 8);
        std::istringstream stream = StreamOf(ReadFile(FileOf(kind, 6, 5)));
        SPixelRect rect{-1, 0, 5, 5};
        EXPECT_EQ(Place(kind, m_map, stream, rect, false, kAll), E_COEF_INVALIDARG);
        rect = {1, 0, 1, 5};
        EXPECT_EQ(Place(kind, m_map, stream, rect, true, kAll), E_COEF_INVALIDARG);
        EXPECT_EQ(stream.tellg(), 0);
        ExpectPixels(m_map, Ground);
    }
}

TEST_F(PlacedCoefFile, TheDiagonalReadersTakeStreamsToo) {
    for (const BinaryInput& input : InputsFrom(ReadFile(FileOf(k9f, 3, 2)), S_OK)) {
        SCOPED_TRACE(input.name);
        MakeMap(4, 3);
        CRecordingSink sink;
        const SOperationRecord operation{&sink, CRecordingSink::kId};
        std::istringstream stream = StreamBehindPrefix(input.bytes);
        EXPECT_EQ(ReadDiagonal9fCoefFile(m_map, stream, &operation), input.status);
        const bool isRead = !Failed(input.status);
        EXPECT_EQ(sink.calls.size(), isRead ? 5U : 0U);
        ExpectPlaced(k9f, isRead ? SPixelRect{0, 0, 3, 2} : SPixelRect{}, kDiagonal);
    }
    for (const BinaryInput& input : InputsFrom(ReadFile(FileOf(k9b, 3, 2)), S_OK)) {
        SCOPED_TRACE(input.name);
        MakeMap(4, 3);
        std::istringstream stream = StreamBehindPrefix(input.bytes);
        EXPECT_EQ(ReadDiagonal9bCoefFile(m_map, stream), input.status);
        ExpectPlaced(k9b, Failed(input.status) ? SPixelRect{} : SPixelRect{0, 0, 3, 2}, kDiagonal);
    }
}

} // namespace
} // namespace trevolt
