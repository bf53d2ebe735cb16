#include "app/inspection/NpyHeader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <system_error>

#include <fmt/format.h>

#include "common/LittleEndian.h"

namespace trevolt {
namespace {

constexpr std::string_view kNpyMagic{"\x93NUMPY", 6};
constexpr std::size_t kNpyAlignment = 64;

/// Magic, version, and the length of the dictionary: in the first version a uint16, then a uint32.
constexpr std::size_t kNpyVersionBytes = 2;
constexpr std::size_t kNpyPrefixBytes = kNpyMagic.size() + kNpyVersionBytes;

/// Takes the tokens of a Python literal, with blanks before each. What a `Take` does not find it
/// leaves.
class CLiteralScan {
  public:
    explicit CLiteralScan(std::string_view text) : m_rest(text) {}

    bool Take(std::string_view token) {
        SkipBlanks();
        if (!m_rest.starts_with(token))
            return false;
        m_rest.remove_prefix(token.size());
        return true;
    }

    /// A string in one of the two quotes, without escapes.
    bool TakeString(std::string& text) {
        SkipBlanks();
        if (m_rest.empty() || (m_rest.front() != '\'' && m_rest.front() != '"'))
            return false;
        const std::size_t end = m_rest.find(m_rest.front(), 1);
        if (end == std::string_view::npos)
            return false;
        text = m_rest.substr(1, end - 1);
        m_rest.remove_prefix(end + 1);
        return text.find('\\') == std::string::npos;
    }

    bool TakeInteger(std::uint64_t& value) {
        SkipBlanks();
        const char* const begin = m_rest.data();
        const auto [end, error] = std::from_chars(begin, begin + m_rest.size(), value);
        if (error != std::errc{})
            return false;
        m_rest.remove_prefix(static_cast<std::size_t>(end - begin));
        return true;
    }

    bool TakeEnd() {
        SkipBlanks();
        return m_rest.empty();
    }

  private:
    void SkipBlanks() {
        m_rest.remove_prefix(std::min(m_rest.find_first_not_of(" \t\r\n\f"), m_rest.size()));
    }

    std::string_view m_rest;
};

bool TakeDescr(CLiteralScan& scan, SNpyHeader& header) {
    return scan.TakeString(header.descr) && header.descr.size() <= kMostNpyDescrChars;
}

bool TakeOrder(CLiteralScan& scan, SNpyHeader& header) {
    header.isFortranOrder = scan.Take("True");
    return header.isFortranOrder || scan.Take("False");
}

/// A tuple; one of a single dimension needs its comma, as in Python.
bool TakeShape(CLiteralScan& scan, SNpyHeader& header) {
    header.shape.clear();
    if (!scan.Take("("))
        return false;
    bool hasComma = true;
    while (!scan.Take(")")) {
        std::uint64_t side = 0;
        if (!hasComma || header.shape.size() == kMostNpyDimensions || !scan.TakeInteger(side))
            return false;
        header.shape.push_back(side);
        hasComma = scan.Take(",");
    }
    return hasComma || header.shape.size() > 1;
}

struct SDictKey {
    std::string_view name;
    bool (*takeValue)(CLiteralScan& scan, SNpyHeader& header);
};

constexpr std::array kDictKeys{
    SDictKey{"descr", TakeDescr},
    SDictKey{"fortran_order", TakeOrder},
    SDictKey{"shape", TakeShape},
};

/// One entry, whose key `seen` has not yet; `seen` has it then.
bool TakeEntry(CLiteralScan& scan, SNpyHeader& header, std::array<bool, kDictKeys.size()>& seen) {
    std::string name;
    if (!scan.TakeString(name) || !scan.Take(":"))
        return false;
    for (std::size_t k = 0; k < kDictKeys.size(); ++k)
        if (kDictKeys[k].name == name && !seen[k]) {
            seen[k] = true;
            return kDictKeys[k].takeValue(scan, header);
        }
    return false;
}

bool ReadBytes(std::istream& stream, std::byte* bytes, std::size_t count) {
    return static_cast<bool>(
        stream.read(reinterpret_cast<char*>(bytes), static_cast<std::streamsize>(count)));
}

/// Takes the dictionary's length in the version's width.
template <class Length>
bool ReadLength(std::istream& stream, std::uint32_t& length) {
    std::array<std::byte, sizeof(Length)> bytes{};
    const bool isRead = ReadBytes(stream, bytes.data(), bytes.size());
    length = LoadLittle<Length>(bytes.data());
    return isRead;
}

constexpr const char* kCutHeader = "its header is cut short";

} // namespace

bool ParseNpyDict(std::string_view text, SNpyHeader& header) {
    CLiteralScan scan(text);
    if (!scan.Take("{"))
        return false;
    std::array<bool, kDictKeys.size()> seen{};
    for (std::size_t entry = 0; entry < kDictKeys.size(); ++entry)
        if ((entry > 0 && !scan.Take(",")) || !TakeEntry(scan, header, seen))
            return false;
    scan.Take(",");
    return scan.Take("}") && scan.TakeEnd();
}

std::string ReadNpyHeader(std::istream& stream, SNpyHeader& header) {
    std::array<std::byte, kNpyPrefixBytes> prefix{};
    if (!ReadBytes(stream, prefix.data(), prefix.size()) ||
        !std::string_view(reinterpret_cast<const char*>(prefix.data()), prefix.size())
             .starts_with(kNpyMagic))
        return "it does not begin as a .npy file does";
    const auto major = std::to_integer<unsigned>(prefix[kNpyMagic.size()]);
    const auto minor = std::to_integer<unsigned>(prefix[kNpyMagic.size() + 1]);
    if (major < 1 || major > 3 || minor != 0)
        return fmt::format("its .npy version is {}.{}: 1.0, 2.0 and 3.0 are known", major, minor);
    std::uint32_t length = 0;
    if (!(major == 1 ? ReadLength<std::uint16_t>(stream, length)
                     : ReadLength<std::uint32_t>(stream, length)))
        return kCutHeader;
    if (length > kMostNpyDictBytes)
        return fmt::format("its header is of {} bytes: {} are the most that are taken", length,
                           kMostNpyDictBytes);
    std::string dict(length, '\0');
    if (!stream.read(dict.data(), static_cast<std::streamsize>(dict.size())))
        return kCutHeader;
    if (!ParseNpyDict(dict, header))
        return "its header does not tell of one array of plain numbers";
    return {};
}

std::string FormatNpyShape(const std::vector<std::uint64_t>& shape) {
    return fmt::format("({}{})", fmt::join(shape, ", "), shape.size() == 1 ? "," : "");
}

std::string FormatNpyHeader(const SNpyHeader& header) {
    std::string dict =
        fmt::format("{{'descr': '{}', 'fortran_order': {}, 'shape': {}, }}", header.descr,
                    header.isFortranOrder ? "True" : "False", FormatNpyShape(header.shape));
    constexpr std::size_t kBeforeDict = kNpyPrefixBytes + sizeof(std::uint16_t);
    const std::size_t unpadded = kBeforeDict + dict.size() + 1; // a line end
    dict.append((kNpyAlignment - unpadded % kNpyAlignment) % kNpyAlignment, ' ');
    dict.push_back('\n');
    std::string bytes(kNpyMagic);
    bytes.append(
        {'\1', '\0', static_cast<char>(dict.size() & 0xFF), static_cast<char>(dict.size() >> 8)});
    return bytes + dict;
}

} // namespace trevolt
