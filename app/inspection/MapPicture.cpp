#include "app/inspection/MapPicture.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include <fmt/format.h>

#include "app/inspection/Lettering.h"
#include "app/inspection/MapValueNames.h"
#include "app/inspection/PictureSheet.h"
#include "app/rotation/ElementForms.h"

namespace trevolt {
namespace {

/// Red, green and blue by what they are to the brightness of white.
constexpr std::array kBrightnessShares{0.2126F, 0.7152F, 0.0722F};

std::array<float, 3> WhiteOf(const SMatrixCoef& pixel) {
    const auto& m = pixel.m;
    return {m[0] + m[1] + m[2], m[3] + m[4] + m[5], m[6] + m[7] + m[8]};
}

float BrightnessOf(const SMatrixCoef& pixel) {
    const auto [red, green, blue] = WhiteOf(pixel);
    return kBrightnessShares[0] * red + kBrightnessShares[1] * green + kBrightnessShares[2] * blue;
}

/// Calls `take` with each pixel of a row, from the left.
template <class Take>
void ForRow(const CCoefPixels& pixels, std::size_t y, const Take& take) {
    constexpr std::uint32_t kRunPixels = 256; // they fit the cache
    std::array<SMatrixCoef, kRunPixels> scratch;
    const auto width = static_cast<std::uint32_t>(pixels.Size().width);
    for (std::uint32_t x = 0; x < width; x += kRunPixels) {
        const std::uint32_t count = std::min(kRunPixels, width - x);
        const SMatrixCoef* const run =
            pixels.Run(x, static_cast<std::uint32_t>(y), count, scratch.data());
        std::for_each(run, run + count, take);
    }
}

SValueCells CellsOf(const CCoefPixels& map, const SMapPictureStyle& style,
                    const SPlotShape& shape) {
    return AverageByArea(MapRows(map, style.view), static_cast<std::size_t>(shape.cellsWide),
                         static_cast<std::size_t>(shape.cellsHigh), style.jobs);
}

std::string SizeText(const PixelSize& size) {
    return fmt::format("{} × {}", size.width, size.height);
}

/// The scale's ends for values; light is shown from none on.
SValueRange RangeOfStyle(const SMapPictureStyle& style, std::span<const float> values) {
    return ScaleRange({style.scale, style.range, style.view.what == EMapView::White}, values);
}

} // namespace

SValueRows MapRows(const CCoefPixels& pixels, const SMapView& view) {
    const PixelSize size = pixels.Size();
    SValueRows rows{
        static_cast<std::size_t>(size.width), static_cast<std::size_t>(size.height), 1, {}};
    switch (view.what) {
    case EMapView::White:
        rows.channels = 3;
        rows.read = [pixels](std::size_t y, float* row) {
            ForRow(pixels, y, [&row](const SMatrixCoef& pixel) {
                const std::array<float, 3> white = WhiteOf(pixel);
                row = std::copy(white.begin(), white.end(), row);
            });
        };
        break;
    case EMapView::Coefficient:
        rows.read = [pixels, k = view.coefficient](std::size_t y, float* row) {
            ForRow(pixels, y, [&](const SMatrixCoef& pixel) { *row++ = pixel.m[k]; });
        };
        break;
    case EMapView::Brightness:
        rows.read = [pixels](std::size_t y, float* row) {
            ForRow(pixels, y, [&row](const SMatrixCoef& pixel) { *row++ = BrightnessOf(pixel); });
        };
        break;
    }
    return rows;
}

std::string MapViewText(const SMapView& view) {
    switch (view.what) {
    case EMapView::White:
        return "Colour for white";
    case EMapView::Coefficient:
        return fmt::format("{} {}",
                           kWholeMatrix.test(view.coefficient) ? "Coefficient" : "Virtual green",
                           kMapValueNames[view.coefficient]);
    case EMapView::Brightness:
        break;
    }
    return "Brightness of white";
}

namespace {

std::string LegendText(const SMapView& view) {
    return view.what == EMapView::White ? "Red, green and blue light" : MapViewText(view);
}

/// Two plots of the same scale with the turn between them.
class CTurnPicture {
  public:
    CTurnPicture(const CCoefPixels& map, const SMapPictureText& text, const SMapPictureStyle& style,
                 std::uint32_t code)
        : m_style(style),
          m_code(code),
          m_size(map.Size()),
          m_turnedSize(CQuarterTurn(code, m_size.width, m_size.height).TurnedSize()),
          m_shape(PlotShape(m_size, Scale(), kThinnestPlot)),
          m_cells(CellsOf(map, style, m_shape)),
          m_sheet({text.name,
                   fmt::format("{} · turned by {}° clockwise · {}", text.kind, 90 * code,
                               MapViewText(style.view)),
                   LegendText(style.view)},
                  m_shape.Width() + kGap + TurnedShape().Width(), ContentHeight(), style.width) {}

