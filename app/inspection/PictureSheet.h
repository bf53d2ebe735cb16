// The sheet that plots stand on: a title above, the scale's legend below.
#pragma once

#include <string>
#include <vector>

#include "app/inspection/CellPainter.h"
#include "app/inspection/Picture.h"

namespace trevolt {

inline constexpr int kPictureWidth = 1600; ///< of a sheet that is not told another

namespace ink {
inline constexpr SColour kPaper{255, 255, 255};
inline constexpr SColour kText{24, 26, 30};
inline constexpr SColour kFaintText{88, 92, 100};
inline constexpr SColour kFrame{120, 124, 132};
inline constexpr SColour kMark{214, 84, 0};
inline constexpr SColour kEmpty{232, 234, 238};
inline constexpr SColour kHatch{196, 199, 206};
} // namespace ink

inline constexpr int kTextSize = 14;   ///< of all but the title
inline constexpr int kTextHeight = 20; ///< from line to line

struct SSheetText {
    std::string title;
    std::string subtitle;
    std::string quantity; ///< what the legend's numbers are
};

/// What a legend says beside its scale.
struct SLegendNote {
    SColour colour;
    std::string text;
    /// Paints the sample of what the picture shows in a pattern, and not in the colour.
    void (*paint)(CPicture& picture, const SPictureRect& sample) = nullptr;
};

class CPictureSheet {
  public:
    /// The largest content of a sheet that is `width` wide: five eighths of that high.
    static PixelSize RoomOf(int width);

    /// A sheet for content of a size; as wide as the content is and its own texts want, whose lines are
    /// broken, and the title made smaller, so that it is no wider than `width`.
    CPictureSheet(const SSheetText& text, int contentWidth, int contentHeight, int width);

    CPicture& Picture() { return m_picture; }
    /// Where the content begins.
    int Left() const { return kMargin; }
    int Top() const;

    /// Adds the legend, notes of the values beyond the scale and those given, and gives the picture
    /// away.
    CPicture Finish(const CCellPainter& painter, const SPaintedValues& painted,
                    std::vector<SLegendNote> notes = {}) &&;

  private:
    static constexpr int kMargin = 28;
    static constexpr int kHeaderHeight = 84;

    void PaintHeader();
    /// Lines below each other, the first on `baseline`.
    void PaintLines(const std::vector<std::string>& lines, int left, int baseline, SColour colour);
    /// Where the lines behind the title's first begin.
    int BelowTitle() const;
    void PaintScale(const CCellPainter& painter, const SPaintedValues& painted);
    void PaintTicks(const SValueRange& range, int top, int width);
    void PaintNotes(const std::vector<SLegendNote>& notes);
    /// The width between the margins.
    static int InnerWidth(int contentWidth, int width);
    int InnerWidth() const { return m_picture.Width() - 2 * kMargin; }

    /// Text in lines of one size.
    struct SHeading {
        int size;
        std::vector<std::string> lines;
    };
    /// A title as large as leaves it whole in few lines.
    static SHeading TitleFor(const std::string& text, int width);

    SHeading m_title;
    std::vector<std::string> m_subtitle; ///< its lines
    std::string m_quantity;
    CPicture m_picture;
};

/// A line around the outside of a plot.
void FramePlot(CPicture& picture, const SPictureRect& plot);

} // namespace trevolt
