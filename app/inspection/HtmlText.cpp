#include "app/inspection/HtmlText.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "common/ShownCharacters.h"

namespace trevolt {
namespace {

struct SEntity {
    char character;
    std::string_view html;
};
constexpr std::array kEntities{SEntity{'&', "&amp;"}, SEntity{'<', "&lt;"}, SEntity{'>', "&gt;"},
                               SEntity{'"', "&quot;"}, SEntity{'\'', "&#39;"}};

constexpr std::string_view kDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The 24 bits of up to three bytes.
std::uint32_t GroupOf(std::string_view bytes) {
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < 3; ++i)
        group = group << 8U | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U);
    return group;
}

} // namespace

std::string Html(std::string_view text) {
    std::string html;
    for (const char c : Shown(text)) {
        const auto* const entity =
            std::find_if(kEntities.begin(), kEntities.end(),
                         [c](const SEntity& one) { return one.character == c; });
        if (entity == kEntities.end())
            html += c;
        else
            html += entity->html;
    }
    return html;
}

std::string Base64(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (; !bytes.empty(); bytes.remove_prefix(std::min<std::size_t>(bytes.size(), 3))) {
        const std::uint32_t group = GroupOf(bytes);
        for (std::size_t i = 0; i < 4; ++i)
            text += i <= bytes.size() ? kDigits[group >> (18 - 6 * i) & 0x3FU] : '=';
    }
    return text;
}

} // namespace trevolt
