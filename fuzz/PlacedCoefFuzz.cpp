// Binary coefficient files of the four kinds through their placed and diagonal readers, held against
// the plain one. An input is a file as it stands; its first byte chooses the kind.
#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <span>

#include "formats/BinaryCoefKind.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/FuzzMap.h"
#include "trevolt/BinaryCoefFile.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/PlacedCoefFile.h"

namespace trevolt::fuzz {
namespace {

/// More than the maps and a sample's body, and less than a lying frame may ask for.
constexpr std::uint64_t kPlacedBudget = std::uint64_t{4} << 20;
constexpr std::int32_t kMapWidth = 7;
constexpr std::int32_t kMapHeight = 5;
constexpr std::array<std::size_t, 3> kDiagonalEntries{0, 4, 8};

/// Where a file goes, and which matrix entries are taken of it.
struct SPlace {
    SPixelRect rect;
    bool clip;
    MatrixEntryMask mask;

    bool IsRefused() const {
        return rect.left < 0 || rect.top < 0 || (clip && (rect.Width() < 1 || rect.Height() < 1));
    }
};
constexpr MatrixEntryMask kEveryEntry{true, true, true, true, true, true, true, true, true};
constexpr MatrixEntryMask kDiagonalMask{true, false, false, false, true, false, false, false, true};
constexpr MatrixEntryMask kSomeEntries{false, true, true, false, true, false, true, false, false};
const std::array kPlaces{
    SPlace{{0, 0, 0, 0}, false, kEveryEntry},  SPlace{{2, 1, 0, 0}, false, kSomeEntries},
    SPlace{{3, 2, 5, 3}, true, kEveryEntry},   SPlace{{1, 0, INT32_MAX, 4}, true, kDiagonalMask},
    SPlace{{6, 9, 8, 12}, true, kEveryEntry},  SPlace{{INT32_MAX, 1, 0, 0}, false, kSomeEntries},
    SPlace{{-1, 0, 4, 4}, false, kEveryEntry}, SPlace{{0, 0, 4, 0}, true, kEveryEntry}};

template <class Mask>
using Place = Status (*)(CChromaCorrectCoef&, std::istream&, SPixelRect&, bool, const Mask&);

template <Place<MatrixEntryMask> Function>
Status PlaceMatrix(CChromaCorrectCoef& map, std::istream& stream, SPixelRect& rect,
                   const SPlace& place) {
    return Function(map, stream, rect, place.clip, place.mask);
}

template <Place<DiagonalEntryMask> Function>
Status PlaceDiagonal(CChromaCorrectCoef& map, std::istream& stream, SPixelRect& rect,
                     const SPlace& place) {
    const DiagonalEntryMask mask{place.mask[0], place.mask[4], place.mask[8]};
    return Function(map, stream, rect, place.clip, mask);
}

struct SPlacedKind {
    const CoefFileMagic& magic;
    Status (*read)(CChromaCorrectCoef&, std::istream&);
    Status (*readSize)(std::istream&, std::uint32_t&, std::uint32_t&);
    Status (*place)(CChromaCorrectCoef&, std::istream&, SPixelRect&, const SPlace&);
    bool isDiagonal;
};
constexpr std::array<SPlacedKind, 4> kPlacedKinds{
    {{S9fCoefKind::kMagic, Read9fCoefFile, Read9fCoefSize, PlaceMatrix<Place9fCoefFile>, false},
     {S3fCoefKind::kMagic, Read3fCoefFile, Read3fCoefSize, PlaceDiagonal<Place3fCoefFile>, true},
     {S9bCoefKind::kMagic, Read9bCoefFile, Read9bCoefSize, PlaceMatrix<Place9bCoefFile>, false},
     {S3bCoefKind::kMagic, Read3bCoefFile, Read3bCoefSize, PlaceDiagonal<Place3bCoefFile>, true}}};

/// What the plain reader makes of the input, as far as a map of ours can have it.
struct SPlainRead {
    CChromaCorrectCoef map = PaintedMap(kMapWidth, kMapHeight);
    Status status{};
    std::uint32_t width = 0; ///< the file's
    std::uint32_t height = 0;
};

SPlainRead ReadPlain(std::span<const std::byte> input, const SPlacedKind& kind) {
    SPlainRead plain;
    std::istringstream stream = StreamOf(input);
    plain.status = kind.read(plain.map, stream);
    std::istringstream asked = StreamOf(input);
    if (!Failed(plain.status))
        Check(kind.readSize(asked, plain.width, plain.height) == S_OK);
    return plain;
}

/// What an element becomes where the file has `stored`.
SMatrixCoef Taken(SMatrixCoef element, const SMatrixCoef& stored, const MatrixEntryMask& mask,
                  bool zeroesTheRest) {
    for (std::size_t k = 0; k < mask.size(); ++k) {
        const bool isDiagonal = std::ranges::find(kDiagonalEntries, k) != kDiagonalEntries.end();
        if (zeroesTheRest && !isDiagonal)
            element.m[k] = 0.0F;
        else if (mask[k])
            element.m[k] = stored.m[k];
    }
    return element;
}

/// Checks that a map is the painted one with the file's first pixels from (left, top) on, `width` and
/// `height` of them at most.
void CheckTaken(const CChromaCorrectCoef& map, const SPlainRead& plain, const SPixelRect& rect,
                const MatrixEntryMask& mask, bool zeroesTheRest) {
    const CChromaCorrectCoef before = PaintedMap(kMapWidth, kMapHeight);
    for (std::int32_t y = 0; y < kMapHeight; ++y)
        for (std::int32_t x = 0; x < kMapWidth; ++x) {
            SMatrixCoef expected = *before.FindElement(x, y);
            if (x >= rect.left && x < rect.right && y >= rect.top && y < rect.bottom)
                expected = Taken(expected, *plain.map.FindElement(x - rect.left, y - rect.top),
                                 mask, zeroesTheRest);
            Check(SameBits(*map.FindElement(x, y), expected));
        }
}

/// How far a file reaches from `start` on.
std::int32_t ReachOf(std::int32_t start, std::uint32_t stored, std::int64_t wanted, bool clip,
                     std::int32_t mapSize) {
    const std::int64_t extent = clip ? std::min<std::int64_t>(wanted, stored) : stored;
    return static_cast<std::int32_t>(std::min<std::int64_t>(start + extent, mapSize));
}

void CheckPlaced(std::span<const std::byte> input, const SPlacedKind& kind, const SPlainRead& plain,
                 const SPlace& place) {
    CChromaCorrectCoef map = PaintedMap(kMapWidth, kMapHeight);
    SPixelRect rect = place.rect;
    std::istringstream stream = StreamOf(input);
    const Status status = kind.place(map, stream, rect, place);
    if (place.IsRefused() || Failed(plain.status)) {
        Check(status == (place.IsRefused() ? E_COEF_INVALIDARG : plain.status));
        Check(rect == place.rect);
        CheckTaken(map, plain, {0, 0, 0, 0}, place.mask, kind.isDiagonal);
        return;
    }
    Check(status == S_OK);
    const SPixelRect& asked = place.rect;
    const SPixelRect expected{
        asked.left, asked.top,
        ReachOf(asked.left, plain.width, asked.Width(), place.clip, kMapWidth),
        ReachOf(asked.top, plain.height, asked.Height(), place.clip, kMapHeight)};
    Check(rect == expected);
    CheckTaken(map, plain, expected, place.mask, kind.isDiagonal);
}

/// Follows an operation, and stops it behind a column.
class CStoppingSink : public CProgressSink {
  public:
    explicit CStoppingSink(std::int32_t columns) : m_columns(columns) {}

