#include "coef/MapCorrectCoef.h"

#include <algorithm>
#include <array>
#include <limits>

#include "coef/FileSize.h"
#include "trevolt/FixedPoint.h"
#include "trevolt/PlacedCoefFile.h"
#include "trevolt/RawMapFile.h"
#include "trevolt/RegionCoefFile.h"
#include "trevolt/TextCoefFile.h"
#include "trevolt/TransferReport.h"
#include "trevolt/TurnedCoefFile.h"

namespace trevolt {
namespace {

const std::array<const SBinaryFileKind*, 4> kBinaryFiles{&k9fFile, &k3fFile, &k9bFile, &k3bFile};

const SBinaryFileKind* FindBinaryFile(const ChunkFormatId& magic) {
    for (const SBinaryFileKind* kind : kBinaryFiles)
        if (kind->magic == magic)
            return kind;
    return nullptr;
}

/// The columns or rows of a text file that a store can take. Size lines may be negative: of such a
/// file there are none.
std::uint32_t TextExtentIn(std::uint32_t storeExtent, std::uint32_t fileExtent) {
    constexpr std::uint32_t kLargest = std::numeric_limits<std::int32_t>::max();
    return fileExtent > kLargest ? 0 : std::min(fileExtent, storeExtent);
}

} // namespace

/// The float kind that an object loads as its own.
template <class Element>
constexpr const SBinaryFileKind& kOwnBinary = k9fFile;
template <>
constexpr const SBinaryFileKind& kOwnBinary<S3WordCoef> = k3fFile;

template <class Element>
CMapCorrectCoef<Element>::CMapCorrectCoef() : m_pMap(std::make_unique<CChromaCorrectCoef>()) {}

// ---- converting transfers ----

template <class Element>
Status CMapCorrectCoef<Element>::SetRectFromBytes(std::uint32_t x, std::uint32_t y,
                                                  std::uint32_t width, std::uint32_t height,
                                                  const std::uint8_t* values,
                                                  std::uint32_t divisor) {
    if (divisor == 0)
        return E_COEF_INVALIDARG;
    return ConvertIn<Element>(
        Store(), {x, y, width, height}, values, kElementWords<Element>,
        [](std::size_t word) { return word; },
        [&](std::uint8_t value) {
            return static_cast<std::uint16_t>(std::uint32_t{value} * kFullScale / divisor);
        });
}

template <class Element>
Status CMapCorrectCoef<Element>::SetRectFromMatrixFloat(std::uint32_t x, std::uint32_t y,
                                                        std::uint32_t width, std::uint32_t height,
                                                        const float* values) {
    return ConvertIn<Element>(
        Store(), {x, y, width, height}, values, kElementWords<S9WordCoef>,
        [](std::size_t word) { return kWordKind<Element>.mapValues[word]; }, CutToWord);
}

// ---- files through the map ----

template <class Element>
Status CMapCorrectCoef<Element>::TakeFromMap(const SStoreRect& target) {
    const Status status = MapToStore<Element>(*m_pMap, 0, 0, Store(), target);
    if (!Failed(status))
        m_pMap->Reset();
    return status;
}

template <class Element>
Status CMapCorrectCoef<Element>::SizeMapFor(const SBinaryFileKind& kind, CWordFileSource& file,
                                            SStoreRect& extent) {
    std::uint32_t width = 1;
    std::uint32_t height = 1;
    // A failure leaves 1 × 1, and the reader meets it again.
    DropStatus(ReadBinarySize(kind, file, width, height));
    extent.width = width;
    extent.height = height;
    return SizeMap(*m_pMap, std::min(width, this->GetWidth()), std::min(height, this->GetHeight()));
}

template <class Element>
Status CMapCorrectCoef<Element>::ReadIntoMap(const SBinaryFileKind& kind, CWordFileSource& file) {
    return file.Take([&](std::istream& stream) { return kind.read(*m_pMap, stream); });
}

template <class Element>
Status CMapCorrectCoef<Element>::LoadBinary(const SBinaryFileKind& kind, const wchar_t* path,
                                            std::uint32_t x, std::uint32_t y) {
    CWordFileSource file(path);
    SStoreRect extent{x, y};
    if (const Status status = SizeMapFor(kind, file, extent); Failed(status))
        return status;
    if (const Status status = ReadIntoMap(kind, file); Failed(status))
        return status;
    return TakeFromMap({x, y, m_pMap->Width(), m_pMap->Height()});
}

template <class Element>
Status CMapCorrectCoef<Element>::LoadOwnBinary(CWordFileSource& file, std::uint32_t x,
                                               std::uint32_t y) {
    if (Store() == nullptr)
        return E_POINTER;
    SStoreRect extent{x, y};
    if (const Status status = SizeMapFor(kOwnBinary<Element>, file, extent); Failed(status))
        return status;
    const Status read = ReadIntoMap(kOwnBinary<Element>, file);
    if (Failed(read))
        CTransferReport::NoteFailedRead(read);
    // Scarce memory says nothing of the file, and must not cost what the store holds.
    if (read == E_OUTOFMEMORY)
        return E_FAIL;
    if (!Failed(read))
        return TakeFromMap({x, y, m_pMap->Width(), m_pMap->Height()});
    return TakeFromMap(extent); // of a file that is not read the map has the defaults
}

template <class Element>
void CMapCorrectCoef<Element>::LoadMapImage(CWordFileSource& file, std::uint32_t x,
                                            std::uint32_t y) {
    // The load of an image is S_OK whatever it held. The map has no size then, so that no pixel of
    // the store gets data.
    const Status read =
        file.Take([&](std::istream& stream) { return ReadRawMapFile(*m_pMap, stream); });
    if (Failed(read))
        CTransferReport::NoteFailedRead(read);
    CTransferReport::NoteMissingPixels(std::uint64_t{this->GetWidth()} * this->GetHeight());
    const auto width = std::min<std::uint32_t>(m_pMap->Width(), this->GetWidth());
    const auto height = std::min<std::uint32_t>(m_pMap->Height(), this->GetHeight());
    DropStatus(TakeFromMap({x, y, width, height}));
    m_pMap->Reset();
}

template <class Element>
Status CMapCorrectCoef<Element>::LoadRecognised(const ChunkFormatId& magic, CWordFileSource& file,
                                                std::uint32_t x, std::uint32_t y) {
    if (magic == this->Kind().formatId)
        return LoadChunkFile(Store(), file, x, y);
    if (magic == kRawMapMagic) {
        LoadMapImage(file, x, y);
        return S_OK;
    }
    return magic == kOwnBinary<Element>.magic ? LoadOwnBinary(file, x, y) : E_COEF_BADFORMAT;
}

template <class Element>
Status CMapCorrectCoef<Element>::LoadFile(CWordFileSource& file, std::uint32_t x, std::uint32_t y) {
    ChunkFormatId magic{};
    const Status status = ReadFileMagic(file, magic);
    return Failed(status) ? status : LoadRecognised(magic, file, x, y);
}

template <class Element>
Status CMapCorrectCoef<Element>::LoadCoefRect(const wchar_t* path, std::uint32_t x,
                                              std::uint32_t y) {
    CWordFileSource file(path);
    return LoadFile(file, x, y);
}

template <class Element>
Status CMapCorrectCoef<Element>::LoadText(const wchar_t* path, std::int32_t x, std::int32_t y,
                                          std::uint32_t& width, std::uint32_t& height,
                                          bool diagonalOnly) {
    if (x < 0 || y < 0)
        return E_COEF_INVALIDARG;
    std::uint32_t fileWidth = 0;
    std::uint32_t fileHeight = 0;
    if (const Status status = ProbeTextCoefFileSize(path, fileWidth, fileHeight); Failed(status))
        return status;
    if (const Status status = SizeMap(*m_pMap, TextExtentIn(this->GetWidth(), fileWidth),
                                      TextExtentIn(this->GetHeight(), fileHeight));
        Failed(status))
        return status;
    fileWidth = width;
    fileHeight = height;
    if (const Status status =
            ReadTextCoefFile(*m_pMap, path, 0, 0, fileWidth, fileHeight, diagonalOnly);
        Failed(status))
        return status;
    const Status status = TakeFromMap({static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y),
                                       m_pMap->Width(), m_pMap->Height()});
    if (!Failed(status)) {
        width = fileWidth;
        height = fileHeight;
    }
    return status;
}

