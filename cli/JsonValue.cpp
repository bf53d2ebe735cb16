#include "cli/JsonValue.h"

#include <algorithm>

#include <nlohmann/json.hpp>

namespace trevolt {
namespace {

/// By the library, whose single values take no memory as they end.
template <class Value>
std::string ScalarText(const Value& value) {
    return nlohmann::json(value).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace

CJson::CJson(std::nullptr_t) : m_text("null") {}

CJson::CJson(bool value) : m_text(value ? "true" : "false") {}

CJson::CJson(double number) : m_text(ScalarText(number)) {}

CJson::CJson(std::string_view text) : m_text(ScalarText(text)) {}

CJson::CJson(const std::vector<std::string>& texts)
    : m_kind(EKind::Array), m_values(texts.begin(), texts.end()) {}

CJson::CJson(Members members) : m_kind(EKind::Object) { Set(members); }

CJson CJson::Array(std::initializer_list<CJson> elements) {
    CJson array;
    array.m_kind = EKind::Array;
    array.m_values = elements;
    return array;
}

void CJson::Add(CJson element) { m_values.push_back(std::move(element)); }

void CJson::Set(Members members) {
    for (const auto& [name, value] : members)
        (*this)[name] = value;
}

CJson& CJson::operator[](std::string_view name) {
    std::string text = ScalarText(name);
    const auto found = std::find(m_names.begin(), m_names.end(), text);
    if (found != m_names.end())
        return m_values[static_cast<std::size_t>(found - m_names.begin())];
    m_names.push_back(std::move(text));
    return m_values.emplace_back();
}

std::string CJson::Text() const {
    std::string text;
    AppendTo(text);
    return text;
}

void CJson::AppendTo(std::string& text) const {
    if (m_kind == EKind::Scalar) {
        text += m_text;
        return;
    }
    const bool isObject = m_kind == EKind::Object;
    text += isObject ? '{' : '[';
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        if (i > 0)
            text += ',';
        if (isObject)
            text += m_names[i] + ':';
        m_values[i].AppendTo(text);
    }
    text += isObject ? '}' : ']';
}

} // namespace trevolt
