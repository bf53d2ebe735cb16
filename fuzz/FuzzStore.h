// What the fuzz targets of the chunk readers share. An input is a chunk file or memory image as it
// stands; what the caller of a reader chooses is taken from header bytes that the readers pass
// over, so that sample files are inputs as they are.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <sstream>
#include <string>

#include "calibuf/CaliBuf.h"
#include "common/LittleEndian.h"

namespace trevolt::fuzz {

/// So little that every large claim of a header meets a refused allocation.
inline constexpr std::uint64_t kBudget = std::uint64_t{8} << 20;

/// What a caller would choose. All zero, as in a sample file, is the whole file at (0, 0).
struct SChoice {
    const WordElementKind* kind = nullptr;
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t first = 0;  ///< clip width, or first block index
    std::uint32_t second = 0; ///< clip height, or how many block indices
};

inline const WordElementKind& KindOf(const SChunkHeader& header, std::uint8_t choice) {
    struct Row {
        ChunkFormatId formatId;
        std::size_t elemSize;
    };
    static constexpr std::array<Row, 4> kRows{{{kChromaChunkFormat, 18},
                                               {kBrightChunkFormat, 6},
                                               {kVirtualGreenBrightChunkFormat, 8},
                                               {kVirtualGreenChromaChunkFormat, 24}}};
    for (const Row& row : kRows)
        if (row.formatId == header.formatId)
            return *FindWordElementKind(row.elemSize);
    return kWordElementKinds[choice % kWordElementKinds.size()];
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
    CMemoryBudget::Process().SetLimit(kBudget);
    SChunkHeader header;
    if (input.size() >= kChunkHeaderBytes)
        header = DecodeChunkHeader(input.data());
    const bool isSized = store->ElemSize() == choice.kind->elemSize &&
                         store->Width() == header.width && store->Height() == header.height;
    if (!isSized) {
        store->SetElement(choice.kind->elemSize, choice.kind->planeCount);
        const bool fits = store->HasRoomFor(header.width, header.height);
        // Without memory for the last blocks the rest is read into those that are there.
        DropStatus(store->Allocate(fits ? header.width : 0, fits ? header.height : 0));
    }
    return *store;
}

inline std::istringstream StreamOf(std::span<const std::byte> input) {
    return std::istringstream(
        std::string(reinterpret_cast<const char*>(input.data()), input.size()), std::ios::binary);
}

/// Ends the process when a reader's own account does not add up.
inline void Check(bool holds) {
    if (!holds)
        __builtin_trap();
}

/// What must hold after any read: the counts never exceed the records that the input has room for,
/// and a failure that no later chunk hides is told.
inline void CheckAccount(const CCaliBuf& store, Status status, std::size_t inputBytes) {
    const SChunkCounts& counts = store.LastRead();
    const std::uint64_t chunks = std::uint64_t{counts.read} + counts.skipped + counts.failed;
    Check(chunks * ChunkRecordBytes(store.PlaneCount()) <= inputBytes);
    Check(status == S_OK || status == E_FAIL || status == E_COEF_NOBUFFER);
    Check(counts.failed == 0 || counts.read + counts.skipped > 0 || status == E_FAIL);
    Check(counts.read == 0 || !store.UsedBlocks().empty());
}

} // namespace trevolt::fuzz
