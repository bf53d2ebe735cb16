// Writes the files that are measured:
//
//   make-wall FOLDER WIDTH HEIGHT COUNT EXTENSION ...
//
// For each extension ("9fcoef") the folder of that name in FOLDER gets COUNT cabinets, each of other
// content; the same cabinet holds the same pixels in every kind.
#include <charconv>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <fmt/xchar.h>

#include "bench/MeasuredPixel.h"
#include "platform/ConsoleProgram.h"
#include "platform/FileSystem.h"
#include "trevolt/FileKinds.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

struct SKindFolder {
    const SFileKind* kind;
    std::wstring path; ///< with its separator
};

int NumberOf(const std::string& text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size() || number < 1)
        throw std::runtime_error(text + " is not a number above 0");
    return number;
}

std::wstring WideOf(const std::string& text) {
    auto wide = Utf8ToWide(text);
    if (!wide)
        throw std::runtime_error("an argument is not valid UTF-8");
    return *std::move(wide);
}

SKindFolder MakeKindFolder(const std::wstring& folder, const std::wstring& extension) {
    const SFileKind* const kind = FindExportKind(L"." + extension);
    std::wstring path = WithSeparator(WithSeparator(folder) + extension);
    if (kind == nullptr || !CreateFolders(path))
        throw std::runtime_error("no folder for " + WideToShownUtf8(extension));
    return {kind, std::move(path)};
}

void MakeWall(const std::vector<std::string>& arguments) {
    const std::int32_t width = NumberOf(arguments[1]);
    const std::int32_t height = NumberOf(arguments[2]);
    const int count = NumberOf(arguments[3]);
    std::vector<SKindFolder> folders;
    for (std::size_t i = 4; i < arguments.size(); ++i)
        folders.push_back(MakeKindFolder(WideOf(arguments[0]), WideOf(arguments[i])));
    for (int cabinet = 0; cabinet < count; ++cabinet) {
        const CChromaCorrectCoef map =
            MeasuredMap(width, height, static_cast<std::uint32_t>(cabinet));
        for (const SKindFolder& folder : folders) {
            const std::wstring name = fmt::format(L"Cab_{:05}{}", cabinet, folder.kind->extension);
            if (Failed(folder.kind->save(map, (folder.path + name).c_str())))
                throw std::runtime_error(WideToShownUtf8(name) + " cannot be written");
        }
    }
}

} // namespace

int StatusWithoutMemory(std::string_view /*firstArgument*/) noexcept { return 1; }

int ConsoleMain(const std::vector<std::string>& arguments) {
    if (arguments.size() < 5) {
        fmt::print(stderr, "make-wall: FOLDER WIDTH HEIGHT COUNT EXTENSION ... are wanted\n");
        return 2;
    }
    try {
        MakeWall(arguments);
    } catch (const std::exception& error) {
        fmt::print(stderr, "make-wall: {}\n", error.what());
        return 1;
    }
    return 0;
}

} // namespace trevolt
