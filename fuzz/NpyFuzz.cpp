// NumPy's .npy files through their reader. An input is a file as it stands.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <sstream>
#include <string>

#include "app/inspection/NpyFile.h"
#include "app/inspection/NpyHeader.h"
#include "fuzz/FuzzInput.h"
#include "trevolt/MemoryBudget.h"

namespace trevolt::fuzz {
namespace {

/// More than the map of any input, whose smallest pixel has three bytes and becomes 52.
constexpr std::uint64_t kNpyBudget = std::uint64_t{64} << 20;

/// What is read is written again: the same values at the end, behind a header of the same meaning.
void CheckWrittenAgain(const SNpyLoad& load, std::span<const std::byte> input) {
    Check(load.problem.empty() && load.map->HasStorage());
    std::ostringstream stream;
    Check(WriteNpy(*load.map, load.form, stream));
    const std::string written = std::move(stream).str();
    std::istringstream again(written);
    SNpyHeader header;
    Check(ReadNpyHeader(again, header).empty() && !header.isFortranOrder);
    Check(header.shape.size() == 3 && header.shape[0] == load.map->Height() &&
          header.shape[1] == load.map->Width() && header.shape[2] == load.form.count);
    const auto values = written.size() - static_cast<std::size_t>(std::streamoff{again.tellg()});
    Check(values <= input.size());
    Check(std::ranges::equal(std::as_bytes(std::span(written)).last(values), input.last(values)));
}

void CheckNpy(std::span<const std::byte> input) {
    std::istringstream stream = StreamOf(input);
    const SNpyLoad load = ReadNpy(stream);
    if (load.map == nullptr)
        Check(!load.problem.empty());
    else
        CheckWrittenAgain(load, input);
}

} // namespace
} // namespace trevolt::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace trevolt;
    CMemoryBudget::Process().SetLimit(fuzz::kNpyBudget);
    fuzz::CheckNpy(std::as_bytes(std::span(data, size)));
    fuzz::Check(CMemoryBudget::Process().Outstanding() == 0);
    return 0;
}
