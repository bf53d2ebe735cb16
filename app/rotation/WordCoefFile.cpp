#include "trevolt/WordCoefFile.h"

#include <algorithm>
#include <istream>
#include <ostream>

#include <fmt/format.h>

#include "app/rotation/WordExtras.h"
#include "coef/FileSize.h"
#include "coef/TurnedExtras.h"
#include "coef/TurnedStore.h"
#include "coef/WordObjects.h"
#include "common/ReadFile.h"
#include "trevolt/FixedPoint.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

/// The mark that the saver of virtual-green files sets beside their file-kind value.
constexpr std::uint16_t kVirtualGreenSaverMark = 1;

template <class Element>
void SetFileKind(WordObject<Element>& object) {
    if constexpr (kWordKind<Element>.hasFileKind) {
        object.SetFileKind(kVirtualGreenFileKind);
        object.SetSaverMark(kVirtualGreenSaverMark);
    }
}

template <class Element>
void WordsToElement(const Element& words, SMatrixCoef& element) {
    for (const std::size_t value : kWordKind<Element>.zeroedMapValues)
        element.m[value] = 0.0F;
    for (std::size_t k = 0; k < words.w.size(); ++k)
        element.m[kWordKind<Element>.mapValues[k]] = WordToFloat(words.w[k]);
}

template <class Element>
void ElementToWords(const SMatrixCoef& element, Element& words) {
    for (std::size_t k = 0; k < words.w.size(); ++k)
        words.w[k] = RoundToWord(element.m[kWordKind<Element>.mapValues[k]]);
}

/// How far a run of `stored` pixels that starts at `offset` reaches into `mapSize`.
std::int32_t Overlap(std::uint32_t stored, std::uint32_t offset, std::uint16_t mapSize) {
    return offset >= mapSize
               ? 0
               : static_cast<std::int32_t>(std::min<std::uint32_t>(stored, mapSize - offset));
}

template <class Element>
void CopyToMap(const CWordCorrectCoef<Element>& object, CChromaCorrectCoef& map,
               const SMapRegion& region) {
    const Element missing{};
    const std::int32_t width = Overlap(object.GetWidth(), region.left, map.Width());
    const std::int32_t height = Overlap(object.GetHeight(), region.top, map.Height());
    const auto left = static_cast<std::int32_t>(width == 0 ? 0 : region.left);
    const auto top = static_cast<std::int32_t>(height == 0 ? 0 : region.top);
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            SMatrixCoef* element = map.FindElement(left + x, top + y);
            if (element == nullptr)
                continue;
            const Element* words =
                object.FindPixel(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y));
            WordsToElement(words == nullptr ? missing : *words, *element);
        }
    }
}

