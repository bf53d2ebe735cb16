// Chunk files through CCaliBuf::ReadBandChunks.
#include "fuzz/FuzzStore.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace trevolt;
    const auto input = std::as_bytes(std::span(data, size));
    const fuzz::SChoice choice = fuzz::ChoiceOf(input);
    CCaliBuf& store = fuzz::StoreFor(input, choice);
    std::istringstream stream = fuzz::StreamOf(input);
    const std::uint32_t end = choice.second == 0 ? kGridBlocks : choice.first + choice.second;
    const Status status = store.ReadBandChunks(stream, choice.x, choice.y, choice.first, end);
    fuzz::CheckAccount(store, status, size);
    return 0;
}
