#include "trevolt/WordCoefFile.h"

#include <algorithm>
#include <array>
#include <fstream>

#include <fmt/format.h>

#include "coef/CNewBrightCorrectCoef.h"
#include "coef/CNewChromaCorrectCoef.h"
#include "coef/VirtualGreenBrightCorrectCoef.h"
#include "coef/VirtualGreenChromaCorrectCoef.h"
#include "platform/FileStream.h"
#include "trevolt/FixedPoint.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

/// What the bridge must know of an object's kind beside its row of word kinds. `kZeroed` are the map
/// values that a load sets to 0 because the kind has no word for them.
template <class Object>
struct SBridgeKind;

template <>
struct SBridgeKind<CCNewChromaCorrectCoef> {
    using Element = S9WordCoef;
    static constexpr auto kReadSize = &CColorCorrectCoef::GetChromaCoefSize;
    static constexpr std::array<std::uint8_t, 0> kZeroed{};
};
template <>
struct SBridgeKind<CCNewBrightCorrectCoef> {
    using Element = S3WordCoef;
    static constexpr auto kReadSize = &CColorCorrectCoef::GetBrightCoefSize;
    static constexpr std::array<std::uint8_t, 6> kZeroed{1, 2, 3, 5, 6, 7};
};
template <>
struct SBridgeKind<CVirtualGreenBrightCorrectCoef> {
    using Element = S4WordCoef;
    static constexpr auto kReadSize = &CColorCorrectCoef::GetVBCoefSize;
    static constexpr std::array<std::uint8_t, 8> kZeroed{1, 2, 3, 5, 6, 7, 9, 11};
};
template <>
struct SBridgeKind<CVirtualGreenChromaCorrectCoef> {
    using Element = S12WordCoef;
    static constexpr auto kReadSize = &CColorCorrectCoef::GetVCCoefSize;
    static constexpr std::array<std::uint8_t, 0> kZeroed{};
};

/// The file-kind value that virtual-green files carry, and the mark that their saver sets.
constexpr std::uint32_t kVirtualGreenFileKind = 2;
constexpr std::uint16_t kVirtualGreenSaverMark = 1;

template <class Object>
void SetFileKind(Object& object) {
    if constexpr (kWordKind<typename SBridgeKind<Object>::Element>.hasFileKind) {
        object.SetFileKind(kVirtualGreenFileKind);
        object.SetSaverMark(kVirtualGreenSaverMark);
    }
}

/// The size from the file's header; some headers give the low 16 bits only, so both start at 0.
template <class Object>
Status ReadSize(Object& object, const wchar_t* path, std::uint32_t& width, std::uint32_t& height) {
    width = 0;
    height = 0;
    return (object.*SBridgeKind<Object>::kReadSize)(path, width, height);
}

template <class Object>
void WordsToElement(const typename SBridgeKind<Object>::Element& words, SMatrixCoef& element) {
    using Kind = SBridgeKind<Object>;
    for (const std::size_t value : Kind::kZeroed)
        element.m[value] = 0.0F;
    for (std::size_t k = 0; k < words.w.size(); ++k)
        element.m[kWordKind<typename Kind::Element>.mapValues[k]] = WordToFloat(words.w[k]);
}

template <class Object>
void ElementToWords(const SMatrixCoef& element, typename SBridgeKind<Object>::Element& words) {
    using Kind = SBridgeKind<Object>;
    for (std::size_t k = 0; k < words.w.size(); ++k)
        words.w[k] = RoundToWord(element.m[kWordKind<typename Kind::Element>.mapValues[k]]);
}

/// How far a run of `stored` pixels that starts at `offset` reaches into `mapSize`.
std::int32_t Overlap(std::uint32_t stored, std::uint32_t offset, std::uint16_t mapSize) {
    return offset >= mapSize
               ? 0
               : static_cast<std::int32_t>(std::min<std::uint32_t>(stored, mapSize - offset));
}

template <class Object>
void CopyToMap(const Object& object, CChromaCorrectCoef& map, const SMapRegion& region) {
    const typename SBridgeKind<Object>::Element missing{};
    const std::int32_t width = Overlap(object.GetWidth(), region.left, map.Width());
    const std::int32_t height = Overlap(object.GetHeight(), region.top, map.Height());
    const auto left = static_cast<std::int32_t>(width == 0 ? 0 : region.left);
    const auto top = static_cast<std::int32_t>(height == 0 ? 0 : region.top);
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            SMatrixCoef* element = map.FindElement(left + x, top + y);
            if (element == nullptr)
                continue;
            const auto* words =
                object.FindPixel(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y));
            WordsToElement<Object>(words == nullptr ? missing : *words, *element);
        }
    }
}

template <class Object>
void CopyFromMap(const CChromaCorrectCoef& map, Object& object) {
    for (std::int32_t y = 0; y < map.Height(); ++y)
        for (std::int32_t x = 0; x < map.Width(); ++x)
            if (auto* words =
                    object.FindPixel(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)))
                ElementToWords<Object>(map.ElementOrDefault(x, y), *words);
}