/// The map's pixel (0, 0) comes to (left, top) of the object.
template <class Element>
void CopyFromMap(const CChromaCorrectCoef& map, CWordCorrectCoef<Element>& object,
                 std::int32_t left = 0, std::int32_t top = 0) {
    for (std::int32_t y = 0; y < map.Height(); ++y)
        for (std::int32_t x = 0; x < map.Width(); ++x)
            if (Element* words = object.FindPixel(static_cast<std::uint32_t>(left + x),
                                                  static_cast<std::uint32_t>(top + y)))
                ElementToWords(map.ElementOrDefault(x, y), *words);
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

/// The size from the file's header; some headers give the low 16 bits only, so both start at 0.
template <class Element>
Status FindSize(CWordFileSource& file, std::uint32_t& width, std::uint32_t& height) {
    return QueryWordFileSize(kWordKind<Element>, kVirtualGreenFileKind, file, width, height);
}

/// Of a file that the object has loaded.
template <class Element>
void TakeExtras(WordObject<Element>& object, CWordFileSource& file, SWordExtras& extras) {
    SChunkHeader header;
    if (Failed(ReadChunkFileHeader(file, kWordKind<Element>, header)))
        return;
    extras.header = header;
    if constexpr (kWordKind<Element>.extraWordFormatId.has_value())
        if (header.formatId == kWordKind<Element>.extraWordFormatId)
            extras.words = object.TakeExtraStoreOwner();
}

/// `extras` may be null.
template <class Element>
Status Load(CChromaCorrectCoef& map, CWordFileSource& file, const SMapRegion& region,
            SWordExtras* extras) {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    if (const Status status = FindSize<Element>(file, width, height); Failed(status))
        return status;
    WordObject<Element> object;
    SetFileKind<Element>(object);
    if (Failed(SizeStores(object, width, height)))
        CTransferReport::NoteMemoryRefused();
    const Status status = object.LoadFile(file, 0, 0);
    if (extras != nullptr)
        TakeExtras<Element>(object, file, *extras);
    if (Failed(status))
        return status;
    CopyToMap<Element>(object, map, region);
    return S_OK;
}

/// What a saver answers to a map from which no file can be made.
Status CheckSaved(const CChromaCorrectCoef& map) {
    if (map.IsEmpty())
        return E_COEF_INVALIDARG;
    return map.ColourGrid().HasStorage() ? S_OK : E_FAIL;
}

/// Lets write(object) save the map's pixels from an object of the kind.
template <class Write>
Status SaveThroughObject(EWordKind kind, const CChromaCorrectCoef& map, const Write& write) {
    if (const Status status = CheckSaved(map); Failed(status))
        return status;
    return VisitElementOf(kind, E_COEF_INVALIDARG, [&]<class Element>() {
        WordObject<Element> object;
        SetFileKind<Element>(object);
        if (const Status status = object.Create(map.Width(), map.Height()); Failed(status))
            return status;
        CopyFromMap<Element>(map, object);
        return write(object, SPixelRect{0, 0, map.Width(), map.Height()});
    });
}

/// Gives a store the blocks that a rectangle touches, with defaults; its size stays 0.
Status HoldRect(CCaliBuf& store, const SPixelRect& rect) {
    const SBlockSpan blocks = BlocksTouchedBy(rect);
    for (std::int64_t row = blocks.row0; row < blocks.row1; ++row)
        for (std::int64_t column = blocks.column0; column < blocks.column1; ++column) {
            const std::uint32_t index = BlockIndexAt(column, row);
            if (const Status status =
                    store.AllocateBlock(index, static_cast<std::uint32_t>(column) * kBlockWidth,
                                        static_cast<std::uint32_t>(row) * kBlockHeight);
                Failed(status))
                return status;
            if (const Status status = store.FillBlockDefault(index); Failed(status))
                return status;
        }
    return S_OK;
}

/// The turned file's area; nothing when the origin has no place.
std::optional<SPixelRect> TurnedArea(const SChunkHeader& header, const PixelSize& turnedSize,
                                     std::uint32_t code, const std::optional<PixelSize>& wall) {
    const PixelSize size = CQuarterTurn(code, turnedSize.width, turnedSize.height).TurnedSize();
    const auto place = TurnedOrigin(header, size, code, wall);
    if (!place || !IsInGrid(*place, turnedSize))
        return std::nullopt;
    return SPixelRect{static_cast<std::int32_t>(place->x), static_cast<std::int32_t>(place->y),
                      static_cast<std::int32_t>(place->x + turnedSize.width),
                      static_cast<std::int32_t>(place->y + turnedSize.height)};
}

/// Whether a file has a part for extra words: when its source has one, or its name asks for it.
bool HasExtraPart(const SWordExtras& extras, const wchar_t* path) {
    return extras.words != nullptr || NamesExtraWordFile(path);
}

/// Writes both stores of an object whose matrix store holds `area`, the extra words turned into it.
Status WriteBothParts(CCNewChromaCorrectCoef& object, const SWordExtras& extras, std::uint32_t code,
                      const wchar_t* path, const SPixelRect& area, const SOwnerFields& owner) {
    CCaliBuf& words = *object.ExtraStore();
    if (const Status status = HoldRect(words, area); Failed(status))
        return status;
    const PixelSize size = CQuarterTurn(code, area.Width(), area.Height()).TurnedSize();
    if (extras.words != nullptr)
        PutTurned<SWordCoef>(
            extras.words->Buffer(),
            {0, 0, static_cast<std::int32_t>(size.width), static_cast<std::int32_t>(size.height)},
            code, words, static_cast<std::uint32_t>(area.left),
            static_cast<std::uint32_t>(area.top));
    return WriteExtraWordFile(object.Store(), &words, path, area, owner);
}

template <class Element>
Status SaveWithExtras(const CChromaCorrectCoef& turned, const wchar_t* path,
                      const SWordExtras& extras, std::uint32_t code, const SPixelRect& area) {
    WordObject<Element> object;
    SetFileKind<Element>(object);
    if (const Status status = HoldRect(*object.Store(), area); Failed(status))
        return status;
    CopyFromMap<Element>(turned, object, area.left, area.top);
    const auto* const name = reinterpret_cast<const std::byte*>(extras.header->ownerData.data());
    const std::uint8_t* const flag = &extras.header->ownerFlag;
    if constexpr (kWordKind<Element>.extraWordFormatId.has_value())
        if (HasExtraPart(extras, path))
            return WriteBothParts(object, extras, code, path, area, {.name = name, .flag = flag});
    return object.WriteChunkFile(path, area, name, flag);
}

/// The answer of `look`, which is handed the file at `path`, opened once for all that follows on it.
/// E_COEF_INVALIDARG for a null path, E_COEF_OPENFAILED.
template <class Look>
Status TakeOnce(const wchar_t* path, Look look) {
    if (path == nullptr)
        return E_COEF_INVALIDARG;
    CInputFile file;
    if (!OpenRead(file, path))
        return E_COEF_OPENFAILED;
    const Status status = look(file);
    NoteIfRefused(file);
    return status;
}

/// Whether a word file starts so; a float file may carry a word kind's name.
bool IsWordFile(const SChunkHeader& header) {
    return std::any_of(kWordKinds.begin(), kWordKinds.end(), [&](const SListedWordKind& kind) {
        return kind.row->HasFormat(header.formatId);
    });
}

bool HasExtraWords(const SChunkHeader& header) {
    return std::any_of(kWordKinds.begin(), kWordKinds.end(), [&](const SListedWordKind& kind) {
        return kind.row->extraWordFormatId == header.formatId;
    });
}

bool HasOwner(const SChunkHeader& header) {
    return header.ownerFlag != 0 || std::any_of(header.ownerData.begin(), header.ownerData.end(),
                                                [](std::uint8_t byte) { return byte != 0; });
}

std::vector<std::string> DescribeLosses(const SChunkHeader& header) {
    std::vector<std::string> losses;
    if (!IsWordFile(header))
        return losses;
    if (HasExtraWords(header))
        losses.emplace_back("its extra words");
    if (HasOwner(header))
        losses.emplace_back("its owner name and flag");
    if (header.originX != 0 || header.originY != 0)
        losses.push_back(fmt::format("its origin ({}, {})", header.originX, header.originY));
    return losses;
}

} // namespace

