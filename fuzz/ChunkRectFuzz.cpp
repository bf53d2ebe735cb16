// Chunk files through CCaliBuf::ReadRectChunks.
#include "fuzz/FuzzStore.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace trevolt;
    const auto input = std::as_bytes(std::span(data, size));
    const fuzz::SChoice choice = fuzz::ChoiceOf(input);
    CCaliBuf& store = fuzz::StoreFor(input, choice);
    std::istringstream stream = fuzz::StreamOf(input);
    const Status status =
        store.ReadRectChunks(stream, choice.x, choice.y, choice.first, choice.second);
    fuzz::CheckAccount(store, status, size);
    return 0;
}
