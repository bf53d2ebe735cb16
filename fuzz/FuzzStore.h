// What the fuzz targets of the chunk readers share. An input is a chunk file or memory image as it
// stands; what the caller of a reader chooses is taken from header bytes that the readers pass
// over, so that sample files are inputs as they are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <memory>
#include <span>

#include "calibuf/CaliBuf.h"
#include "calibuf/WordElementKind.h"
#include "coef/WordKind.h"
#include "common/LittleEndian.h"
#include "fuzz/ExpectedRead.h"
#include "fuzz/FuzzInput.h"
#include "trevolt/TransferReport.h"

namespace trevolt::fuzz {

/// For a store: so little that every large claim of a header meets a refused allocation.
inline constexpr std::uint64_t kStoreBudget = std::uint64_t{8} << 20;
/// For a read: more than the scratch memory of any input, whose chunks then have one right outcome.
inline constexpr std::uint64_t kReadBudget = std::uint64_t{256} << 20;

/// What a caller would choose. All zero, as in a sample file, is the whole file at (0, 0).
struct SChoice {
    const WordElementKind* kind = nullptr;
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t first = 0;  ///< clip width, or first block index
    std::uint32_t second = 0; ///< clip height, or how many block indices
};

/// The element of the header's format; of a format of no kind the chosen one.
inline const WordElementKind& KindOf(const SChunkHeader& header, std::uint8_t choice) {
    const WordElementKind* const kind = FindElementOfFormat(header.formatId);
    return kind == nullptr ? kWordElementKinds[choice % kWordElementKinds.size()] : *kind;
}

/// The header of an input, all zero for one that is too short.
inline SChunkHeader HeaderOf(std::span<const std::byte> input) {
    return input.size() < kChunkHeaderBytes ? SChunkHeader{} : DecodeChunkHeader(input.data());
}

/// The choice in header bytes 40 to 56, behind the record count.
inline SChoice ChoiceOf(std::span<const std::byte> input) {
    if (input.size() < kChunkHeaderBytes)
        return {.kind = kWordElementKinds.data()};
    const std::byte* const at = input.data() + 40;
    return {.kind = &KindOf(DecodeChunkHeader(input.data()), std::to_integer<std::uint8_t>(*at)),
            .x = LoadLittle<std::uint32_t>(at + 1),
            .y = LoadLittle<std::uint32_t>(at + 5),
            .first = LoadLittle<std::uint32_t>(at + 9),
            .second = LoadLittle<std::uint32_t>(at + 13)};
}

/// A store as a file kind would size it, from the header; empty when that is refused. The store of
/// the run before is taken again when its size fits: its pixels decide nothing, and filling
/// blocks is most of what a run costs.
inline CCaliBuf& StoreFor(std::span<const std::byte> input, const SChoice& choice) {
    static const std::unique_ptr<CCaliBuf> store = CCaliBuf::Create();
    CMemoryBudget::Process().SetLimit(kStoreBudget);
    const SChunkHeader header = HeaderOf(input);
    const bool isSized = store->ElemSize() == choice.kind->elemSize &&
                         store->Width() == header.width && store->Height() == header.height;
    if (!isSized) {
        store->SetElement(choice.kind->elemSize, choice.kind->planeCount);
        const bool fits = store->HasRoomFor(header.width, header.height);
        // Without memory for the last blocks the rest is read into those that are there.
        DropStatus(store->Allocate(fits ? header.width : 0, fits ? header.height : 0));
    }
    CMemoryBudget::Process().SetLimit(kReadBudget);
    return *store;
}

/// Checks what a reader says of its read: status, counts and what the report tells.
inline void CheckAccount(const CCaliBuf& store, Status status, const SExpectedRead& expected,
                         const CTransferReport& report) {
    Check(status == expected.status);
    Check(store.LastRead() == expected.counts);
    Check(report.FailedChunks() == expected.counts.failed);
    Check(!report.WasMemoryRefused());
}

/// Checks that the stream tells of an early end, and else stands behind the data of every record.
inline void CheckStream(std::istream& stream, const SExpectedRead& expected) {
    Check(stream.fail() == expected.endsTooEarly);
    if (!expected.endsTooEarly)
        Check(static_cast<std::uint64_t>(std::streamoff{stream.tellg()}) == expected.dataEnd);
}

/// Checks the pixels that the report misses of an area whose corner is (x, y), in the coordinates
/// of the records. Without a directory, and of single words, none are noted.
inline void CheckMissingPixels(std::span<const std::byte> input, const CCaliBuf& store,
                               const CTransferReport& report, std::uint64_t x, std::uint64_t y) {
    const auto directory = DirectoryOf(input, store, {});
    if (!directory || store.ElemSize() == sizeof(SWordCoef))
        return Check(report.MissingPixels() == 0);
    const SChunkHeader header = DecodeChunkHeader(input.data());
    const auto painted = PaintMissingPixels(*directory, header, x, y);
    Check(report.MissingPixels() <= std::uint64_t{header.width} * header.height);
    Check(!painted || report.MissingPixels() == *painted);
}

} // namespace trevolt::fuzz