Status LoadWordCoefFile(EWordKind kind, CChromaCorrectCoef& map, const wchar_t* path,
                        const SMapRegion& region) {
    return TakeOnce(
        path, [&](std::istream& stream) { return LoadWordCoefFile(kind, map, stream, region); });
}

Status LoadWordCoefFile(EWordKind kind, CChromaCorrectCoef& map, std::istream& stream,
                        const SMapRegion& region) {
    CWordFileSource file(stream);
    return VisitElementOf(kind, E_COEF_INVALIDARG, [&]<class Element>() {
        return Load<Element>(map, file, region, nullptr);
    });
}

Status LoadWordCoefFile(EWordKind kind, CChromaCorrectCoef& map, std::istream& stream,
                        SWordExtras& extras) {
    extras = {};
    CWordFileSource file(stream);
    return VisitElementOf(kind, E_COEF_INVALIDARG,
                          [&]<class Element>() { return Load<Element>(map, file, {}, &extras); });
}

Status SaveWordCoefFile(EWordKind kind, const CChromaCorrectCoef& map, const wchar_t* path) {
    if (path == nullptr)
        return E_COEF_INVALIDARG;
    return SaveThroughObject(kind, map, [&](auto& object, const SPixelRect& rect) {
        return object.ExportCoef(path, rect, nullptr, nullptr);
    });
}