/// Sizes a store to what a file's header says, which may be a lie.
Status SizeStore(CCaliBuf& store, std::uint32_t width, std::uint32_t height) {
    return store.HasRoomFor(width, height) ? store.Allocate(width, height) : E_FAIL;
}

/// Sizes what a loaded file goes into. The matrix kind's extra words follow only when the matrix
/// store got its memory.
Status SizeStores(CCNewChromaCorrectCoef& object, std::uint32_t width, std::uint32_t height) {
    const Status status = SizeStore(*object.Store(), width, height);
    return Failed(status) ? status : SizeStore(*object.ExtraStore(), width, height);
}

template <class Object>
Status SizeStores(Object& object, std::uint32_t width, std::uint32_t height) {
    return SizeStore(*object.Store(), width, height);
}

/// Whether a word file starts so; a float file may carry a word kind's name.
bool IsWordFile(const SChunkHeader& header) {
    return header.formatId == kChromaChunkFormat2 ||
           FindElementOfFormat(header.formatId) != nullptr;
}

bool HasOwner(const SChunkHeader& header) {
    return header.ownerFlag != 0 || std::any_of(header.ownerData.begin(), header.ownerData.end(),
                                                [](std::uint8_t byte) { return byte != 0; });
}

template <class Object>
Status Load(CChromaCorrectCoef& map, const wchar_t* path, const SMapRegion& region) {
    Object object;
    SetFileKind(object);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    if (const Status status = ReadSize(object, path, width, height); Failed(status))
        return status;
    if (Failed(SizeStores(object, width, height)))
        CTransferReport::NoteMemoryRefused();
    if (const Status status = object.LoadCoef(path); Failed(status))
        return status;
    CopyToMap(object, map, region);
    return S_OK;
}

template <class Object>
Status Save(const CChromaCorrectCoef& map, const wchar_t* path) {
    Object object;
    SetFileKind(object);
    if (const Status status = object.Create(map.Width(), map.Height()); Failed(status))
        return status;
    CopyFromMap(map, object);
    return object.ExportCoef(path, {0, 0, map.Width(), map.Height()}, nullptr, nullptr);
}

template <class Object>
Status FindSize(const wchar_t* path, std::uint32_t& width, std::uint32_t& height) {
    Object object;
    SetFileKind(object);
    return ReadSize(object, path, width, height);
}

/// One kind's operations.
struct SBridge {
    Status (*load)(CChromaCorrectCoef&, const wchar_t*, const SMapRegion&);
    Status (*save)(const CChromaCorrectCoef&, const wchar_t*);
    Status (*findSize)(const wchar_t*, std::uint32_t&, std::uint32_t&);
};

template <class Object>
constexpr SBridge kBridge{Load<Object>, Save<Object>, FindSize<Object>};

const SBridge& BridgeOf(EWordKind kind) {
    switch (kind) {
    case EWordKind::Chroma:
        return kBridge<CCNewChromaCorrectCoef>;
    case EWordKind::Brightness:
        return kBridge<CCNewBrightCorrectCoef>;
    case EWordKind::VirtualGreenBrightness:
        return kBridge<CVirtualGreenBrightCorrectCoef>;
    case EWordKind::VirtualGreenChroma:
        break;
    }
    return kBridge<CVirtualGreenChromaCorrectCoef>;
}

} // namespace

Status LoadWordCoefFile(EWordKind kind, CChromaCorrectCoef& map, const wchar_t* path,
                        const SMapRegion& region) {
    return BridgeOf(kind).load(map, path, region);
}

Status SaveWordCoefFile(EWordKind kind, const CChromaCorrectCoef& map, const wchar_t* path) {
    if (path == nullptr || map.IsEmpty())
        return E_COEF_INVALIDARG;
    if (!map.ColourGrid().HasStorage())
        return E_FAIL;
    return BridgeOf(kind).save(map, path);
}

Status ReadWordCoefSize(EWordKind kind, const wchar_t* path, std::uint32_t& width,
                        std::uint32_t& height) {
    return BridgeOf(kind).findSize(path, width, height);
}

std::vector<std::string> DescribeWordFileLosses(const wchar_t* path) {
    std::vector<std::string> losses;
    std::fstream stream;
    ChunkHeaderBytes bytes{};
    if (!OpenFileStream(stream, path, std::ios::in) ||
        !stream.read(reinterpret_cast<char*>(bytes.data()), bytes.size()))
        return losses;
    const SChunkHeader header = DecodeChunkHeader(bytes.data());
    if (!IsWordFile(header))
        return losses;
    if (header.formatId == kChromaChunkFormat2)
        losses.emplace_back("its extra words");
    if (HasOwner(header))
        losses.emplace_back("its owner name and flag");
    if (header.originX != 0 || header.originY != 0)
        losses.push_back(fmt::format("its origin ({}, {})", header.originX, header.originY));
    return losses;
}

} // namespace trevolt
