#include "cli/JsonValue.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include <fmt/format.h>

#include "common/ShownCharacters.h"

namespace trevolt {
namespace {

constexpr const char* kNoCharacter = "\uFFFD";

struct SEscape {
    char character;
    const char* text;
};
constexpr std::array kEscapes{SEscape{'"', "\\\""}, SEscape{'\\', "\\\\"}, SEscape{'\b', "\\b"},
                              SEscape{'\f', "\\f"}, SEscape{'\n', "\\n"},  SEscape{'\r', "\\r"},
                              SEscape{'\t', "\\t"}};

/// A number's text, or that of one character.
using ShortText = std::array<char, 32>;

template <class... Values>
std::string_view FormatTo(ShortText& text, fmt::format_string<Values...> form, Values&&... values) {
    const auto end =
        fmt::format_to_n(text.data(), text.size(), form, std::forward<Values>(values)...);
    return {text.data(), end.size};
}

/// The shortest that reads back, and as what it is.
std::string_view FloatText(double number, ShortText& text) {
    if (!std::isfinite(number))
        return "null";
    const std::string_view shortest = FormatTo(text, "{}", number);
    if (shortest.find_first_of(".e") != std::string_view::npos)
        return shortest;
    return FormatTo(text, "{}.0", number);
}

/// The character of so many bytes that `rest` begins with; no character has none.
std::string_view CharacterText(std::string_view rest, std::size_t bytes, ShortText& text) {
    if (bytes == 0)
        return kNoCharacter;
    const auto* const escape = std::find_if(
        kEscapes.begin(), kEscapes.end(), [&](const SEscape& e) { return e.character == rest[0]; });
    if (escape != kEscapes.end())
        return escape->text;
    const auto byte = static_cast<unsigned char>(rest[0]);
    return byte < 0x20 ? FormatTo(text, "\\u{:04x}", byte) : rest.substr(0, bytes);
}

} // namespace

/// How each of a value's forms is written.
struct CJsonLine::SPut {
    CJsonLine& line;

    void operator()(std::nullptr_t) const { line.m_pieces.Add("null"); }
    void operator()(bool value) const { line.m_pieces.Add(value ? "true" : "false"); }
    void operator()(double number) const {
        ShortText text{};
        line.m_pieces.Add(FloatText(number, text));
    }
    template <std::integral Number>
    void operator()(Number number) const {
        ShortText text{};
        line.m_pieces.Add(FormatTo(text, "{}", number));
    }
    void operator()(std::string_view text) const { line.PutText(text); }
    void operator()(const std::vector<std::string>* texts) const { PutAll(*texts); }
    void operator()(JsonMembers members) const { line.PutObject(members); }
    void operator()(const CJson::SElements& elements) const { PutAll(elements.list); }
    void operator()(const CJson::SMade& made) const { made.put(line, made.whole); }

    template <class Elements>
    void PutAll(const Elements& elements) const {
        CJsonElements array(line);
        for (const auto& element : elements)
            array.Add(element);
        array.End();
    }
};

void CJsonLine::Put(const CJson& value) { std::visit(SPut{*this}, value.m_value); }

void CJsonLine::PutObject(JsonMembers members, JsonMembers more) {
    const char* separator = "";
    m_pieces.Add("{");
    for (const JsonMembers part : {members, more})
        for (const SJsonMember& member : part) {
            m_pieces.Add(std::exchange(separator, ","));
            PutText(member.name);
            m_pieces.Add(":");
            Put(member.value);
        }
    m_pieces.Add("}");
}

void CJsonLine::End() {
    m_pieces.Add("\n");
    m_pieces.End();
}

void CJsonLine::PutText(std::string_view text) {
    ShortText escaped{};
    m_pieces.Add("\"");
    while (!text.empty()) {
        const std::size_t bytes = CharacterBytes(text);
        m_pieces.Add(CharacterText(text, bytes, escaped));
        text.remove_prefix(std::max<std::size_t>(bytes, 1));
    }
    m_pieces.Add("\"");
}

void CJsonElements::Add(const CJson& element) {
    m_line.m_pieces.Add(std::exchange(m_before, ","));
    m_line.Put(element);
}

void CJsonElements::End() {
    if (*m_before == '[') // of no element
        m_line.m_pieces.Add(m_before);
    m_line.m_pieces.Add("]");
}

} // namespace trevolt
