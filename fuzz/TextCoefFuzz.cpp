// Text coefficient files through their reader and probes on streams, and back through their writer.
// An input is a file as it stands; what follows its first line is read in every dialect.
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <system_error>

#include "formats/SanitizeMatrix.h"
#include "fuzz/ExpectedFlaws.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/FuzzMap.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/TextCoefFile.h"
#include "trevolt/TransferReport.h"

namespace trevolt::fuzz {
namespace {

/// Room for an overlong line; what is behind it would be read some twenty times over.
constexpr std::size_t kMostBytes = 4096;
constexpr std::int32_t kWidth = 12;
constexpr std::int32_t kHeight = 9;

std::istringstream TextStream(std::string_view text) {
    return std::istringstream(std::string(text), std::ios::binary);
}

struct SOffset {
    std::int32_t x = 0;
    std::int32_t y = 0;
};

struct SRead {
    CChromaCorrectCoef map;
    Status status{};
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    CTextFlaws flaws;
    std::uint64_t cleaned = 0;
};

SRead ReadMap(std::string_view text, const SOffset& offset, bool diagonalOnly) {
    SRead read;
    read.map.Resize(kWidth, kHeight);
    std::istringstream stream = TextStream(text);
    const CTransferReport report;
    read.status = ReadTextCoefFile(read.map, stream, offset.x, offset.y, read.width, read.height,
                                   diagonalOnly);
    Check(!report.HasReadFailed() && !report.WasMemoryRefused());
    read.flaws = report.TextFlaws();
    read.cleaned = report.CleanedPixels();
    return read;
}

/// Whether two reads tell the same, as far as the map's place has no part in it.
bool TellSame(const SRead& a, const SRead& b) {
    for (const ETextFlaw flaw : {ETextFlaw::LongLine, ETextFlaw::NoEnd, ETextFlaw::SizeLine,
                                 ETextFlaw::DataLine, ETextFlaw::Outside})
        if (a.flaws[flaw].count != b.flaws[flaw].count ||
            a.flaws[flaw].first != b.flaws[flaw].first)
            return false;
    return a.cleaned == b.cleaned;
}

bool SameMap(const CChromaCorrectCoef& a, const CChromaCorrectCoef& b) {
    for (std::int32_t y = 0; y < kHeight; ++y)
        for (std::int32_t x = 0; x < kWidth; ++x)
            if (!SameBits(*a.FindElement(x, y), *b.FindElement(x, y)))
                return false;
    return true;
}

/// Checks that the probe tells what the reader tells, and neither anything of an unknown tag.
void CheckProbe(std::string_view text, const SRead& read) {
    Check(read.status == S_OK ||
          (read.status == E_COEF_BADTEXT && read.width == 0 && read.height == 0));
    std::istringstream stream = TextStream(text);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    Check(ProbeTextCoefFileSize(stream, width, height) == read.status);
    Check(width == read.width && height == read.height);
}

/// Checks what a reader must leave whatever it read: the map's shape, its gains, the trailing
/// values, and cleaned values only.
void CheckMap(const SRead& read) {
    const SMatrixCoef byDefault;
    Check(read.map.Width() == kWidth && read.map.Height() == kHeight);
    for (std::uint32_t i = 0; i < kWidth * kHeight; ++i) {
        float gain = 0.0F;
        std::memcpy(&gain, read.map.GainGrid().Element(i), sizeof gain);
        Check(gain == 1.0F);
    }
    for (std::int32_t y = 0; y < kHeight; ++y)
        for (std::int32_t x = 0; x < kWidth; ++x) {
            const SMatrixCoef& element = *read.map.FindElement(x, y);
            for (std::size_t k = 0; k < 9; ++k)
                Check(std::isnan(element.m[k]) ||
                      (element.m[k] >= 0.0F && element.m[k] <= 1.00001F));
            SMatrixCoef withTrailing = element;
            std::copy(byDefault.m.begin() + 9, byDefault.m.end(), withTrailing.m.begin() + 9);
            Check(SameBits(element, withTrailing));
        }
}

/// Checks that a read at an offset gives what the one without has, moved, and the same sizes.
void CheckOffset(std::string_view text, const SRead& plain, const SOffset& offset) {
    const SRead moved = ReadMap(text, offset, /*diagonalOnly=*/false);
    Check(moved.status == plain.status);
    Check(moved.width == plain.width && moved.height == plain.height);
    Check(TellSame(moved, plain));
    Check(moved.flaws[ETextFlaw::Repeated].count <= plain.flaws[ETextFlaw::Repeated].count);
    CheckMap(moved);
    for (std::int64_t y = offset.y; y < kHeight; ++y)
        for (std::int64_t x = offset.x; x < kWidth; ++x)
            Check(SameBits(*moved.map.FindElement(x, y),
                           *plain.map.FindElement(x - offset.x, y - offset.y)));
}

/// Checks that a read of the diagonal alone gives the plain read's with the others 0.
void CheckDiagonal(std::string_view text, const SRead& plain) {
    const SRead diagonal = ReadMap(text, {}, /*diagonalOnly=*/true);
    Check(diagonal.status == plain.status);
    Check(TellSame(diagonal, plain));
    for (std::int32_t y = 0; y < kHeight; ++y)
        for (std::int32_t x = 0; x < kWidth; ++x) {
            SMatrixCoef expected = *plain.map.FindElement(x, y);
            for (const std::size_t k : {1U, 2U, 3U, 5U, 6U, 7U})
                expected.m[k] = 0.0F;
            Check(SameBits(*diagonal.map.FindElement(x, y), expected));
        }
}

/// What five decimals leave of a value.
float FiveDecimals(float value) {
    if (std::isnan(value))
        return value;
    std::array<char, 64> text{};
    char* const end = text.data() + text.size();
    const auto [last, written] =
        std::to_chars(text.data(), end, static_cast<double>(value), std::chars_format::fixed, 5);
    float rounded = -1.0F;
    const auto [ignored, read] = std::from_chars(text.data(), last, rounded);
    Check(written == std::errc{} && read == std::errc{} && ignored == last);
    return rounded;
}

bool SameValue(float a, float b) { return std::isnan(a) ? std::isnan(b) : a == b; }

/// Checks that what is written of the map and read again is its values to five decimals, cleaned.
void CheckWrittenBack(const CChromaCorrectCoef& map) {
    std::ostringstream written(std::ios::binary);
    Check(WriteTextCoefFile(map, written, nullptr) == S_OK);
    const SRead back = ReadMap(written.str(), {}, /*diagonalOnly=*/false);
    Check(back.status == S_OK);
    Check(back.width == kWidth && back.height == kHeight);
    CheckFlaws(back.flaws, {});
    for (std::int32_t y = 0; y < kHeight; ++y)
        for (std::int32_t x = 0; x < kWidth; ++x) {
            std::array<float, 9> expected{};
            for (std::size_t k = 0; k < expected.size(); ++k)
                expected[k] = FiveDecimals(map.FindElement(x, y)->m[k]);
            SanitizeMatrix(expected);
            for (std::size_t k = 0; k < expected.size(); ++k)
                Check(SameValue(back.map.FindElement(x, y)->m[k], expected[k]));
        }
}

/// Checks what is told of the lines in a file of an older dialect and in one whose size is stated.
void CheckTold(std::string_view lines) {
    constexpr std::int64_t kUnbounded = std::int64_t{1} << 31;
    const std::string text(lines);
    const SRead older = ReadMap("[VU30]\n" + text, {}, /*diagonalOnly=*/false);
    CheckFlaws(older.flaws, ExpectFlaws(lines, kUnbounded, kUnbounded));
    const SRead sized =
        ReadMap("[T9COEF20]\nwidth=9\nheight=100\n" + text, {}, /*diagonalOnly=*/false);
    CheckFlaws(sized.flaws, ExpectFlaws(lines, 9, 100));
    Check(older.cleaned == sized.cleaned && SameMap(older.map, sized.map));
}

/// Checks all that is told of a text of a known tag.
SRead CheckText(std::string_view text) {
    constexpr std::int32_t kFar = std::numeric_limits<std::int32_t>::max();
    SRead plain = ReadMap(text, {}, /*diagonalOnly=*/false);
    Check(plain.status == S_OK);
    CheckProbe(text, plain);
    CheckMap(plain);
    for (const SOffset& offset : {SOffset{3, 2}, SOffset{kFar, kFar}})
        CheckOffset(text, plain, offset);
    CheckDiagonal(text, plain);
    CheckWrittenBack(plain.map);
    return plain;
}

/// `lines` as far as their first empty line, where the extent of data without a tag ends.
std::string_view UntilEmptyLine(std::string_view lines) {
    for (std::size_t at = 0; at < lines.size();) {
        const std::string_view line = lines.substr(at, lines.find('\n', at) - at);
        const bool isLast = at + line.size() == lines.size();
        if (line.empty() || (line == "\r" && !isLast) || line.front() == '\0')
            return lines.substr(0, at);
        at += line.size() + 1;
    }
    return lines;
}

/// Checks that data without a tag has the extent that an older dialect's file has of it.
void CheckExtent(std::string_view lines) {
    std::istringstream stream = TextStream(lines);
    std::uint32_t largestY = 1;
    std::uint32_t largestX = 1;
    Check(ProbeCoefDataExtent(stream, largestY, largestX) == S_OK);
    std::istringstream tagged = TextStream("[VU30]\n" + std::string(UntilEmptyLine(lines)));
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    Check(ProbeTextCoefFileSize(tagged, width, height) == S_OK);
    Check(largestX == (width == 0 ? 0 : width - 1));
    Check(largestY == (height == 0 ? 0 : height - 1));
}

std::string BehindFirstLine(std::string_view text) {
    const std::size_t feed = text.find('\n');
    return std::string(feed == std::string_view::npos ? "" : text.substr(feed + 1));
}

void CheckTextFile(std::string_view input) {
    CheckProbe(input, ReadMap(input, {}, /*diagonalOnly=*/false));
    const std::string lines = BehindFirstLine(input);
    CheckText("[T9COEF20]\n" + lines);
    const SRead older = CheckText("[T9COEF10]\n" + lines);
    const SRead oldest = ReadMap("[VU30]\n" + lines, {}, /*diagonalOnly=*/false);
    Check(SameMap(older.map, oldest.map));
    Check(older.width == oldest.width && older.height == oldest.height);
    CheckExtent(lines);
    CheckTold(lines);
}

} // namespace
} // namespace trevolt::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace trevolt;
    fuzz::CheckTextFile({reinterpret_cast<const char*>(data), std::min(size, fuzz::kMostBytes)});
    fuzz::Check(CMemoryBudget::Process().Outstanding() == 0);
    return 0;
}
