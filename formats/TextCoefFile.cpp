#include "trevolt/TextCoefFile.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "formats/FileOrStream.h"
#include "formats/SanitizeMatrix.h"
#include "formats/TextLines.h"
#include "formats/TextNumber.h"
#include "formats/TextScan.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

struct Dialect {
    std::string_view tag;
    bool sized; ///< two size lines follow the tag
};
constexpr Dialect kWrittenDialect{"[T9COEF20]", true};
constexpr std::array<Dialect, 3> kDialects{
    {kWrittenDialect, {"[T9COEF10]", false}, {"[VU30]", false}}};

constexpr std::string_view kWidthKey = "width=";
constexpr std::string_view kHeightKey = "height=";

struct Coordinates {
    std::int32_t x = -1; // inside no map, until a line has given coordinates
    std::int32_t y = -1;
};

/// What the data lines have said so far: a field that a line does not give stays.
struct ParseRecord {
    Coordinates at;
    std::array<float, 9> m{1, 0, 0, 0, 1, 0, 0, 0, 1};
};

bool ScanCoordinates(CTextScan& scan, Coordinates& at) {
    return scan.TakeInteger(at.x) && scan.TakeLiteral(",") && scan.TakeInteger(at.y);
}

const char* EndOf(std::string_view line) { return line.data() + line.size(); }

/// Whether it is a whole data line: all fields, and nothing but blanks behind them.
bool ScanDataLine(std::string_view line, ParseRecord& record) {
    CTextScan scan(line);
    if (!ScanCoordinates(scan, record.at))
        return false;
    for (float& value : record.m)
        if (!scan.TakeLiteral(",") || !scan.TakeReal(value))
            return false;
    return scan.TakeBlanksTo(EndOf(line));
}

/// Whether it is a whole size line: the key, a size, and nothing but blanks behind it.
bool ScanSizeLine(std::string_view line, std::string_view key, std::uint32_t& size) {
    CTextScan scan(line);
    std::int32_t value = 0;
    if (!scan.TakeLiteral(key) || !scan.TakeInteger(value))
        return false;
    size = static_cast<std::uint32_t>(value);
    return value >= 0 && scan.TakeBlanksTo(EndOf(line));
}

/// Raises `size` to `atLeast`; negative ones raise nothing.
void Raise(std::uint32_t& size, std::int64_t atLeast) {
    size = static_cast<std::uint32_t>(std::max<std::int64_t>(size, atLeast));
}

void RaiseToHold(const Coordinates& at, std::uint32_t& width, std::uint32_t& height) {
    Raise(width, std::int64_t{at.x} + 1);
    Raise(height, std::int64_t{at.y} + 1);
}

/// How much of a data line there is.
enum class EDataLine : std::uint8_t {
    Flawless,
    Whole,  ///< all fields, but a flaw that has been noted
    Partial ///< not all fields, or more than those; or the empty one at the end of the file
};

/// A file that begins with a tag line.
class CTaggedText {
  public:
    explicit CTaggedText(std::istream& stream) : m_lines(stream) {}

    /// Takes the tag line, before all others; E_COEF_BADTEXT for an empty or unknown one.
    Status TakeTag() {
        const std::string_view tag = m_lines.Next();
        const auto dialect =
            std::find_if(kDialects.begin(), kDialects.end(),
                         [tag](const Dialect& candidate) { return candidate.tag == tag; });
        if (dialect == kDialects.end())
            return E_COEF_BADTEXT;
        m_sized = dialect->sized;
        if (!m_lines.HasMore())
            NoteFlaw(ETextFlaw::NoEnd);
        return S_OK;
    }

    bool IsSized() const { return m_sized; }

    /// Takes the size lines, which are told by their position alone, where the dialect has them.
    void TakeSizeLines(std::uint32_t& width, std::uint32_t& height) {
        if (!m_sized)
            return;
        const bool hasWidth = TakeSizeLine(kWidthKey, width);
        if (TakeSizeLine(kHeightKey, height) && hasWidth)
            m_stated = {width, height};
    }

    bool HasMore() const { return m_lines.HasMore(); }

