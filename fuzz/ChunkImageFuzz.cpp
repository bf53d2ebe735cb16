// Memory images through CCaliBuf::LoadFromMemory.
#include <vector>

#include "fuzz/FuzzStore.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace trevolt;
    const auto input = std::as_bytes(std::span(data, size));
    CCaliBuf& store = fuzz::StoreFor(input, fuzz::ChoiceOf(input));
    // In a buffer of its own, so that the sanitizer sees every byte past the image.
    const std::vector<std::byte> image(input.begin(), input.end());
    const CTransferReport report;
    const Status status = store.LoadFromMemory(image.data(), image.size());
    const SChunkHeader header = fuzz::HeaderOf(input);
    const fuzz::SReading reading{.shiftX = header.originX, .shiftY = header.originY};
    fuzz::CheckAccount(store, status, fuzz::CReckoner(store, reading).Reckon(input), report);
    fuzz::CheckMissingPixels(input, store, report, 0, 0);
    return 0;
}