template <class Element>
Status CMapCorrectCoef<Element>::LoadFromTextA(const wchar_t* path, std::int32_t x, std::int32_t y,
                                               std::uint32_t& width, std::uint32_t& height) {
    return LoadText(path, x, y, width, height, /*diagonalOnly=*/false);
}

template <class Element>
Status CMapCorrectCoef<Element>::LoadFromTextB(const wchar_t* path, std::int32_t x, std::int32_t y,
                                               std::uint32_t& width, std::uint32_t& height) {
    return LoadText(path, x, y, width, height, /*diagonalOnly=*/true);
}

template <class Element>
Status CMapCorrectCoef<Element>::ImportTable49(const wchar_t* path, SPixelRect& rect, bool clip,
                                               const bool* mask) {
    return PlaceFile<S9fCoefKind>(Place9fCoefFile, path, rect, clip, mask);
}

template <class Element>
Status CMapCorrectCoef<Element>::ImportTable50(const wchar_t* path, SPixelRect& rect, bool clip,
                                               const bool* mask) {
    return PlaceFile<S3fCoefKind>(Place3fCoefFile, path, rect, clip, mask);
}

template <class Element>
Status CMapCorrectCoef<Element>::ImportTable51(const wchar_t* path, SPixelRect& rect, bool clip,
                                               const bool* mask) {
    return PlaceFile<S9bCoefKind>(Place9bCoefFile, path, rect, clip, mask);
}

