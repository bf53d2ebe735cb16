#include "app/dialog/WindowColours.h"

namespace trevolt {
namespace {

constexpr SWindowColours kDark{.window = 0x202020,
                               .text = 0xF0F0F0,
                               .disabledText = 0x8C8C8C,
                               .field = 0x2D2D2D,
                               .button = 0x383838,
                               .pressedButton = 0x505050,
                               .buttonFrame = 0x808080,
                               .progress = 0x4CA6FF};

} // namespace

std::optional<SWindowColours> OwnColours(std::optional<std::uint32_t> appsUseLightTheme,
                                         bool isHighContrast) {
    constexpr std::uint32_t kAppsAreDark = 0;
    if (isHighContrast || appsUseLightTheme != kAppsAreDark)
        return std::nullopt;
    return kDark;
}

} // namespace trevolt
