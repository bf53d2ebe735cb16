#include "trevolt/FileKinds.h"

#include <algorithm>
#include <array>

#include "common/TextConversion.h"
#include "formats/BinaryCoefTransfer.h"
#include "trevolt/TextCoefFile.h"
#include "trevolt/WordCoefFile.h"

namespace trevolt {
namespace {

template <class Kind>
constexpr SFileKind BinaryFileKind(std::wstring_view extension, int exportOrder) {
    return {extension,
            exportOrder,
            [](CChromaCorrectCoef& map, const wchar_t* path) {
                return ReadBinaryCoef<Kind>(map, path);
            },
            [](const CChromaCorrectCoef& map, const wchar_t* path) {
                return WriteBinaryCoef<Kind>(map, path, nullptr);
            },
            [](const wchar_t* path, std::uint32_t& width, std::uint32_t& height) {
                return ReadBinaryCoefSize<Kind>(path, width, height);
            },
            nullptr};
}

/// Takes every pixel that the file names, at its own place; the sizes that it tells are not needed.
Status LoadText(CChromaCorrectCoef& map, const wchar_t* path) {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    return ReadTextCoefFile(map, path, 0, 0, width, height, false);
}

Status SaveText(const CChromaCorrectCoef& map, const wchar_t* path) {
    return WriteTextCoefFile(map, path, nullptr);
}

Status ReadTextSize(const wchar_t* path, std::uint32_t& width, std::uint32_t& height) {
    width = 0;
    height = 0;
    return ProbeTextCoefFileSize(path, width, height);
}

template <EWordKind Kind>
constexpr SFileKind WordFileKind(std::wstring_view extension, int exportOrder) {
    return {extension,
            exportOrder,
            [](CChromaCorrectCoef& map, const wchar_t* path) {
                return LoadWordCoefFile(Kind, map, path);
            },
            [](const CChromaCorrectCoef& map, const wchar_t* path) {
                return SaveWordCoefFile(Kind, map, path);
            },
            [](const wchar_t* path, std::uint32_t& width, std::uint32_t& height) {
                return ReadWordCoefSize(Kind, path, width, height);
            },
            DescribeWordFileLosses};
}

constexpr std::array kFileKinds{
    BinaryFileKind<S9fCoefKind>(L".9fcoef", 1),
    BinaryFileKind<S9bCoefKind>(L".9bcoef", 2),
    WordFileKind<EWordKind::Chroma>(L".9wcoef", 3),
    WordFileKind<EWordKind::Brightness>(L".3wcoef", 5),
    BinaryFileKind<S3fCoefKind>(L".3fcoef", 7),
    BinaryFileKind<S3bCoefKind>(L".3bcoef", 8),
    SFileKind{L".cccoef", 9, LoadText, SaveText, ReadTextSize, nullptr},
    WordFileKind<EWordKind::VirtualGreenBrightness>(L".4wcoef", 6),
    WordFileKind<EWordKind::VirtualGreenChroma>(L".12wcoef", 4),
};

bool Occurs(const SFileKind& kind, std::wstring_view lowered) {
    return lowered.find(kind.extension) != std::wstring_view::npos;
}

} // namespace

std::span<const SFileKind> FileKinds() { return kFileKinds; }

const SFileKind* FindLoadKind(std::wstring_view name) {
    const std::wstring lowered = ToLowerAscii(name);
    const auto found = std::find_if(kFileKinds.begin(), kFileKinds.end(),
                                    [&](const SFileKind& kind) { return Occurs(kind, lowered); });
    return found == kFileKinds.end() ? nullptr : &*found;
}

const SFileKind* FindExportKind(std::wstring_view name) {
    const std::wstring lowered = ToLowerAscii(name);
    const SFileKind* first = nullptr;
    for (const SFileKind& kind : kFileKinds)
        if (Occurs(kind, lowered) && (first == nullptr || kind.exportOrder < first->exportOrder))
            first = &kind;
    return first;
}

std::wstring ExportName(std::wstring_view name, std::wstring_view angle) {
    const std::size_t dot = std::min(name.find(L'.'), name.size());
    std::wstring exported(name.substr(0, dot));
    exported.append(L"-").append(angle).append(name.substr(dot));
    return exported;
}

} // namespace trevolt
