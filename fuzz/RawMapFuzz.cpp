// Raw map files through their reader. An input is a file as it stands.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <vector>

#include "formats/BinaryCoefKind.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/FuzzMap.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/RawMapFile.h"
#include "trevolt/TransferReport.h"

namespace trevolt::fuzz {
namespace {

/// More than any input, and less than an image may ask for.
constexpr std::uint64_t kRawBudget = std::uint64_t{16} << 20;
constexpr std::size_t kImagesAt = 24;
constexpr std::size_t kCountBytes = 8;

using Image = std::span<const std::byte>;

/// The image that begins at `at`, when it is there whole.
std::optional<Image> ImageAt(std::span<const std::byte> input, std::size_t at) {
    if (at > input.size() || input.size() - at < kCountBytes)
        return std::nullopt;
    std::uint64_t count = 0;
    for (std::size_t i = kCountBytes; i-- > 0;)
        count = count << 8 | std::to_integer<std::uint64_t>(input[at + i]);
    if (count > input.size() - at - kCountBytes)
        return std::nullopt;
    return input.subspan(at + kCountBytes, static_cast<std::size_t>(count));
}

void CheckGrid(const CMassiveGrid& grid, const std::optional<Image>& image) {
    Check(grid.Width() == 0 && grid.Height() == 0);
    Check(std::ranges::equal(BytesOf(grid), image.value_or(Image{})));
}

void CheckRaw(std::span<const std::byte> input) {
    CChromaCorrectCoef map = PaintedMap(7, 5);
    const CChromaCorrectCoef before = PaintedMap(7, 5);
    std::istringstream stream = StreamOf(input);
    const CTransferReport report;
    const Status status = ReadRawMapFile(map, stream);
    Check(!report.HasReadFailed() && !report.WasMemoryRefused());
    if (input.size() < kRawMapMagic.size() ||
        std::memcmp(input.data(), kRawMapMagic.data(), kRawMapMagic.size()) != 0) {
        Check(status == E_COEF_BADFORMAT && report.FailedRead() == S_OK);
        Check(map.Width() == 7 && map.Height() == 5);
        Check(BytesOf(map.ColourGrid()) == BytesOf(before.ColourGrid()));
        Check(BytesOf(map.GainGrid()) == BytesOf(before.GainGrid()));
        return;
    }
    Check(status == S_OK && map.IsEmpty());
    const std::optional<Image> colours = ImageAt(input, kImagesAt);
    std::optional<Image> gains;
    if (colours)
        gains = ImageAt(input, kImagesAt + kCountBytes + colours->size());
    CheckGrid(map.ColourGrid(), colours);
    CheckGrid(map.GainGrid(), gains);
    Check(report.FailedRead() == (gains ? S_OK : E_FAIL));
    Check(!gains || static_cast<std::uint64_t>(std::streamoff{stream.tellg()}) ==
                        kImagesAt + 2 * kCountBytes + colours->size() + gains->size());
    Check(map.FindElement(0, 0) == nullptr);
    map.Resize(7, 5);
    Check(SameBits(*map.FindElement(6, 4), SMatrixCoef{}));
}

} // namespace
} // namespace trevolt::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace trevolt;
    CMemoryBudget::Process().SetLimit(fuzz::kRawBudget);
    fuzz::CheckRaw(std::as_bytes(std::span(data, size)));
    fuzz::Check(CMemoryBudget::Process().Outstanding() == 0);
    return 0;
}