template <class Element>
Status CMapCorrectCoef<Element>::ImportTable52(const wchar_t* path, SPixelRect& rect, bool clip,
                                               const bool* mask) {
    return PlaceFile<S3bCoefKind>(Place3bCoefFile, path, rect, clip, mask);
}

template <class Element>
Status CMapCorrectCoef<Element>::ImportTable53(const wchar_t* path, std::uint32_t x,
                                               std::uint32_t y) {
    return LoadBinary(k9fFile, path, x, y);
}

template <class Element>
Status CMapCorrectCoef<Element>::ImportTable54(const wchar_t* path, std::uint32_t x,
                                               std::uint32_t y) {
    return LoadBinary(k3fFile, path, x, y);
}

template <class Element>
Status CMapCorrectCoef<Element>::ImportTable55(const wchar_t* path, std::uint32_t x,
                                               std::uint32_t y) {
    return LoadBinary(k9bFile, path, x, y);
}

template <class Element>
Status CMapCorrectCoef<Element>::ImportTable56(const wchar_t* path, std::uint32_t x,
                                               std::uint32_t y) {
    return LoadBinary(k3bFile, path, x, y);
}

template <class Element>
template <class Read>
Status CMapCorrectCoef<Element>::LoadDiagonal(const SBinaryFileKind& kind, const wchar_t* path,
                                              Read&& read) {
    CWordFileSource file(path);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    if (const Status status = ReadBinarySize(kind, file, width, height); Failed(status))
        return status;
    SPixelRect rect{0, 0, EdgeInStore(0, width, this->GetWidth()),
                    EdgeInStore(0, height, this->GetHeight())};
    return ChangeRect(rect, [&](CChromaCorrectCoef& map, const SPixelRect&) { return read(map); });
}

template <class Element>
Status CMapCorrectCoef<Element>::ImportTable57(const wchar_t* path,
                                               const SOperationRecord* operation) {
    return LoadDiagonal(k9fFile, path, [&](CChromaCorrectCoef& map) {
        return ReadDiagonal9fCoefFile(map, path, operation);
    });
}

