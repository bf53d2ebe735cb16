// Values of JSON, and their way into a line of text. Neither takes memory: what a command has done it
// tells also where none is left.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "cli/TextPieces.h"

namespace trevolt {

class CJson;
struct SJsonMember;
using JsonMembers = std::initializer_list<SJsonMember>;

/// Where values are written to, one behind the other.
class CJsonLine {
  public:
    explicit CJsonLine(std::FILE* stream) : m_pieces(stream) {}

    /// Throws what fmt::print throws, and so do all that write.
    void Put(const CJson& value);
    /// An object of these members.
    void PutObject(JsonMembers members, JsonMembers more = {});
    /// The line's end.
    void End();

  private:
    friend class CJsonElements;
    struct SPut;

    void PutText(std::string_view text);

    CTextPieces m_pieces;
};

/// A value as it is handed over to be written. It refers to what it is made of, which lasts to the end of
/// the statement, and cannot be kept.
class CJson {
  public:
    // What is told of in an object is written as it is.
    // NOLINTBEGIN(*-explicit-*)
    CJson(std::nullptr_t = nullptr) {}
    CJson(bool value) : m_value(value) {}
    template <std::signed_integral Number>
    CJson(Number number) : m_value(std::int64_t{number}) {}
    template <std::unsigned_integral Number>
    CJson(Number number) : m_value(std::uint64_t{number}) {}
    /// Null for what is not finite.
    CJson(double number) : m_value(number) {}
    /// What is no UTF-8 in it becomes U+FFFD.
    CJson(std::string_view text) : m_value(text) {}
    CJson(const std::string& text) : CJson(std::string_view(text)) {}
    CJson(const char* text) : CJson(std::string_view(text)) {}
    CJson(const std::vector<std::string>& texts) : m_value(&texts) {}
    /// An object, whose members stay in the order in which they are given.
    CJson(JsonMembers members) : m_value(members) {}
    // NOLINTEND(*-explicit-*)
    CJson(const CJson&) = delete;
    CJson& operator=(const CJson&) = delete;

    static CJson Array(std::initializer_list<CJson> elements = {}) {
        return CJson(SElements{elements});
    }

    /// What `put(line, whole)` writes, a lambda without a capture.
    template <class Whole, class PutWhole>
    static CJson Of(const Whole& whole, PutWhole) {
        static_assert(std::is_empty_v<PutWhole>);
        return CJson(SMade{&whole, [](CJsonLine& line, const void* made) {
                               PutWhole{}(line, *static_cast<const Whole*>(made));
                           }});
    }

  private:
    friend class CJsonLine;

    struct SElements {
        std::initializer_list<CJson> list;
    };
    struct SMade {
        const void* whole;
        void (*put)(CJsonLine&, const void*);
    };

    explicit CJson(SElements elements) : m_value(elements) {}
    explicit CJson(SMade made) : m_value(made) {}

    std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double, std::string_view,
                 const std::vector<std::string>*, JsonMembers, SElements, SMade>
        m_value;
};

struct SJsonMember {
    std::string_view name;
    CJson value;
};

/// An array on its way into a line, element by element.
class CJsonElements {
  public:
    explicit CJsonElements(CJsonLine& line) : m_line(line) {}

    void Add(const CJson& element);
    /// The array's end, which follows its last element.
    void End();

  private:
    CJsonLine& m_line;
    const char* m_before = "["; ///< what comes next
};

} // namespace trevolt
