#include "trevolt/TextCoefFile.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "formats/FileOrStream.h"
#include "formats/SanitizeMatrix.h"
#include "formats/TextLines.h"
#include "formats/TextNumber.h"
#include "formats/TextScan.h"

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

void ScanDataLine(std::string_view line, ParseRecord& record) {
    CTextScan scan(line);
    if (!ScanCoordinates(scan, record.at))
        return;
    for (float& value : record.m)
        if (!scan.TakeLiteral(",") || !scan.TakeReal(value))
            return;
}

void ScanSizeLine(std::string_view line, std::string_view key, std::uint32_t& size) {
    CTextScan scan(line);
    std::int32_t value = 0;
    if (scan.TakeLiteral(key) && scan.TakeInteger(value))
        size = static_cast<std::uint32_t>(value);
}

/// Raises `size` to `atLeast`; negative ones raise nothing.
void Raise(std::uint32_t& size, std::int64_t atLeast) {
    size = static_cast<std::uint32_t>(std::max<std::int64_t>(size, atLeast));
}

void RaiseToHold(const Coordinates& at, std::uint32_t& width, std::uint32_t& height) {
    Raise(width, std::int64_t{at.x} + 1);
    Raise(height, std::int64_t{at.y} + 1);
}

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
        return S_OK;
    }

    bool IsSized() const { return m_sized; }

    /// Takes the size lines, which are told by their position alone, where the dialect has them.
    void TakeSizeLines(std::uint32_t& width, std::uint32_t& height) {
        if (m_sized && m_lines.HasMore())
            ScanSizeLine(m_lines.Next(), kWidthKey, width);
        if (m_sized && m_lines.HasMore())
            ScanSizeLine(m_lines.Next(), kHeightKey, height);
    }

    CTextLines& Lines() { return m_lines; }

  private:
    CTextLines m_lines;
    bool m_sized = false;
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

Status ReadLines(std::istream& stream, CChromaCorrectCoef& map, const Placing& placing,
                 std::uint32_t& width, std::uint32_t& height) {
    CTaggedText text(stream);
    if (const Status status = text.TakeTag(); Failed(status))
        return status;
    map.FillDefaults();
    text.TakeSizeLines(width, height);
    ParseRecord record;
    while (text.Lines().HasMore()) {
        ScanDataLine(text.Lines().Next(), record);
        SanitizeMatrix(record.m);
        map.SetElement(std::int64_t{record.at.x} + placing.xOffset,
                       std::int64_t{record.at.y} + placing.yOffset,
                       ElementOf(record, placing.diagonalOnly));
        if (!text.IsSized())
            RaiseToHold(record.at, width, height);
    }
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
    while (!text.IsSized() && text.Lines().HasMore()) {
        CTextScan scan(text.Lines().Next());
        ScanCoordinates(scan, at);
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