template <class Element>
Status CMapCorrectCoef<Element>::ImportTable58(const wchar_t* path) {
    return LoadDiagonal(k9bFile, path,
                        [&](CChromaCorrectCoef& map) { return ReadDiagonal9bCoefFile(map, path); });
}

template <class Element>
Status CMapCorrectCoef<Element>::ImportFromView(const CChromaCorrectCoef* map,
                                                const SPixelRect& rect) {
    const auto target = FromEdges(rect);
    if (map == nullptr || !target)
        return E_COEF_INVALIDARG;
    return MapToStore<Element>(*map, 0, 0, Store(), *target);
}

template <class Element>
Status CMapCorrectCoef<Element>::ImportFromWords(std::uint32_t x, std::uint32_t y,
                                                 std::uint32_t width, std::uint32_t height,
                                                 const std::uint16_t* words) {
    SStoreRect rect{x, y, width, height};
    if (const Status status = CutToStore(Store(), words, rect); Failed(status) || rect.IsEmpty())
        return status;
    if (const Status status = SizeMap(*m_pMap, rect.width, rect.height); Failed(status))
        return status;
    const std::uint16_t* next = words;
    for (std::int32_t row = 0; row < m_pMap->Height(); ++row)
        for (std::int32_t column = 0; column < m_pMap->Width(); ++column)
            for (std::size_t k = 0; k < kElementWords<S9WordCoef>; ++k)
                m_pMap->FindElement(column, row)->m[k] = WordToFloat(*next++);
    return TakeFromMap(rect);
}

template <class Element>
Status CMapCorrectCoef<Element>::LoadLegacyEx(const wchar_t* path, SPixelRect& rect) {
    if (rect.left < 0 || rect.top < 0)
        return E_COEF_INVALIDARG;
    CWordFileSource file(path);
    ChunkFormatId magic{};
    if (const Status status = ReadFileMagic(file, magic); Failed(status))
        return status;
    const SBinaryFileKind* const kind = FindBinaryFile(magic);
    if (kind == nullptr)
        return E_COEF_BADFORMAT;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    if (const Status status = ReadBinarySize(*kind, file, width, height); Failed(status))
        return status;
    const Status status = LoadBinary(*kind, path, static_cast<std::uint32_t>(rect.left),
                                     static_cast<std::uint32_t>(rect.top));
    if (!Failed(status)) {
        rect.right = EdgeInStore(rect.left, width, this->GetWidth());
        rect.bottom = EdgeInStore(rect.top, height, this->GetHeight());
    }
    return status;
}

template <class Element>
Status CMapCorrectCoef<Element>::LoadLegacy(const wchar_t* path) {
    SPixelRect rect;
    return LoadLegacyEx(path, rect);
}

template <class Element>
Status CMapCorrectCoef<Element>::SaveCoefKind72(const wchar_t* path, const SPixelRect& rect) {
    return SaveThroughMap([&](const auto& map) { return WriteRegion9fCoefFile(map, path, rect); });
}

template <class Element>
Status CMapCorrectCoef<Element>::SaveCoefKind73(const wchar_t* path, const SPixelRect& rect) {
    return SaveThroughMap([&](const auto& map) { return WriteRegion3fCoefFile(map, path, rect); });
}

template <class Element>
Status CMapCorrectCoef<Element>::SaveCoefKind74(const wchar_t* path, const SPixelRect& rect) {
    return SaveThroughMap([&](const auto& map) { return WriteRegion9bCoefFile(map, path, rect); });
}

template <class Element>
Status CMapCorrectCoef<Element>::SaveCoefKind75(const wchar_t* path, const SPixelRect& rect) {
    return SaveThroughMap([&](const auto& map) { return WriteRegion3bCoefFile(map, path, rect); });
}

