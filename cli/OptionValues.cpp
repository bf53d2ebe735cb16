#include "cli/OptionValues.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <vector>

#include <fmt/format.h>

#include "app/rotation/MountingTable.h"
#include "platform/FileSystem.h"
#include "trevolt/FileKinds.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

template <class... Values>
[[noreturn]] void Refuse(fmt::format_string<Values...> form, Values&&... values) {
    throw std::invalid_argument(fmt::format(form, std::forward<Values>(values)...));
}

/// Decimal digits alone; saturated.
std::optional<std::uint64_t> WholeNumber(std::string_view text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || end != text.data() + text.size())
        return std::nullopt;
    return error == std::errc::result_out_of_range ? UINT64_MAX : number;
}

/// The texts on both sides of the first of `separators`; the second empty where there is none.
std::pair<std::string_view, std::string_view> SplitAt(std::string_view text,
                                                      std::string_view separators) {
    const std::size_t place = text.find_first_of(separators);
    if (place == std::string_view::npos)
        return {text, {}};
    return {text.substr(0, place), text.substr(place + 1)};
}

/// The factor of the unit behind a number, none or one letter; 0 for any other text.
std::uint64_t UnitBytes(std::string_view unit) {
    constexpr std::string_view kUnits = "KkMmGgTt"; // each 1024 of the one before
    if (unit.empty())
        return 1;
    const std::size_t place = unit.size() == 1 ? kUnits.find(unit[0]) : std::string_view::npos;
    return place == std::string_view::npos ? 0 : std::uint64_t{1024} << 10 * (place / 2);
}

/// The texts between commas.
std::vector<std::string_view> Fields(std::string_view text) {
    std::vector<std::string_view> fields;
    std::size_t begin = 0;
    for (std::size_t comma = text.find(','); comma != std::string_view::npos;
         comma = text.find(',', begin)) {
        fields.push_back(text.substr(begin, comma - begin));
        begin = comma + 1;
    }
    fields.push_back(text.substr(begin));
    return fields;
}

bool CanStandInName(wchar_t c) {
    constexpr std::wstring_view kForbidden = L".\\/:*?\"<>|";
    return c >= L' ' && c != 0x7F && kForbidden.find(c) == std::wstring_view::npos;
}

/// Letters of both cases are the same.
bool EndsIn(std::wstring path, std::wstring_view ending) {
    for (wchar_t& c : path)
        c = c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
    return path.ends_with(ending);
}

} // namespace

std::uint32_t ParseAngle(const std::string& text) {
    const auto code = AngleCode(text);
    if (!code)
        Refuse("{} is no angle: give 90, 180, 270, -90 or -180", text);
    if (*code == 0)
        Refuse("{} turns nothing: give 90, 180, 270, -90 or -180", text);
    return *code;
}

PixelSize ParseSize(const std::string& text) {
    const auto [widthText, heightText] = SplitAt(text, "xX");
    const auto width = WholeNumber(widthText);
    const auto height = WholeNumber(heightText);
    if (!width || !height || *width == 0 || *height == 0)
        Refuse("{} is not a size: give WIDTHxHEIGHT in pixels", text);
    if (std::max(*width, *height) > kLargestMapSide)
        Refuse("{} is above {} in one direction: give less", text, kLargestMapSide);
    return {static_cast<std::int64_t>(*width), static_cast<std::int64_t>(*height)};
}

SPixelRect ParseRect(const std::string& text) {
    SPixelRect rect;
    const std::array sides{&rect.left, &rect.top, &rect.right, &rect.bottom};
    const auto fields = Fields(text);
    bool isRect = fields.size() == sides.size();
    for (std::size_t i = 0; i < sides.size() && isRect; ++i) {
        const auto side = Coordinate(fields[i]);
        isRect = side.has_value();
        *sides[i] = side.value_or(0);
    }
    if (!isRect)
        Refuse("{} is no rectangle: give LEFT,TOP,RIGHT,BOTTOM in whole pixels, at most {}", text,
               kLargestMapSide);
    if (rect.Width() < 1 || rect.Height() < 1)
        Refuse("{} has no pixels: give LEFT,TOP,RIGHT,BOTTOM, right and bottom exclusive", text);
    return rect;
}