Status SaveWordCoefFile(EWordKind kind, const CChromaCorrectCoef& map, std::ostream& stream) {
    const Status status =
        SaveThroughObject(kind, map, [&](const auto& object, const SPixelRect& rect) {
            return object.WriteChunkStream(stream, rect);
        });
    if (!Failed(status))
        stream.seekp(0, std::ios::end); // the directory is written last
    return status;
}

Status SaveWordCoefFile(EWordKind kind, const CChromaCorrectCoef& turned, const wchar_t* path,
                        const SWordExtras& extras, std::uint32_t code,
                        const std::optional<PixelSize>& wall) {
    if (path == nullptr || !extras.header)
        return E_COEF_INVALIDARG;
    if (const Status status = CheckSaved(turned); Failed(status))
        return status;
    const auto area = TurnedArea(*extras.header, {turned.Width(), turned.Height()}, code, wall);
    if (!area)
        return E_COEF_INVALIDARG;
    return VisitElementOf(kind, E_COEF_INVALIDARG, [&]<class Element>() {
        return SaveWithExtras<Element>(turned, path, extras, code, *area);
    });
}

Status ReadWordCoefSize(EWordKind kind, const wchar_t* path, std::uint32_t& width,
                        std::uint32_t& height) {
    width = 0;
    height = 0;
    return TakeOnce(
        path, [&](std::istream& stream) { return ReadWordCoefSize(kind, stream, width, height); });
}

Status ReadWordCoefSize(EWordKind kind, std::istream& stream, std::uint32_t& width,
                        std::uint32_t& height) {
    width = 0;
    height = 0;
    CWordFileSource file(stream);
    const Status status = VisitElementOf(kind, E_COEF_INVALIDARG, [&]<class Element>() {
        return FindSize<Element>(file, width, height);
    });
    file.Rewind();
    return status;
}

std::string DescribeOriginProblem(EWordKind kind, std::istream& stream, const PixelSize& size,
                                  std::uint32_t code, const std::optional<PixelSize>& wall) {
    const SListedWordKind* const listed = FindListedKind(kind);
    CWordFileSource file(stream);
    const auto header = ReadChunkHeader(*file.Open());
    if (listed == nullptr || !header || !IsHeaderOf(*listed->row, *header))
        return {};
    const auto place = TurnedOrigin(*header, size, code, wall);
    if (!place)
        return fmt::format("its {} x {} pixels at its origin ({}, {}) do not lie within the wall "
                           "of {} x {}",
                           size.width, size.height, header->originX, header->originY, wall->width,
                           wall->height);
    const PixelSize turned = CQuarterTurn(code, size.width, size.height).TurnedSize();
    if (!IsInGrid(*place, turned))
        return fmt::format("its origin cannot be kept: {} x {} pixels at ({}, {}) reach out of the "
                           "{} x {} that a word file can place",
                           turned.width, turned.height, place->x, place->y, kGridWidth,
                           kGridHeight);
    return {};
}

std::vector<std::string> DescribeUnkeptExtras(EWordKind kind, std::istream& stream) {
    const SListedWordKind* const listed = FindListedKind(kind);
    CWordFileSource file(stream);
    const auto header = ReadChunkHeader(*file.Open());
    if (listed == nullptr || !header || IsHeaderOf(*listed->row, *header))
        return {};
    return DescribeLosses(*header);
}

std::vector<std::string> DescribeWordFileLosses(const wchar_t* path) {
    std::vector<std::string> losses;
    DropStatus(TakeOnce(path, [&](std::istream& stream) { // a file that does not open has none
        losses = DescribeWordFileLosses(stream);
        return S_OK;
    }));
    return losses;
}

std::vector<std::string> DescribeWordFileLosses(std::istream& stream) {
    CWordFileSource file(stream);
    std::istream& looked = *file.Open();
    const bool hasHeader = BytesToEnd(looked).value_or(0) >= kChunkHeaderBytes;
    const auto header = ReadChunkHeader(looked);
    file.Rewind();
    if (hasHeader && !header)
        CTransferReport::NoteReadFailed();
    return header ? DescribeLosses(*header) : std::vector<std::string>();
}

} // namespace trevolt
