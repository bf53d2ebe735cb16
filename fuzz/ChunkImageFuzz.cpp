// Memory images through CCaliBuf::LoadFromMemory.
#include <vector>

#include "fuzz/FuzzStore.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace trevolt;
    const auto input = std::as_bytes(std::span(data, size));
    CCaliBuf& store = fuzz::StoreFor(input, fuzz::ChoiceOf(input));
    // In a buffer of its own, so that the sanitizer sees every byte past the image.
    const std::vector<std::byte> image(input.begin(), input.end());
    const Status status = store.LoadFromMemory(image.data(), image.size());
    fuzz::CheckAccount(store, status, size);
    return 0;
}