SPlacedFile ParsePlacedFile(const std::string& text) {
    const std::size_t at = text.rfind('@');
    if (at == std::string::npos)
        Refuse("{} has no place: give FILE@X,Y, and its angle where it is turned, as "
               "Cab_01.9fcoef@160,0,90",
               text);
    const auto fields = Fields(std::string_view(text).substr(at + 1));
    const auto x = Coordinate(fields[0]);
    const auto y = fields.size() < 2 ? std::nullopt : Coordinate(fields[1]);
    if (!x || !y || fields.size() > 3)
        Refuse("{} has no place: give X,Y or X,Y,ANGLE behind the @, in whole pixels, at most {}",
               text, kLargestMapSide);
    const auto code = fields.size() < 3 ? 0 : AngleCode(fields[2]);
    if (!code)
        Refuse("{} has no angle: give 0, 90, 180, 270, -90 or -180", text);
    SPlacedFile file;
    file.path = ParsePath(text.substr(0, at));
    file.name = file.path;
    file.place = {*x, *y};
    file.code = *code;
    return file;
}

std::uint64_t ParseBytes(const std::string& text) {
    std::uint64_t number = 0;
    const char* const textEnd = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), textEnd, number);
    const std::uint64_t unit = UnitBytes({end, static_cast<std::size_t>(textEnd - end)});
    if (error == std::errc::result_out_of_range || (unit != 0 && number > UINT64_MAX / unit))
        Refuse("{} is too large: give less", text);
    if (error != std::errc{} || unit == 0 || number == 0)
        Refuse("{} is no number of bytes: give one, or one with K, M, G or T", text);
    return number * unit;
}

std::size_t ParseJobs(const std::string& text) {
    const auto jobs = WholeNumber(text);
    if (!jobs || *jobs < 1 || *jobs > kMostJobs)
        Refuse("{} is no number of threads: give 1 to {}", text, kMostJobs);
    return static_cast<std::size_t>(*jobs);
}

SShard ParseShard(const std::string& text) {
    const auto [numberText, countText] = SplitAt(text, "/");
    const auto number = WholeNumber(numberText);
    const auto count = WholeNumber(countText);
    if (!number || !count || *number < 1 || *number > *count || *count > SIZE_MAX - 1)
        Refuse("{} is no part of a run: give I/N, with I from 1 to N", text);
    return {static_cast<std::size_t>(*number), static_cast<std::size_t>(*count)};
}

std::wstring ParsePath(const std::string& text) {
    auto wide = Utf8ToWide(text);
    if (text.empty())
        Refuse("it has no name: give one");
    if (!wide)
        Refuse("the name {} is not valid UTF-8: rename it", text);
    return *std::move(wide);
}

std::wstring ParsePagePath(const std::string& text) {
    std::wstring path = ParsePath(text);
    if (!EndsIn(path, L".html") && !EndsIn(path, L".htm"))
        Refuse("{} is no name of a page: give one that ends in .html", text);
    return path;
}

std::wstring ParsePicturePath(const std::string& text) {
    std::wstring path = ParsePath(text);
    if (!EndsIn(path, L".png"))
        Refuse("{} does not end in .png: give the picture's name", text);
    if (FindLoadKind(path.substr(FolderPart(path).size())) != nullptr) // a later run would take it
        Refuse("{} has the name of a coefficient file: choose another name", text);
    return path;
}

std::wstring ParseSuffix(const std::string& text) {
    auto wide = Utf8ToWide(text);
    if (!wide)
        Refuse("it is not valid UTF-8: give a text that is");
    if (wide->empty() || !std::all_of(wide->begin(), wide->end(), CanStandInName))
        Refuse("\"{}\" cannot stand in a name: give letters, digits, - or _", text);
    return *std::move(wide);
}

} // namespace trevolt
