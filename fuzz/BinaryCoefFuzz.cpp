// Binary coefficient files of the four kinds through their readers on streams, and back through
// their writers. An input is a file as it stands; its first byte chooses the kind.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <vector>

#include "formats/BinaryCoefBody.h"
#include "formats/BinaryCoefKind.h"
#include "formats/BinaryCoefPixels.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/FuzzMap.h"
#include "trevolt/BinaryCoefFile.h"
#include "trevolt/MemoryBudget.h"

namespace trevolt::fuzz {
namespace {

/// More than the maps and a sample's body, and less than a lying frame may ask for.
constexpr std::uint64_t kBudget = std::uint64_t{4} << 20;
constexpr std::uint32_t kMostPixels = 4096;
constexpr std::uint64_t kHeaderBytes = 24;

struct SKind {
    const CoefFileMagic& magic;
    Status (*read)(CChromaCorrectCoef&, std::istream&);
    Status (*write)(const CChromaCorrectCoef&, std::ostream&, const CMassiveGrid*);
    Status (*readSize)(std::istream&, std::uint32_t&, std::uint32_t&);
    Status wholeMapRead;
    void (*checkPixels)(std::span<const std::byte> input);
};

/// Holds the pixels that come piece by piece to those of a body.
template <class Kind>
class CBodyPixels final : public CPixelSink {
  public:
    explicit CBodyPixels(const CMassiveGrid& body) : m_body(body) {}

    void TakeSize(const PixelSize& size) noexcept override { m_size = size; }
    void TakeRun(const SMatrixCoef* pixels, std::uint32_t count) noexcept override {
        for (std::uint32_t i = 0; i < count; ++i, ++m_taken)
            if (m_taken < m_body.ElementCount())
                Check(SameBits(pixels[i], PixelOf(static_cast<std::uint32_t>(m_taken))));
    }

    const PixelSize& Size() const { return m_size; }
    std::uint64_t Taken() const { return m_taken; }

  private:
    SMatrixCoef PixelOf(std::uint32_t index) const {
        SMatrixCoef pixel;
        Kind::LoadBytes(m_body.Element(index), pixel);
        return pixel;
    }

