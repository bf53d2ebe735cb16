// Chunk files through CCaliBuf::ReadRectChunks.
#include "fuzz/FuzzStore.h"

namespace trevolt::fuzz {
namespace {

SExpectedRead Expect(std::span<const std::byte> input, const CCaliBuf& store,
                     const SChoice& choice) {
    const SChunkHeader header = HeaderOf(input);
    SReading reading{.shiftX = std::int64_t{choice.x} - header.originX,
                     .shiftY = std::int64_t{choice.y} - header.originY,
                     .clipWidth = choice.first,
                     .clipHeight = choice.second};
    if (store.ElemSize() == sizeof(SWordCoef) && input.size() >= kChunkHeaderBytes) {
        reading.directoryAt = header.directoryOffset;
        if (reading.directoryAt < kChunkHeaderBytes)
            return {.status = E_FAIL, .dataEnd = kChunkHeaderBytes};
    }
    return CReckoner(store, reading).Reckon(input);
}

} // namespace
} // namespace trevolt::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace trevolt;
    const auto input = std::as_bytes(std::span(data, size));
    const fuzz::SChoice choice = fuzz::ChoiceOf(input);
    CCaliBuf& store = fuzz::StoreFor(input, choice);
    std::istringstream stream = fuzz::StreamOf(input);
    const CTransferReport report;
    const Status status =
        store.ReadRectChunks(stream, choice.x, choice.y, choice.first, choice.second);
    const fuzz::SExpectedRead expected = fuzz::Expect(input, store, choice);
    fuzz::CheckAccount(store, status, expected, report);
    fuzz::CheckStream(stream, expected);
    const SChunkHeader header = fuzz::HeaderOf(input);
    fuzz::CheckMissingPixels(input, store, report, header.originX, header.originY);
    return 0;
}
