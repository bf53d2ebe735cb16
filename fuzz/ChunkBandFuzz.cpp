// Chunk files through CCaliBuf::ReadBandChunks.
#include "fuzz/FuzzStore.h"

namespace trevolt::fuzz {
namespace {

SExpectedRead Expect(std::span<const std::byte> input, const CCaliBuf& store, const SChoice& choice,
                     std::uint32_t end) {
    SReading reading{
        .shiftX = choice.x, .shiftY = choice.y, .firstIndex = choice.first, .endIndex = end};
    if (store.ElemSize() == sizeof(SWordCoef))
        reading.directoryAt += HeaderOf(input).directoryOffset;
    if (const auto directory = DirectoryOf(input, store, reading)) {
        std::uint32_t base = 0;
        for (std::uint32_t i = 0; i < directory->count; ++i)
            if ((*directory)[i].index == choice.first)
                base = (*directory)[i].y;
        reading.shiftY -= base;
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
    const std::uint32_t end = choice.second == 0 ? kGridBlocks : choice.first + choice.second;
    const CTransferReport report;
    const Status status = store.ReadBandChunks(stream, choice.x, choice.y, choice.first, end);
    const fuzz::SExpectedRead expected = fuzz::Expect(input, store, choice, end);
    fuzz::CheckAccount(store, status, expected, report);
    fuzz::CheckStream(stream, expected);
    fuzz::Check(report.MissingPixels() == 0);
    return 0;
}
