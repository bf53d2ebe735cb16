// The window's colours, by what the user has set for the system.
#pragma once

#include <cstdint>
#include <optional>

namespace trevolt {

/// Colours as 0xRRGGBB.
struct SWindowColours {
    std::uint32_t window;
    std::uint32_t text;
    std::uint32_t disabledText;
    std::uint32_t field; ///< what stands behind the text of edits and boxes
    std::uint32_t button;
    std::uint32_t pressedButton;
    std::uint32_t buttonFrame;
    std::uint32_t progress;
    friend bool operator==(const SWindowColours&, const SWindowColours&) = default;
};

/// The colours that the window draws itself with in place of the system's: dark ones where the system
/// asks programs for them. Nothing where the system's own colours hold: where it does not ask, and
/// always where the user has chosen a high contrast. `appsUseLightTheme` is the system's registry
/// value of that name, 0 for dark, nothing where it has none.
std::optional<SWindowColours> OwnColours(std::optional<std::uint32_t> appsUseLightTheme,
                                         bool isHighContrast);

} // namespace trevolt