    SValuePicture Paint() && {
        const auto found = RangeOf(m_cells);
        CCellPainter painter(m_style.scale, RangeOfStyle(m_style, m_cells.values), m_style.jobs);
        const SPlotShape turnedShape = TurnedShape();
        const int left = m_sheet.Left();
        const int turnedLeft = left + m_shape.Width() + kGap;
        PaintPlot(painter, left, "Before", m_size, m_cells, m_shape);
        PaintPlot(painter, turnedLeft, "After", m_turnedSize, TurnedCells(m_cells, m_code),
                  turnedShape);
        const PixelPosition corner =
            CQuarterTurn(m_code, m_shape.Width(), m_shape.Height()).Turned(0, 0);
        MarkCorner(left, m_shape, false, false);
        MarkCorner(turnedLeft, turnedShape, corner.x > 0, corner.y > 0);
        PaintTurn(left + m_shape.Width());
        const SPaintedValues painted = painter.Painted(found, m_cells.notFinite);
        return {std::move(m_sheet).Finish(
                    painter, painted, {{ink::kMark, "the same corner: left top before the turn"}}),
                painted};
    }

  private:
    static constexpr int kGap = 132;
    static constexpr int kCaptionHeight = 28;
    static constexpr int kMarkWidth = 5;
    static constexpr int kMarkLength = 30;
    static constexpr int kTurnHeight = 100;

    double Scale() const {
        const PixelSize room = CPictureSheet::RoomOf(m_style.width);
        const PixelSize side{m_size.width + m_turnedSize.width,
                             std::max(m_size.height, m_turnedSize.height)};
        return PlotScale(side, {std::max<std::int64_t>(room.width - kGap, 2),
                                std::max<std::int64_t>(room.height - kCaptionHeight, 1)});
    }
    SPlotShape TurnedShape() const {
        if (m_code == 2)
            return m_shape;
        return {m_shape.cellsHigh, m_shape.cellsWide, m_shape.cellHeight, m_shape.cellWidth};
    }
    int ContentHeight() const {
        return kCaptionHeight + std::max({m_shape.Height(), TurnedShape().Height(), kTurnHeight});
    }
    int PlotTop() const { return m_sheet.Top() + kCaptionHeight; }

    void PaintPlot(CCellPainter& painter, int left, const char* caption, const PixelSize& size,
                   const SValueCells& cells, const SPlotShape& shape) {
        CPicture& picture = m_sheet.Picture();
        const std::string text = fmt::format("{} · {}", caption, SizeText(size));
        const int lastLeft = picture.Width() - m_sheet.Left() - TextWidth(text, kTextSize);
        PaintText(picture, std::min(left, lastLeft), m_sheet.Top() + kTextSize, text, kTextSize,
                  ink::kText);
        painter.Paint(picture, left, PlotTop(), cells, shape);
        FramePlot(picture, {left, PlotTop(), shape.Width(), shape.Height()});
    }

    /// An angle around the outside of a plot's corner.
    void MarkCorner(int left, const SPlotShape& shape, bool isRight, bool isBottom) {
        const int length = std::min({kMarkLength, shape.Width(), shape.Height()});
        const int x = isRight ? left + shape.Width() + 1 : left - 1 - kMarkWidth;
        const int y = isBottom ? PlotTop() + shape.Height() + 1 : PlotTop() - 1 - kMarkWidth;
        const int barLeft = isRight ? x + kMarkWidth - length : x;
        const int barTop = isBottom ? y + kMarkWidth - length : y;
        m_sheet.Picture().Fill({barLeft, y, length, kMarkWidth}, ink::kMark);
        m_sheet.Picture().Fill({x, barTop, kMarkWidth, length}, ink::kMark);
    }

    void PaintCentred(int left, int baseline, const std::string& text, int size, SColour colour) {
        PaintText(m_sheet.Picture(), left + (kGap - TextWidth(text, size)) / 2, baseline, text,
                  size, colour);
    }