template <class Element>
Status CMapCorrectCoef<Element>::SaveLegacy81(const wchar_t* path, const SPixelRect& rect,
                                              std::uint32_t mode) {
    return SaveThroughMap(
        [&](const auto& map) { return WriteTurned9fCoefFile(map, path, rect, mode); });
}

template <class Element>
Status CMapCorrectCoef<Element>::SaveLegacy84(const wchar_t* path, const SPixelRect& rect,
                                              std::uint32_t mode) {
    return SaveThroughMap(
        [&](const auto& map) { return WriteTurned3fCoefFile(map, path, rect, mode); });
}

template <class Element>
Status CMapCorrectCoef<Element>::SaveLegacy85(const wchar_t* path) {
    return SaveThroughMap([&](const auto& map) { return Write3fCoefFile(map, path, nullptr); });
}

// ---- sizes ----

template <class Element>
Status CMapCorrectCoef<Element>::GetCoefSize89(const wchar_t* path, std::uint32_t& width,
                                               std::uint32_t& height) {
    CWordFileSource file(path);
    return QueryBinarySize(k9bFile, file, width, height);
}

template <class Element>
Status CMapCorrectCoef<Element>::GetCoefSize90(const wchar_t* path, std::uint32_t& width,
                                               std::uint32_t& height) {
    CWordFileSource file(path);
    return QueryBinarySize(k3bFile, file, width, height);
}

template <class Element>
Status CMapCorrectCoef<Element>::GetCoefSize91(const wchar_t* path, std::uint32_t& width,
                                               std::uint32_t& height) {
    return ProbeTextCoefFileSize(path, width, height);
}

// ---- streams and views ----

template <class Element>
Status CMapCorrectCoef<Element>::SaveBlocks105(std::ostream& stream) {
    return WriteWholeStream(this->Kind(), Store(), stream, this->OwnerFields(nullptr, nullptr));
}

template <class Element>
Status CMapCorrectCoef<Element>::SaveBlocks106(std::ostream& stream, const SPixelRect& rect) {
    return this->WriteChunkStream(stream, rect);
}

template <class Element>
Status CMapCorrectCoef<Element>::LoadBlocks107(std::istream& stream, std::uint32_t x,
                                               std::uint32_t y) {
    return LoadBlocks108(stream, x, y, 0, 0);
}

template <class Element>
Status CMapCorrectCoef<Element>::LoadBlocks108(std::istream& stream, std::uint32_t x,
                                               std::uint32_t y, std::uint32_t clipWidth,
                                               std::uint32_t clipHeight) {
    return Store() == nullptr ? E_POINTER
                              : Store()->ReadRectChunks(stream, x, y, clipWidth, clipHeight);
}

template <class Element>
Status CMapCorrectCoef<Element>::LoadBlocks109(std::istream& stream, std::uint32_t x,
                                               std::uint32_t y, std::uint32_t firstIndex,
                                               std::uint32_t endIndex) {
    return Store() == nullptr ? E_POINTER
                              : Store()->ReadBandChunks(stream, x, y, firstIndex, endIndex);
}

template <class Element>
Status CMapCorrectCoef<Element>::GetStoreInfo(SStoreInfo& info) const {
    const CCaliBuf* const store = Store();
    if (store == nullptr)
        return E_FAIL;
    info = {.width = store->Width(),
            .height = store->Height(),
            .elementBytes = store->ElemSize(),
            .planeCount = store->PlaneCount(),
            .blockCount = static_cast<std::uint32_t>(store->UsedBlocks().size()),
            .bytesInUse = store->BytesInUse(),
            .sizeLimit = store->SizeLimit(),
            .maxImageBytes = store->MaxMemoryImageBytes()};
    return S_OK;
}

template <class Element>
Status CMapCorrectCoef<Element>::CopyRectOut123(std::uint32_t x, std::uint32_t y,
                                                const SWordTarget& target) const {
    return this->CopyViewOut(x, y, target);
}

template class CMapCorrectCoef<S3WordCoef>;
template class CMapCorrectCoef<S9WordCoef>;

} // namespace trevolt
