#include "app/inspection/PictureSheet.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include <fmt/format.h>

#include "app/inspection/Lettering.h"
#include "app/inspection/ScaleTicks.h"

namespace trevolt {
namespace {

constexpr std::array kTitleSizes{22, 18, 15};
constexpr std::size_t kMostTitleLines = 2;
constexpr int kTitleBaseline = 40;
constexpr int kTitleHeight = 28; ///< from line to line
constexpr int kSubtitleBaseline = 64;

// Below the content, each from the one before.
constexpr int kContentAside = 8; ///< that frames and marks around it take
constexpr int kLegendGap = 26;   ///< to the baseline of its text
constexpr int kScaleGap = 10;
constexpr int kScaleHeight = 18;
constexpr int kTickLength = 6;
constexpr int kTickText = 16; ///< to the baseline of the ticks' numbers
constexpr int kLegendHeight = kLegendGap + kScaleGap + kScaleHeight + kTickLength + kTickText;

constexpr int kWidestScale = 760;
constexpr int kNarrowestContent = 420;

constexpr int kSwatch = 14;
constexpr int kSwatchGap = 8; ///< to its text
constexpr int kNoteGap = 28;  ///< to the next note

/// "12 %", and what is not nothing is not told as nothing.
std::string ShareText(std::uint64_t part, std::uint64_t whole) {
    const double share = 100.0 * static_cast<double>(part) / static_cast<double>(whole);
    return share < 0.1 ? "less than 0.1 %" : fmt::format("{:.1f} %", share);
}

std::vector<SLegendNote> NotesOf(const SPaintedValues& painted) {
    std::vector<SLegendNote> notes;
    const char* const also = painted.isLight ? "also " : ""; // the colours of light have no other
    const auto [low, high] = ShownEnds(painted.range);
    if (painted.below > 0)
        notes.push_back(
            {painted.isLight ? CCellPainter::LightColour(0) : kBelowColour,
             fmt::format("{}below {}: {}", also, low, ShareText(painted.below, painted.cells))});
    if (painted.above > 0)
        notes.push_back(
            {painted.isLight ? CCellPainter::LightColour(1) : kAboveColour,
             fmt::format("{}above {}: {}", also, high, ShareText(painted.above, painted.cells))});
    if (painted.notFinite > 0)
        notes.push_back(
            {kNoNumberColour, fmt::format("infinite or no number: {} {}", painted.notFinite,
                                          painted.notFinite == 1 ? "pixel" : "pixels")});
    return notes;
}

/// What the legend says above its scale.
std::string ScaleText(const std::string& quantity, const SPaintedValues& painted) {
    if (!painted.found)
        return fmt::format("{}: no value", quantity);
    if (painted.found->low == painted.found->high)
        return fmt::format("{}: {}\u00A0everywhere", quantity, ShownNumber(painted.found->low));
    const auto [low, high] = ShownEnds(*painted.found);
    return fmt::format("{}: {}\u00A0to\u00A0{}", quantity, low, high);
}

} // namespace

PixelSize CPictureSheet::RoomOf(int width) {
    return {std::max(width - 2 * kMargin, 1), std::max(width * 5 / 8, 1)};
}

CPictureSheet::CPictureSheet(const SSheetText& text, int contentWidth, int contentHeight, int width)
    : m_title(TitleFor(text.title, InnerWidth(contentWidth, width))),
      m_subtitle(WrappedText(text.subtitle, kTextSize, InnerWidth(contentWidth, width))),
      m_quantity(text.quantity),
      m_picture(2 * kMargin + InnerWidth(contentWidth, width),
                Top() + contentHeight + kContentAside, ink::kPaper) {
    PaintHeader();
}

CPictureSheet::SHeading CPictureSheet::TitleFor(const std::string& text, int width) {
    SHeading title{};
    for (const int size : kTitleSizes) {
        title = {size, WrappedText(text, size, width)};
        const bool isWhole = fmt::format("{}", fmt::join(title.lines, " ")) == text;
        if (isWhole && title.lines.size() <= kMostTitleLines)
            break;
    }
    return title;
}

int CPictureSheet::BelowTitle() const {
    return kTitleHeight * (static_cast<int>(m_title.lines.size()) - 1);
}

int CPictureSheet::Top() const {
    return kHeaderHeight + BelowTitle() + kTextHeight * (static_cast<int>(m_subtitle.size()) - 1);
}

int CPictureSheet::InnerWidth(int contentWidth, int width) {
    return std::max(contentWidth, std::min(kNarrowestContent, width - 2 * kMargin));
}

void CPictureSheet::PaintHeader() {
    int baseline = kTitleBaseline;
    for (const std::string& line : m_title.lines) {
        PaintText(m_picture, kMargin, baseline, line, m_title.size, ink::kText);
        baseline += kTitleHeight;
    }
    PaintLines(m_subtitle, kMargin, kSubtitleBaseline + BelowTitle(), ink::kFaintText);
}

void CPictureSheet::PaintLines(const std::vector<std::string>& lines, int left, int baseline,
                               SColour colour) {
    for (const std::string& line : lines) {
        PaintText(m_picture, left, baseline, line, kTextSize, colour);
        baseline += kTextHeight;
    }
}

CPicture CPictureSheet::Finish(const CCellPainter& painter, const SPaintedValues& painted,
                               std::vector<SLegendNote> notes) && {
    PaintScale(painter, painted);
    std::vector<SLegendNote> all = NotesOf(painted);
    all.insert(all.begin(), notes.begin(), notes.end());
    PaintNotes(all);
    m_picture.Lengthen(kMargin, ink::kPaper);
    return std::move(m_picture);
}

void CPictureSheet::PaintScale(const CCellPainter& painter, const SPaintedValues& painted) {
    const auto lines = WrappedText(ScaleText(m_quantity, painted), kTextSize, InnerWidth());
    const int further = kTextHeight * (static_cast<int>(lines.size()) - 1);
    const int legendTop = m_picture.Height();
    m_picture.Lengthen(kLegendHeight + further, ink::kPaper);
    PaintLines(lines, kMargin, legendTop + kLegendGap, ink::kText);
    const SPictureRect scale{kMargin, legendTop + kLegendGap + further + kScaleGap,
                             std::min(InnerWidth(), kWidestScale), kScaleHeight};
    for (int x = 0; x < scale.width; ++x) {
        const double place = (x + 0.5) / scale.width;
        m_picture.Fill({scale.left + x, scale.top, 1, scale.height},
                       painted.isLight ? CCellPainter::LightColour(place)
                                       : painter.ScaleColour(place));
    }
    FramePlot(m_picture, scale);
    PaintTicks(painted.range, scale.top + scale.height, scale.width);
}

void CPictureSheet::PaintTicks(const SValueRange& range, int top, int width) {
    for (const SScaleTick& tick : ScaleTicks(range, width, kTextSize)) {
        const int x = kMargin + TickPlace(tick, range, width);
        m_picture.Fill({x, top, 1, kTickLength}, ink::kText);
        const int textWidth = TextWidth(tick.text, kTextSize);
        const int left =
            std::clamp(x - textWidth / 2, kMargin / 2,
                       std::max(m_picture.Width() - kMargin / 2 - textWidth, kMargin / 2));
        PaintText(m_picture, left, top + kTickLength + kTickText - 2, tick.text, kTextSize,
                  ink::kText);
    }
}

void CPictureSheet::PaintNotes(const std::vector<SLegendNote>& notes) {
    int right = m_picture.Width(); // the first begins a line
    int baseline = 0;
    for (const SLegendNote& note : notes) {
        const auto lines = WrappedText(note.text, kTextSize, InnerWidth() - kSwatch - kSwatchGap);
        const int width = kSwatch + kSwatchGap + TextWidth(lines.front(), kTextSize);
        if (lines.size() > 1 || right + kNoteGap + width > m_picture.Width() - kMargin) {
            m_picture.Lengthen(kTextHeight * static_cast<int>(lines.size()) + 4, ink::kPaper);
            right = kMargin - kNoteGap;
            baseline = m_picture.Height() - 4 - kTextHeight * (static_cast<int>(lines.size()) - 1);
        }
        const int left = right + kNoteGap;
        const SPictureRect swatch{left, baseline - kSwatch + 2, kSwatch, kSwatch};
        if (note.paint != nullptr)
            note.paint(m_picture, swatch);
        else
            m_picture.Fill(swatch, note.colour);
        m_picture.Frame(swatch, ink::kFrame);
        PaintLines(lines, left + kSwatch + kSwatchGap, baseline, ink::kText);
        right = lines.size() > 1 ? m_picture.Width() : left + width; // the next begins a line
    }
}

void FramePlot(CPicture& picture, const SPictureRect& plot) {
    picture.Frame({plot.left - 1, plot.top - 1, plot.width + 2, plot.height + 2}, ink::kFrame);
}

} // namespace trevolt