    void PaintTurn(int left) {
        const int middle = PlotTop() + std::max(m_shape.Height(), kTurnHeight) / 2;
        PaintCentred(left, middle - 22, fmt::format("{}°", 90 * m_code), 22, ink::kText);
        PaintCentred(left, middle + 18, "\u2192", 52, ink::kMark);
        PaintCentred(left, middle + 40, "clockwise", kTextSize, ink::kFaintText);
    }

    const SMapPictureStyle& m_style;
    std::uint32_t m_code;
    PixelSize m_size;
    PixelSize m_turnedSize;
    SPlotShape m_shape;
    SValueCells m_cells;
    CPictureSheet m_sheet;
};

} // namespace

SValuePicture PaintMap(const CCoefPixels& map, const SMapPictureText& text,
                       const SMapPictureStyle& style, std::uint32_t turnCode) {
    if (turnCode != 0)
        return CTurnPicture(map, text, style, turnCode).Paint();
    const PixelSize size = map.Size();
    const SPlotShape shape =
        PlotShape(size, PlotScale(size, CPictureSheet::RoomOf(style.width)), kThinnestPlot);
    const SValueCells cells = CellsOf(map, style, shape);
    const auto found = RangeOf(cells);
    const SSheetText sheetText{
        text.name, fmt::format("{} · {} · {}", SizeText(size), text.kind, MapViewText(style.view)),
        LegendText(style.view)};
    CCellPainter painter(style.scale, RangeOfStyle(style, cells.values), style.jobs);
    return PaintPlotSheet(sheetText, cells, shape, painter, found, style.width);
}

/// Places of equal size with thin gaps between them.
class CWallPicture::CLayout {
  public:
    static constexpr int kGap = 2;

    CLayout(const std::vector<SCabinet>& cabinets, int columns, int rows, int width)
        : m_columns(columns), m_rows(rows) {
        PixelSize largest{1, 1};
        for (const SCabinet& cabinet : cabinets)
            largest = {std::max(largest.width, cabinet.size.width),
                       std::max(largest.height, cabinet.size.height)};
        const PixelSize room = CPictureSheet::RoomOf(width);
        m_scale = PlotScale(largest, {SideOf(room.width, columns), SideOf(room.height, rows)});
        const SPlotShape place = PlotShape(largest, m_scale);
        m_width = std::max(place.Width(), kSmallestPlace);
        m_height = std::max(place.Height(), kSmallestPlace);
    }

    int Width() const { return m_columns * (m_width + kGap) - kGap; }
    int Height() const { return m_rows * (m_height + kGap) - kGap; }
    int Places() const { return m_columns * m_rows; }
    SPictureRect Place(int number) const {
        return {number % m_columns * (m_width + kGap), number / m_columns * (m_height + kGap),
                m_width, m_height};
    }
    SPlotShape ShapeOf(const PixelSize& size) const { return PlotShape(size, m_scale); }

  private:
    static constexpr int kSmallestPlace = 4;

    /// Of each of so many places beside each other.
    static std::int64_t SideOf(std::int64_t room, std::int64_t places) {
        return std::max<std::int64_t>((room - kGap * (places - 1)) / places, 1);
    }

