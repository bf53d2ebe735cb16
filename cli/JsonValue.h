// A value of JSON that is put together piece by piece. To drop one takes no memory, so that refused
// memory ends a command as all else that fails does: the containers of JSON libraries may take some as
// they end, where a refusal ends the program.
#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace trevolt {

class CJson {
  public:
    using Members = std::initializer_list<std::pair<std::string, CJson>>;

    // What is told of in an object is written as it is.
    // NOLINTBEGIN(*-explicit-*)
    CJson(std::nullptr_t = nullptr);
    CJson(bool value);
    template <std::integral Number>
    CJson(Number number) : m_text(std::to_string(number)) {}
    /// Null for what is not finite.
    CJson(double number);
    /// What is no UTF-8 in it becomes U+FFFD.
    CJson(std::string_view text);
    CJson(const std::string& text) : CJson(std::string_view(text)) {}
    CJson(const char* text) : CJson(std::string_view(text)) {}
    CJson(const std::vector<std::string>& texts);
    /// An object, whose members stay in the order in which they are given.
    CJson(Members members);
    // NOLINTEND(*-explicit-*)

    static CJson Array(std::initializer_list<CJson> elements = {});

    /// Puts an element behind those of an array.
    void Add(CJson element);

    /// Puts members behind those of an object, or in the place of those of their names.
    void Set(Members members);
    /// The member of that name, which is null where it is new.
    CJson& operator[](std::string_view name);

    /// The value in one line.
    std::string Text() const;

  private:
    enum class EKind : std::uint8_t { Scalar, Array, Object };

    void AppendTo(std::string& text) const;

    EKind m_kind = EKind::Scalar;
    std::string m_text;               ///< of a scalar
    std::vector<std::string> m_names; ///< of an object's values, as texts of JSON
    std::vector<CJson> m_values;
};

} // namespace trevolt