    void Begin(SOperationId id) override { Check(id == kId && m_begun++ == 0); }
    void Report(SOperationId id, double fraction) override {
        Check(id == kId && m_begun == 1 && m_ended == 0 && fraction >= 0.0 && fraction < 1.0);
    }
    void End(SOperationId id, Status status) override {
        Check(id == kId && m_begun == 1 && m_ended++ == 0);
        m_status = status;
    }
    bool IsCancelled(SOperationId id) override {
        Check(id == kId);
        return ++m_asked == m_columns;
    }

    /// Checks that the operation ended with `status` after so many columns.
    void CheckEnd(Status status, std::int32_t columns) const {
        Check(m_begun == 1 && m_ended == 1 && m_status == status && m_asked == columns);
    }

    static constexpr SOperationId kId{3, 4};

  private:
    std::int32_t m_columns;
    std::int32_t m_asked = 0;
    int m_begun = 0;
    int m_ended = 0;
    Status m_status{};
};

void CheckStopped(std::span<const std::byte> input, const SPlainRead& plain,
                  const SPixelRect& part) {
    constexpr std::int32_t kStop = 3;
    CStoppingSink sink(kStop);
    CChromaCorrectCoef map = PaintedMap(kMapWidth, kMapHeight);
    std::istringstream stream = StreamOf(input);
    const SOperationRecord operation{&sink, CStoppingSink::kId};
    const Status status = ReadDiagonal9fCoefFile(map, stream, &operation);
    const bool isStopped = part.right >= kStop;
    Check(status == (isStopped ? E_FAIL : S_OK));
    const std::int32_t columns = std::min(part.right, kStop);
    sink.CheckEnd(status, columns);
    CheckTaken(map, plain, {0, 0, columns, part.bottom}, kDiagonalMask, false);
}

void CheckDiagonal(std::span<const std::byte> input, const SPlacedKind& kind,
                   const SPlainRead& plain) {
    const SPixelRect part{0, 0, ReachOf(0, plain.width, 0, false, kMapWidth),
                          ReachOf(0, plain.height, 0, false, kMapHeight)};
    for (const bool ofFloats : {true, false}) {
        CChromaCorrectCoef map = PaintedMap(kMapWidth, kMapHeight);
        std::istringstream stream = StreamOf(input);
        const Status status = ofFloats ? ReadDiagonal9fCoefFile(map, stream, nullptr)
                                       : ReadDiagonal9bCoefFile(map, stream);
        const bool isItsKind =
            &kind.magic == (ofFloats ? &S9fCoefKind::kMagic : &S9bCoefKind::kMagic);
        Check(isItsKind ? status == (Failed(plain.status) ? plain.status : S_OK) : Failed(status));
        CheckTaken(map, plain, Failed(status) ? SPixelRect{0, 0, 0, 0} : part, kDiagonalMask,
                   false);
        if (ofFloats && !Failed(status))
            CheckStopped(input, plain, part);
    }
}

void CheckPlacing(std::span<const std::byte> input) {
    const SPlacedKind& kind = KindOf(kPlacedKinds, input);
    const SPlainRead plain = ReadPlain(input, kind);
    for (const SPlace& place : kPlaces)
        CheckPlaced(input, kind, plain, place);
    CheckDiagonal(input, kind, plain);
}

} // namespace
} // namespace trevolt::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace trevolt;
    CMemoryBudget::Process().SetLimit(fuzz::kPlacedBudget);
    fuzz::CheckPlacing(std::as_bytes(std::span(data, size)));
    fuzz::Check(CMemoryBudget::Process().Outstanding() == 0);
    return 0;
}
