// Pictures of coefficient maps: of one, of one before and after a turn, and of a wall of cabinets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/inspection/CellPainter.h"
#include "app/inspection/CoefPixels.h"
#include "app/inspection/ValuePicture.h"

namespace trevolt {

enum class EMapView {
    Brightness, ///< of white: 0.2126 red + 0.7152 green + 0.0722 blue of `White`
    White,      ///< the colour that a pixel shows for white: the matrix times (1, 1, 1)
    Coefficient ///< one value, of the matrix or of the virtual green
};

/// What of a map is shown.
struct SMapView {
    EMapView what = EMapView::Brightness;
    std::size_t coefficient = 0; ///< its place in a map's element, as in `kMapValueNames`
};

/// The view's values of pixels, of which there are some and which must outlive them.
SValueRows MapRows(const CCoefPixels& pixels, const SMapView& view);

/// The view in plain words, as "Brightness of white".
std::string MapViewText(const SMapView& view);

struct SMapPictureStyle {
    SMapView view;
    EColourScale scale = EColourScale::FalseColour; ///< of `White` none
    std::optional<SValueRange> range;               ///< at the scale's ends
    int width = kPictureWidth; ///< of the picture at most, at least 200, or `kNarrowestTurn`
    std::size_t jobs = 1;      ///< threads
};

/// What a picture says of its file.
struct SMapPictureText {
    std::string name;
    std::string kind; ///< "9fcoef"
};

/// Of a picture with a turn; a narrower one has no room for both sides.
inline constexpr int kNarrowestTurn = 400;

/// A map, of which there are pixels. With a turn's code (1 to 3) both the map and what the turn makes of it,
/// side by side, and in both a mark at the corner that is the left top before. Throws
/// std::bad_alloc.
SValuePicture PaintMap(const CCoefPixels& map, const SMapPictureText& text,
                       const SMapPictureStyle& style, std::uint32_t turnCode = 0);

/// Many maps in one picture, as cabinets make a wall: rows of equal places, at one scale.
class CWallPicture {
  public:
    struct SCabinet {
        std::string name;
        PixelSize size; ///< 0 × 0 where it is not known
    };

    /// The cabinets in their order, row by row; no more than columns × rows, which may leave places
    /// free.
    CWallPicture(std::vector<SCabinet> cabinets, int columns, int rows, SMapPictureStyle style);
    ~CWallPicture();
    CWallPicture(const CWallPicture&) = delete;
    CWallPicture& operator=(const CWallPicture&) = delete;

    /// Takes what the wall shows of a cabinet's map, which has the size that was told. One whose map
    /// is not taken is shown as missing. Answers what was found in it.
    SPaintedValues Take(std::size_t cabinet, const CCoefPixels& map);

    /// `unplaced` cabinets beside them cannot be shown, and have no place.
    SValuePicture Paint(const std::string& title, std::size_t unplaced = 0) const;

    /// How many there are and are shown, as "2 of 3 cabinets".
    static std::string CabinetsText(std::size_t cabinets, std::size_t missing);

  private:
    class CLayout;
    std::vector<SCabinet> m_cabinets;
    SMapPictureStyle m_style;
    std::unique_ptr<const CLayout> m_layout;
    std::vector<SValueCells> m_cells; ///< of what the maps gave; without a cell where none did
};

} // namespace trevolt