    /// Takes a data line into `record`, and tells how much it gave.
    EDataLine TakeDataLine(ParseRecord& record) {
        const std::string_view line = m_lines.Next();
        const bool isWhole = ScanDataLine(line, record);
        if (!HasGoodEnd(line))
            return isWhole ? EDataLine::Whole : EDataLine::Partial;
        if (isWhole && m_stated.Holds(record.at))
            return EDataLine::Flawless;
        NoteFlaw(isWhole ? ETextFlaw::Outside : ETextFlaw::DataLine);
        return isWhole ? EDataLine::Whole : EDataLine::Partial;
    }

    /// Takes a data line's coordinates.
    void TakeCoordinates(Coordinates& at) {
        CTextScan scan(m_lines.Next());
        ScanCoordinates(scan, at);
    }

    /// Tells that the line that was taken last has a flaw.
    void NoteFlaw(ETextFlaw flaw) { m_flaws.Note(flaw, m_lines.Number()); }

    const CTextFlaws& Flaws() const { return m_flaws; }

  private:
    /// The size of a file that states none reaches as far as numbers do.
    struct StatedSize {
        std::int64_t width = std::int64_t{1} << 31;
        std::int64_t height = std::int64_t{1} << 31;

        bool Holds(const Coordinates& at) const {
            return at.x >= 0 && at.y >= 0 && at.x < width && at.y < height;
        }
    };

    /// Whether it is there and whole.
    bool TakeSizeLine(std::string_view key, std::uint32_t& size) {
        if (!m_lines.HasMore())
            return false; // and the flaw is that of the line before
        const std::string_view line = m_lines.Next();
        const bool isWhole = ScanSizeLine(line, key, size);
        if ((HasGoodEnd(line) || line.empty()) && !isWhole)
            NoteFlaw(ETextFlaw::SizeLine);
        return isWhole;
    }

    /// Whether more follows a line. Notes it of one that is too long or has no end; the empty one
    /// that meets the end of the file is as the format has it.
    bool HasGoodEnd(std::string_view line) {
        if (m_lines.HasMore())
            return true;
        if (m_lines.IsOverlong())
            NoteFlaw(ETextFlaw::LongLine);
        else if (!line.empty())
            NoteFlaw(ETextFlaw::NoEnd);
        return false;
    }

    CTextLines m_lines;
    bool m_sized = false;
    StatedSize m_stated;
    CTextFlaws m_flaws;
};

SMatrixCoef ElementOf(const ParseRecord& record, bool diagonalOnly) {
    SMatrixCoef element;
    if (!diagonalOnly) {
        std::copy(record.m.begin(), record.m.end(), element.m.begin());
        return element;
    }
    for (const std::size_t k : {0U, 4U, 8U})
        element.m[k] = record.m[k];
    return element;
}

/// The pixels of a map that lines have named, a bit each.
class CNamedPixels {
  public:
    explicit CNamedPixels(const CChromaCorrectCoef& map)
        : m_width(map.HasStorage() ? map.Width() : 0), m_height(map.Height()) {}

    /// Names a pixel; whether it had been named. Always false without memory for the map's bits, which
    /// the thread's transfer report hears of.
    bool Name(std::int64_t x, std::int64_t y) {
        if (m_isRefused)
            return false;
        if (x < 0 || y < 0 || x >= m_width || y >= m_height) // each takes what its line justifies
            return !m_outside.emplace(x, y).second;
        if (!HasBits())
            return false;
        const auto pixel = static_cast<std::size_t>(y * m_width + x);
        std::byte& bits = m_bits.Data()[pixel / 8];
        const std::byte bit = std::byte{1} << (pixel % 8);
        const bool wasNamed = (bits & bit) != std::byte{0};
        bits |= bit;
        return wasNamed;
    }

  private:
    /// Only the first pixel that is named takes memory.
    bool HasBits() {
        if (m_bits)
            return true;
        m_bits = CBudgetBlock(static_cast<std::size_t>((m_width * m_height + 7) / 8));
        if (m_bits)
            std::memset(m_bits.Data(), 0, m_bits.Size());
        m_isRefused = !m_bits;
        return static_cast<bool>(m_bits);
    }

    std::int64_t m_width;
    std::int64_t m_height;
    CBudgetBlock m_bits; ///< of the map's pixels
    bool m_isRefused = false;
    std::set<std::pair<std::int64_t, std::int64_t>> m_outside; ///< of the map
};

