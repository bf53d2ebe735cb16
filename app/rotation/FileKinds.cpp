#include "trevolt/FileKinds.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <type_traits>

#include "app/rotation/ElementForms.h"
#include "app/rotation/StoredKinds.h"
#include "coef/CNewChromaCorrectCoef.h"
#include "coef/StoredWordCoef.h"
#include "coef/WordKind.h"
#include "common/TextConversion.h"
#include "formats/BinaryCoefPixels.h"
#include "formats/BinaryCoefTransfer.h"
#include "formats/StoredBinaryCoef.h"
#include "trevolt/TextCoefFile.h"
#include "trevolt/WordCoefFile.h"

namespace trevolt {
namespace {

/// One kind: what every program may know of it, how its files are turned in their own elements, and
/// what these are of a map's.
struct SKindRow {
    SFileKind kind;
    SStoredKind stored;
    SElementForm form;
    std::optional<EWordKind> wordKind = std::nullopt;
};

template <class Kind>
constexpr EStoredValue kBinaryValue =
    std::is_same_v<typename Kind::Stored::value_type, float> ? EStoredValue::Float
                                                             : EStoredValue::Byte;

template <class Kind>
constexpr SKindRow BinaryFileKind(std::wstring_view extension, int exportOrder) {
    return {{extension, exportOrder,
             [](CChromaCorrectCoef& map, const wchar_t* path) {
                 return ReadBinaryCoef<Kind>(map, path);
             },
             [](const CChromaCorrectCoef& map, const wchar_t* path) {
                 return WriteBinaryCoef<Kind>(map, path, nullptr);
             },
             [](const wchar_t* path, std::uint32_t& width, std::uint32_t& height) {
                 return ReadBinaryCoefSize<Kind>(path, width, height);
             },
             nullptr,
             [](CChromaCorrectCoef& map, std::istream& stream) {
                 return ReadBinaryCoef<Kind>(map, stream);
             },
             [](std::istream& stream, std::uint32_t& width, std::uint32_t& height) {
                 return ReadBinaryCoefSize<Kind>(stream, width, height);
             },
             nullptr},
            {Kind::kStoredBytes, [](const CoefFileMagic& magic) { return magic == Kind::kMagic; },
             E_COEF_OPENFAILED,
             [](std::istream& stream, std::size_t threads, const SExtrasOfTurn& /*none*/) {
                 return LoadStoredBinaryCoef<Kind>(stream, threads);
             },
             ReadBinaryCoefPixels<Kind>},
            MakeElementForm<Kind::kStoredCount>(kBinaryValue<Kind>, Kind::kEntries)};
}

/// Takes every pixel that the file names, at its own place; the sizes that it tells are not needed.
template <class File>
Status LoadText(CChromaCorrectCoef& map, File file) {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    return ReadTextCoefFile(map, file, 0, 0, width, height, false);
}

Status SaveText(const CChromaCorrectCoef& map, const wchar_t* path) {
    return WriteTextCoefFile(map, path, nullptr);
}

template <class File>
Status ReadTextSize(File file, std::uint32_t& width, std::uint32_t& height) {
    width = 0;
    height = 0;
    return ProbeTextCoefFileSize(file, width, height);
}

template <EWordKind Kind>
constexpr SStoredKind kStoredWords = VisitElementOf(Kind, SStoredKind{}, []<class Element>() {
    return SStoredKind{
        sizeof(Element),
        [](const ChunkFormatId& format) { return kWordKind<Element>.HasFormat(format); },
        kWordKind<Element>.outputOpenFailed,
        [](std::istream& stream, std::size_t threads, const SExtrasOfTurn& extras) {
            return LoadStoredWordCoef(Kind, stream, threads, extras);
        },
        nullptr};
});

template <EWordKind Kind>
constexpr SElementForm kWordForm = VisitElementOf(Kind, SElementForm{}, []<class Element>() {
    return MakeElementForm<std::tuple_size_v<decltype(Element::w)>>(EStoredValue::Word,
                                                                    kWordKind<Element>.mapValues);
});

template <EWordKind Kind>
constexpr SKindRow WordFileKind(std::wstring_view extension, int exportOrder) {
    return {{extension, exportOrder,
             [](CChromaCorrectCoef& map, const wchar_t* path) {
                 return LoadWordCoefFile(Kind, map, path);
             },
             [](const CChromaCorrectCoef& map, const wchar_t* path) {
                 return SaveWordCoefFile(Kind, map, path);
             },
             [](const wchar_t* path, std::uint32_t& width, std::uint32_t& height) {
                 return ReadWordCoefSize(Kind, path, width, height);
             },
             DescribeWordFileLosses,
             [](CChromaCorrectCoef& map, std::istream& stream) {
                 return LoadWordCoefFile(Kind, map, stream);
             },
             [](std::istream& stream, std::uint32_t& width, std::uint32_t& height) {
                 return ReadWordCoefSize(Kind, stream, width, height);
             },
             DescribeWordFileLosses},
            kStoredWords<Kind>,
            kWordForm<Kind>,
            Kind};
}

constexpr SKindRow TextFileKind(std::wstring_view extension, int exportOrder) {
    return {{extension, exportOrder, LoadText<const wchar_t*>, SaveText,
             ReadTextSize<const wchar_t*>, nullptr, LoadText<std::istream&>,
             ReadTextSize<std::istream&>, nullptr},
            {0, nullptr, S_OK, nullptr, nullptr},
            MakeElementForm<9>(EStoredValue::Text, kMapForm.places)};
}

/// In the load's order.
constexpr std::array kRows{
    BinaryFileKind<S9fCoefKind>(L".9fcoef", 1),
    BinaryFileKind<S9bCoefKind>(L".9bcoef", 2),
    WordFileKind<EWordKind::Chroma>(L".9wcoef", 3),
    WordFileKind<EWordKind::Brightness>(L".3wcoef", 5),
    BinaryFileKind<S3fCoefKind>(L".3fcoef", 7),
    BinaryFileKind<S3bCoefKind>(L".3bcoef", 8),
    TextFileKind(L".cccoef", 9),
    WordFileKind<EWordKind::VirtualGreenBrightness>(L".4wcoef", 6),
    WordFileKind<EWordKind::VirtualGreenChroma>(L".12wcoef", 4),
};

constexpr auto kFileKinds = [] {
    std::array<SFileKind, kRows.size()> kinds{};
    std::ranges::transform(kRows, kinds.begin(), &SKindRow::kind);
    return kinds;
}();

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

const SStoredKind* FindStoredKind(std::wstring_view name) {
    const SFileKind* const kind = FindLoadKind(name);
    if (kind == nullptr || kind != FindExportKind(name) || NamesExtraWordFile(name))
        return nullptr;
    const SStoredKind& stored = kRows[static_cast<std::size_t>(kind - kFileKinds.data())].stored;
    return stored.load == nullptr ? nullptr : &stored;
}

const SStoredKind& StoredKindOf(const SFileKind& kind) {
    return kRows[static_cast<std::size_t>(&kind - kFileKinds.data())].stored;
}

std::optional<EWordKind> FindWordKind(const SFileKind& kind) {
    return kRows[static_cast<std::size_t>(&kind - kFileKinds.data())].wordKind;
}

const SElementForm& FormOfKind(const SFileKind& kind) {
    return kRows[static_cast<std::size_t>(&kind - kFileKinds.data())].form;
}

std::wstring ExportName(std::wstring_view name, std::wstring_view angle) {
    const std::size_t dot = std::min(name.find(L'.'), name.size());
    std::wstring exported(name.substr(0, dot));
    exported.append(L"-").append(angle).append(name.substr(dot));
    return exported;
}

} // namespace trevolt
