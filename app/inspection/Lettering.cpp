#include "app/inspection/Lettering.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <new>

#include <fmt/format.h>
#include <stb/stb_truetype.h>

#include "app/inspection/FontFile.h"
#include "common/ShownCharacters.h"
#include "trevolt/Utf8.h"

/// Whether the library of outlines got no memory on this thread since it was asked last.
extern "C" int TakeLetterMemoryRefused(void);

namespace trevolt {
namespace {

/// The code points of UTF-8; bytes that are none are escaped.
std::u32string CodePoints(std::string_view text) {
    auto wide = Utf8ToWide(text);
    if (!wide)
        wide = Utf8ToWide(Shown(text));
    std::u32string points;
    for (std::size_t i = 0; i < wide->size(); ++i) {
        auto point = static_cast<char32_t>((*wide)[i]);
        if constexpr (sizeof(wchar_t) == 2)
            if (point >= 0xD800 && point < 0xDC00) // both halves are there in valid text
                point = 0x10000 + ((point - 0xD800) << 10) +
                        (static_cast<char32_t>((*wide)[++i]) - 0xDC00);
        points.push_back(point);
    }
    return points;
}

std::string ToUtf8(std::u32string_view points) {
    std::wstring wide;
    for (char32_t point : points) {
        if (sizeof(wchar_t) == 2 && point >= 0x10000) {
            wide.push_back(static_cast<wchar_t>(0xD800 + ((point - 0x10000) >> 10)));
            point = 0xDC00 + ((point - 0x10000) & 0x3FF);
        }
        wide.push_back(static_cast<wchar_t>(point));
    }
    return WideToShownUtf8(wide);
}

const stbtt_fontinfo& Font() {
    static const stbtt_fontinfo font = [] {
        stbtt_fontinfo info{};
        const unsigned char* const bytes = FontFile().data();
        stbtt_InitFont(&info, bytes, stbtt_GetFontOffsetForIndex(bytes, 0));
        return info;
    }();
    return font;
}

int GlyphOf(char32_t point) { return stbtt_FindGlyphIndex(&Font(), static_cast<int>(point)); }

/// What stands for a character that is not plain: itself, or its escape.
std::string TextFor(char32_t point) {
    const std::string text = ToUtf8({&point, 1});
    std::string shown = Shown(text);
    if (shown != text || GlyphOf(point) != 0)
        return shown;
    const auto code = static_cast<std::uint32_t>(point);
    return code <= 0xFFFF ? fmt::format("\\u{:04X}", code) : fmt::format("\\U{:08X}", code);
}

/// The letters of a line with their places.
class CLetterLine {
  public:
    CLetterLine(const std::u32string& points, int size)
        : m_scale(stbtt_ScaleForMappingEmToPixels(&Font(), static_cast<float>(size))) {
        for (const char32_t point : points)
            if (point >= U' ' && point <= U'~')
                Append(GlyphOf(point));
            else
                for (const char32_t letter : CodePoints(TextFor(point)))
                    Append(GlyphOf(letter));
    }

    int Width() const { return static_cast<int>(std::ceil(m_width)); }

    void Paint(CPicture& picture, int left, int baseline, SColour colour) const {
        for (const SLetter& letter : m_letters)
            PaintLetter(letter, picture, left, baseline, colour);
    }

  private:
    struct SLetter {
        int glyph;
        float left;
    };

    void Append(int glyph) {
        if (!m_letters.empty())
            m_width += m_scale * static_cast<float>(stbtt_GetGlyphKernAdvance(
                                     &Font(), m_letters.back().glyph, glyph));
        m_letters.push_back({glyph, m_width});
        int advance = 0;
        int bearing = 0;
        stbtt_GetGlyphHMetrics(&Font(), glyph, &advance, &bearing);
        m_width += m_scale * static_cast<float>(advance);
    }

    void PaintLetter(const SLetter& letter, CPicture& picture, int left, int baseline,
                     SColour colour) const {
        const float whole = std::floor(letter.left);
        const float part = letter.left - whole;
        int x0 = 0;
        int y0 = 0;
        int x1 = 0;
        int y1 = 0;
        stbtt_GetGlyphBitmapBoxSubpixel(&Font(), letter.glyph, m_scale, m_scale, part, 0, &x0, &y0,
                                        &x1, &y1);
        const int width = x1 - x0;
        const int height = y1 - y0;
        if (width <= 0 || height <= 0)
            return;
        std::vector<std::uint8_t> cover(static_cast<std::size_t>(width) *
                                        static_cast<std::size_t>(height));
        stbtt_MakeGlyphBitmapSubpixel(&Font(), cover.data(), width, height, width, m_scale, m_scale,
                                      part, 0, letter.glyph);
        if (TakeLetterMemoryRefused() != 0)
            throw std::bad_alloc();
        const std::uint8_t* next = cover.data();
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                picture.Mix(left + static_cast<int>(whole) + x0 + x, baseline + y0 + y, colour,
                            *next++);
    }

    float m_scale;
    float m_width = 0;
    std::vector<SLetter> m_letters;
};

} // namespace

int TextWidth(std::string_view text, int size) {
    return CLetterLine(CodePoints(text), size).Width();
}

void PaintText(CPicture& picture, int left, int baseline, std::string_view text, int size,
               SColour colour) {
    CLetterLine(CodePoints(text), size).Paint(picture, left, baseline, colour);
}

std::string ShortenedText(std::string_view text, int size, int width) {
    const std::u32string points = CodePoints(text);
    if (CLetterLine(points, size).Width() <= width)
        return std::string(text);
    for (std::size_t kept = points.size() - 1; kept > 0; --kept) {
        const std::size_t behind = kept / 2;
        const std::u32string shortened =
            points.substr(0, kept - behind) + U'\u2026' + points.substr(points.size() - behind);
        if (CLetterLine(shortened, size).Width() <= width)
            return ToUtf8(shortened);
    }
    return {};
}

namespace {

constexpr std::string_view kSeparator = " \u00B7 ";
constexpr std::string_view kFirmBlank = "\u00A0";

std::vector<std::string> PartsOf(std::string_view text, std::string_view between) {
    std::vector<std::string> parts;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(between, begin), text.size());
        parts.emplace_back(text.substr(begin, end - begin));
        begin = end + between.size();
    }
    return parts;
}

/// What is not broken if a line has room for it: the text itself, or its words, or what their firm
/// blanks part.
std::vector<std::string> WordsOf(const std::string& text, int size, int width) {
    if (TextWidth(text, size) <= width)
        return {text};
    std::vector<std::string> words;
    for (std::string& word : PartsOf(text, " "))
        if (TextWidth(word, size) <= width)
            words.push_back(std::move(word));
        else
            std::ranges::move(PartsOf(word, kFirmBlank), std::back_inserter(words));
    return words;
}

} // namespace

std::vector<std::string> WrappedText(std::string_view text, int size, int width) {
    std::vector<std::string> lines;
    for (const std::string& item : PartsOf(text, kSeparator)) {
        std::string_view between = kSeparator;
        for (const std::string& word : WordsOf(item, size, width)) {
            const std::string longer =
                lines.empty() ? word : fmt::format("{}{}{}", lines.back(), between, word);
            if (!lines.empty() && TextWidth(longer, size) <= width)
                lines.back() = longer;
            else
                lines.push_back(word);
            between = " ";
        }
    }
    for (std::string& line : lines)
        line = ShortenedText(line, size, width);
    return lines;
}

} // namespace trevolt