bool HasShapeOf(const CMassiveGrid& grid, const CChromaCorrectCoef& map) {
    return grid.ElementBytes() == sizeof(SMatrixCoef) && grid.Width() == map.Width() &&
           grid.Height() == map.Height();
}

std::string HeaderLines(const CChromaCorrectCoef& map) {
    std::string lines(kWrittenDialect.tag);
    lines.append("\n").append(kWidthKey).append(std::to_string(map.Width()));
    lines.append("\n").append(kHeightKey).append(std::to_string(map.Height()));
    return lines.append("\n");
}

/// Formats data lines and hands them to a stream in large pieces.
class CDataLineWriter {
  public:
    explicit CDataLineWriter(std::ostream& stream)
        : m_stream(stream), m_buffer(kFlushChars + kLongestLine) {}

    void Write(std::uint32_t x, std::uint32_t y, const SMatrixCoef& element) {
        char* at = WritePadded5(m_buffer.data() + m_filled, x);
        at = WritePadded5(WriteSeparator(at), y);
        for (std::size_t k = 0; k < 9; ++k)
            at = WriteFixed5(WriteSeparator(at), element.m[k]);
        *at++ = '\n';
        m_filled = static_cast<std::size_t>(at - m_buffer.data());
        if (m_filled >= kFlushChars)
            Flush();
    }

    void Flush() {
        m_stream.write(m_buffer.data(), static_cast<std::streamsize>(m_filled));
        m_filled = 0;
    }

  private:
    static constexpr std::size_t kFlushChars = std::size_t{1} << 16;
    static constexpr std::size_t kLongestLine = 1024;
    static_assert((kPadded5Chars + 2) * 2 + (kFixed5Chars + 2) * 9 <= kLongestLine);

    static char* WriteSeparator(char* out) {
        *out++ = ',';
        *out++ = ' ';
        return out;
    }

    std::ostream& m_stream;
    std::vector<char> m_buffer;
    std::size_t m_filled = 0;
};

/// The map's pixels, whose sizes have 16 bits; a grid without storage has none.
void WriteDataLines(std::ostream& stream, const CChromaCorrectCoef& map, const CMassiveGrid& grid) {
    CDataLineWriter writer(stream);
    const SMatrixCoef& defaultElement = map.DefaultElement();
    const auto* defaultBytes = reinterpret_cast<const std::byte*>(&defaultElement);
    const std::uint32_t width = std::min<std::uint32_t>(map.Width(), grid.Width());
    const std::uint32_t height = std::min<std::uint32_t>(map.Height(), grid.Height());
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            const std::byte* bytes = grid.Element(y * grid.Width() + x);
            if (std::memcmp(bytes, defaultBytes, sizeof defaultElement) != 0)
                writer.Write(x, y, *reinterpret_cast<const SMatrixCoef*>(bytes));
        }
    }
    writer.Flush();
}

void WriteLines(std::ostream& stream, const CChromaCorrectCoef& map, const CMassiveGrid& grid) {
    const std::string header = HeaderLines(map);
    stream.write(header.data(), static_cast<std::streamsize>(header.size()));
    WriteDataLines(stream, map, grid);
}

Status WriteText(const CChromaCorrectCoef& map, const CFileTarget& target,
                 const CMassiveGrid* preparedGrid) {
    if (target.IsNull() || (preparedGrid != nullptr && !HasShapeOf(*preparedGrid, map)))
        return E_COEF_INVALIDARG;
    return target.Put([&](std::ostream& stream) {
        WriteLines(stream, map, preparedGrid != nullptr ? *preparedGrid : map.ColourGrid());
        return S_OK;
    });
}

/// Where the pixels of a text go in a map, and what is taken of them.
struct Placing {
    std::int32_t xOffset;
    std::int32_t yOffset;
    bool diagonalOnly;
};

/// Stores what the data lines name; what they have that the format passes over is noted.
void StoreDataLines(CTaggedText& text, CChromaCorrectCoef& map, const Placing& placing,
                    std::uint32_t& width, std::uint32_t& height) {
    ParseRecord record;
    CNamedPixels named(map);
    std::uint64_t cleaned = 0;
    while (text.HasMore()) {
        const EDataLine line = text.TakeDataLine(record);
        if (SanitizeMatrix(record.m) && line != EDataLine::Partial)
            ++cleaned;
        const std::int64_t x = std::int64_t{record.at.x} + placing.xOffset;
        const std::int64_t y = std::int64_t{record.at.y} + placing.yOffset;
        map.SetElement(x, y, ElementOf(record, placing.diagonalOnly));
        if (line == EDataLine::Flawless && named.Name(x, y))
            text.NoteFlaw(ETextFlaw::Repeated);
        if (!text.IsSized())
            RaiseToHold(record.at, width, height);
    }
    CTransferReport::NoteCleanedPixels(cleaned);
}