    int m_columns;
    int m_rows;
    double m_scale = 1;
    int m_width = 1;
    int m_height = 1;
};

CWallPicture::CWallPicture(std::vector<SCabinet> cabinets, int columns, int rows,
                           SMapPictureStyle style)
    : m_cabinets(std::move(cabinets)),
      m_style(style),
      m_layout(std::make_unique<const CLayout>(m_cabinets, columns, rows, style.width)),
      m_cells(m_cabinets.size()) {}

CWallPicture::~CWallPicture() = default;

SPaintedValues CWallPicture::Take(std::size_t cabinet, const CCoefPixels& map) {
    SValueCells& cells = m_cells[cabinet];
    cells = CellsOf(map, m_style, m_layout->ShapeOf(map.Size()));
    const auto found = RangeOf(cells);
    return {found, {}, cells.width * cells.height, 0, 0, cells.notFinite, cells.channels == 3};
}

namespace {

constexpr int kNameSize = 12;
constexpr int kNamePlate = 18;
constexpr int kNameAside = 5;

/// A cabinet's name as there is room for it: its extension goes before its letters do.
std::string NameFor(const std::string& name, int width) {
    if (TextWidth(name, kNameSize) <= width)
        return name;
    const std::string stem = name.substr(0, name.rfind('.'));
    return ShortenedText(stem.empty() ? name : stem, kNameSize, width);
}

/// The name in a place's left bottom, where there is room for it.
void PaintName(CPicture& picture, const SPictureRect& place, const std::string& name) {
    constexpr int kLeastWidth = 40;
    if (place.height < 2 * kNamePlate || place.width < kLeastWidth)
        return;
    const std::string shown = NameFor(name, place.width - 2 * kNameAside);
    const int top = place.top + place.height - kNamePlate;
    picture.MixFill({place.left, top, TextWidth(shown, kNameSize) + 2 * kNameAside, kNamePlate},
                    ink::kPaper, 215);
    PaintText(picture, place.left + kNameAside, top + 13, shown, kNameSize, ink::kText);
}

/// Where no cabinet has pixels.
void PaintNothing(CPicture& picture, const SPictureRect& place) {
    constexpr int kStep = 8; // between the lines
    picture.Fill(place, ink::kEmpty);
    for (int y = 0; y < place.height; ++y)
        for (int x = (place.height - y) % kStep; x < place.width; x += kStep)
            picture.Set(place.left + x, place.top + y, ink::kHatch);
}

/// A place whose cabinet could not be read.
void PaintMissing(CPicture& picture, const SPictureRect& place) {
    picture.Fill(place, ink::kEmpty);
    const int length = std::max(place.width, place.height);
    for (int i = 0; i < length; ++i) {
        const int x = i * (place.width - 1) / length;
        const int y = i * (place.height - 1) / length;
        for (int thick = 0; thick < std::min(2, place.height - y); ++thick) {
            picture.Set(place.left + x, place.top + y + thick, ink::kFrame);
            picture.Set(place.left + place.width - 1 - x, place.top + y + thick, ink::kFrame);
        }
    }
}

} // namespace

std::string CWallPicture::CabinetsText(std::size_t cabinets, std::size_t missing) {
    const std::string shown = missing == 0 ? "" : fmt::format("{} of ", cabinets - missing);
    return fmt::format("{}{} {}", shown, cabinets, cabinets == 1 ? "cabinet" : "cabinets");
}

SValuePicture CWallPicture::Paint(const std::string& title, std::size_t unplaced) const {
    std::optional<SValueRange> found;
    std::uint64_t notFinite = 0;
    std::vector<float> values;
    for (const SValueCells& cells : m_cells) {
        found = JoinedRange(found, RangeOf(cells));
        notFinite += cells.notFinite;
        values.insert(values.end(), cells.values.begin(), cells.values.end());
    }
    CCellPainter painter(m_style.scale, RangeOfStyle(m_style, values), m_style.jobs);
    const auto missing = static_cast<std::size_t>(
        std::count_if(m_cells.begin(), m_cells.end(),
                      [](const SValueCells& cells) { return cells.values.empty(); }));
    CPictureSheet sheet(
        {title,
         fmt::format("{} · {}", CabinetsText(m_cabinets.size() + unplaced, missing + unplaced),
                     MapViewText(m_style.view)),
         LegendText(m_style.view)},
        m_layout->Width(), m_layout->Height(), m_style.width);
    bool isAnyFree = false;
    for (int i = 0; i < m_layout->Places(); ++i) {
        SPictureRect place = m_layout->Place(i);
        place.left += sheet.Left();
        place.top += sheet.Top();
        const auto number = static_cast<std::size_t>(i);
        if (number >= m_cabinets.size()) {
            PaintNothing(sheet.Picture(), place);
            isAnyFree = true;
            continue;
        }
        const SValueCells& cells = m_cells[number];
        if (cells.values.empty()) {
            PaintMissing(sheet.Picture(), place);
        } else {
            const SPlotShape shape = m_layout->ShapeOf(m_cabinets[number].size);
            if (shape.Width() < place.width || shape.Height() < place.height) {
                PaintNothing(sheet.Picture(), place);
                isAnyFree = true;
            }
            painter.Paint(sheet.Picture(), place.left, place.top, cells, shape);
        }
        PaintName(sheet.Picture(), place, m_cabinets[number].name);
    }
    FramePlot(sheet.Picture(), {sheet.Left(), sheet.Top(), m_layout->Width(), m_layout->Height()});
    std::vector<SLegendNote> notes;
    if (missing > 0)
        notes.push_back(
            {ink::kEmpty, fmt::format("crossed out: {} not shown", missing), PaintMissing});
    if (isAnyFree)
        notes.push_back({ink::kEmpty, "hatched: no pixels", PaintNothing});
    const SPaintedValues painted = painter.Painted(found, notFinite);
    SValuePicture picture{std::move(sheet).Finish(painter, painted, notes), painted};
    picture.values.isLight = m_style.view.what == EMapView::White;
    return picture;
}

} // namespace trevolt