    const CMassiveGrid& m_body;
    PixelSize m_size;
    std::uint64_t m_taken = 0;
};

/// Checks that the input is read piece by piece as its body is: with the same status, and the same
/// pixels of a whole one. Where one of both gets no memory, the other may do with less.
template <class Kind>
void CheckPixels(std::span<const std::byte> input) {
    std::istringstream bodyStream = StreamOf(input);
    CMassiveGrid body(Kind::kStoredBytes);
    const Status held = ReadCoefBody(bodyStream, Kind::kMagic, body);
    std::istringstream stream = StreamOf(input);
    CBodyPixels<Kind> pixels(body);
    const Status status = ReadBinaryCoefPixels<Kind>(stream, 1, pixels);
    Check(status == held || status == E_OUTOFMEMORY || held == E_OUTOFMEMORY);
    const auto all = static_cast<std::uint64_t>(pixels.Size().width) *
                     static_cast<std::uint64_t>(pixels.Size().height);
    Check(pixels.Taken() <= all);
    if (Failed(status) || Failed(held))
        return;
    Check(pixels.Size() == PixelSize{body.Width(), body.Height()});
    Check(pixels.Taken() == all);
}

constexpr std::array<SKind, 4> kKinds{{{S9fCoefKind::kMagic, Read9fCoefFile, Write9fCoefFile,
                                        Read9fCoefSize, MakeStatus(1), CheckPixels<S9fCoefKind>},
                                       {S3fCoefKind::kMagic, Read3fCoefFile, Write3fCoefFile,
                                        Read3fCoefSize, S_OK, CheckPixels<S3fCoefKind>},
                                       {S9bCoefKind::kMagic, Read9bCoefFile, Write9bCoefFile,
                                        Read9bCoefSize, S_OK, CheckPixels<S9bCoefKind>},
                                       {S3bCoefKind::kMagic, Read3bCoefFile, Write3bCoefFile,
                                        Read3bCoefSize, S_OK, CheckPixels<S3bCoefKind>}}};

struct SSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

/// The size that the input's header has, when that is whole and of the kind.
std::optional<SSize> ExpectedSize(std::span<const std::byte> input, const SKind& kind) {
    if (input.size() < kHeaderBytes ||
        std::memcmp(input.data(), kind.magic.data(), kind.magic.size()) != 0)
        return std::nullopt;
    const auto at = [&](std::size_t k) { return std::to_integer<std::uint32_t>(input[k]); };
    if (at(16) > 1 || at(17) != 0 || at(18) != 0 || at(19) != 0)
        return std::nullopt;
    return SSize{at(20) + (at(21) << 8), at(22) + (at(23) << 8)};
}

/// Checks that the size query tells what the header says, and takes no more than that.
void CheckSize(std::span<const std::byte> input, const SKind& kind,
               const std::optional<SSize>& expected) {
    constexpr std::uint32_t kUntouched = 0xABCDEF;
    std::istringstream stream = StreamOf(input);
    SSize size{kUntouched, kUntouched};
    const Status status = kind.readSize(stream, size.width, size.height);
    Check(status == (expected ? S_OK : E_COEF_BADFORMAT));
    Check(size.width == (expected ? expected->width : kUntouched));
    Check(size.height == (expected ? expected->height : kUntouched));
    Check(!expected || static_cast<std::uint64_t>(std::streamoff{stream.tellg()}) == kHeaderBytes);
}

/// Reads the input into a painted map of `size`; after a failure that is as it was, and after a
/// success what it has and the file has not.
Status CheckRead(std::span<const std::byte> input, const SKind& kind,
                 const std::optional<SSize>& fileSize, CChromaCorrectCoef& map) {
    const CChromaCorrectCoef before = PaintedMap(map.Width(), map.Height());
    const std::uint64_t held = CMemoryBudget::Process().Outstanding();
    std::istringstream stream = StreamOf(input);
    const Status status = kind.read(map, stream);
    Check(CMemoryBudget::Process().Outstanding() == held);
    Check(fileSize.has_value() == (status != E_COEF_BADFORMAT));
    Check(BytesOf(map.GainGrid()) == BytesOf(before.GainGrid()));
    if (Failed(status)) {
        Check(status == E_COEF_BADFORMAT || status == E_FAIL || status == E_OUTOFMEMORY);
        Check(BytesOf(map.ColourGrid()) == BytesOf(before.ColourGrid()));
        return status;
    }
    const bool isWhole = fileSize->width == map.Width() && fileSize->height == map.Height();
    Check(status == (isWhole && !map.IsEmpty() ? kind.wholeMapRead : S_OK));
    Check(stream.good());
    Check(static_cast<std::uint64_t>(std::streamoff{stream.tellg()}) == input.size());
    for (std::int32_t y = 0; y < map.Height(); ++y)
        for (std::int32_t x = 0; x < map.Width(); ++x)
            if (x >= static_cast<std::int32_t>(fileSize->width) ||
                y >= static_cast<std::int32_t>(fileSize->height))
                Check(SameBits(*map.FindElement(x, y), *before.FindElement(x, y)));
    return status;
}

/// Checks that two maps that the same file was read into agree in what both have of it.
void CheckOverlap(const CChromaCorrectCoef& a, const CChromaCorrectCoef& b) {
    for (std::int32_t y = 0; y < std::min(a.Height(), b.Height()); ++y)
        for (std::int32_t x = 0; x < std::min(a.Width(), b.Width()); ++x)
            Check(SameBits(*a.FindElement(x, y), *b.FindElement(x, y)));
}

/// Checks that a map that was read whole is written as a file that reads as the same map.
void CheckWrittenBack(const SKind& kind, const CChromaCorrectCoef& map) {
    std::ostringstream written(std::ios::binary);
    Check(kind.write(map, written, nullptr) == S_OK);
    std::istringstream stream(written.str(), std::ios::binary);
    CChromaCorrectCoef back = PaintedMap(map.Width(), map.Height());
    Check(kind.read(back, stream) == kind.wholeMapRead);
    Check(BytesOf(back.ColourGrid()) == BytesOf(map.ColourGrid()));
}

void CheckBinaryFile(std::span<const std::byte> input) {
    const SKind& kind = KindOf(kKinds, input);
    const auto fileSize = ExpectedSize(input, kind);
    CheckSize(input, kind, fileSize);
    kind.checkPixels(input);
    // A map of a size of its own, which a file overlaps in every way.
    CChromaCorrectCoef other = PaintedMap(7, 5);
    const Status status = CheckRead(input, kind, fileSize, other);
    if (!fileSize || fileSize->width * fileSize->height - 1 >= kMostPixels)
        return;
    CChromaCorrectCoef map = PaintedMap(fileSize->width, fileSize->height);
    const Status whole = CheckRead(input, kind, fileSize, map);
    if (whole == E_OUTOFMEMORY || status == E_OUTOFMEMORY) // it may just do for one of both maps
        return;
    Check(whole == status || (!Failed(whole) && !Failed(status)));
    if (Failed(whole))
        return;
    CheckOverlap(map, other);
    CheckWrittenBack(kind, map);
}

} // namespace
} // namespace trevolt::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace trevolt;
    CMemoryBudget::Process().SetLimit(fuzz::kBudget);
    fuzz::CheckBinaryFile(std::as_bytes(std::span(data, size)));
    fuzz::Check(CMemoryBudget::Process().Outstanding() == 0);
    return 0;
}