Status ReadLines(std::istream& stream, CChromaCorrectCoef& map, const Placing& placing,
                 std::uint32_t& width, std::uint32_t& height) {
    CTaggedText text(stream);
    if (const Status status = text.TakeTag(); Failed(status))
        return status;
    map.FillDefaults();
    text.TakeSizeLines(width, height);
    StoreDataLines(text, map, placing, width, height);
    CTransferReport::NoteTextFlaws(text.Flaws());
    return S_OK;
}

Status ReadText(CChromaCorrectCoef& map, const CFileSource& source, const Placing& placing,
                std::uint32_t& width, std::uint32_t& height) {
    if (placing.xOffset < 0 || placing.yOffset < 0)
        return E_COEF_INVALIDARG;
    return source.Take(
        [&](std::istream& stream) { return ReadLines(stream, map, placing, width, height); });
}

Status ProbeLines(std::istream& stream, std::uint32_t& width, std::uint32_t& height) {
    CTaggedText text(stream);
    if (const Status status = text.TakeTag(); Failed(status))
        return status;
    text.TakeSizeLines(width, height);
    Coordinates at;
    while (!text.IsSized() && text.HasMore()) {
        text.TakeCoordinates(at);
        RaiseToHold(at, width, height);
    }
    return S_OK;
}

Status ProbeText(const CFileSource& source, std::uint32_t& width, std::uint32_t& height) {
    return source.Take([&](std::istream& stream) { return ProbeLines(stream, width, height); });
}

Status ProbeDataLines(std::istream& stream, std::uint32_t& largestY, std::uint32_t& largestX) {
    largestY = 0;
    largestX = 0;
    CTextLines lines(stream);
    Coordinates at;
    while (lines.HasMore()) {
        const std::string_view line = lines.Next();
        if (line.empty() || line.front() == '\0') // a NUL ends the text of a line
            break;
        CTextScan scan(line);
        ScanCoordinates(scan, at);
        Raise(largestY, at.y);
        Raise(largestX, at.x);
    }
    return S_OK;
}

Status ProbeData(const CFileSource& source, std::uint32_t& largestY, std::uint32_t& largestX) {
    return source.Take(
        [&](std::istream& stream) { return ProbeDataLines(stream, largestY, largestX); });
}

} // namespace

Status WriteTextCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                         const CMassiveGrid* preparedGrid) {
    return WriteText(map, path, preparedGrid);
}

Status WriteTextCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                         const CMassiveGrid* preparedGrid) {
    return WriteText(map, stream, preparedGrid);
}

Status ReadTextCoefFile(CChromaCorrectCoef& map, const wchar_t* path, std::int32_t xOffset,
                        std::int32_t yOffset, std::uint32_t& width, std::uint32_t& height,
                        bool diagonalOnly) {
    return ReadText(map, path, {xOffset, yOffset, diagonalOnly}, width, height);
}

Status ReadTextCoefFile(CChromaCorrectCoef& map, std::istream& stream, std::int32_t xOffset,
                        std::int32_t yOffset, std::uint32_t& width, std::uint32_t& height,
                        bool diagonalOnly) {
    return ReadText(map, stream, {xOffset, yOffset, diagonalOnly}, width, height);
}

Status ProbeTextCoefFileSize(const wchar_t* path, std::uint32_t& width, std::uint32_t& height) {
    return ProbeText(path, width, height);
}

Status ProbeTextCoefFileSize(std::istream& stream, std::uint32_t& width, std::uint32_t& height) {
    return ProbeText(stream, width, height);
}

Status ProbeCoefDataExtent(const wchar_t* path, std::uint32_t& largestY, std::uint32_t& largestX) {
    return ProbeData(path, largestY, largestX);
}

Status ProbeCoefDataExtent(std::istream& stream, std::uint32_t& largestY, std::uint32_t& largestX) {
    return ProbeData(stream, largestY, largestX);
}

} // namespace trevolt
