#include "coef/ChunkFile.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "common/WrittenFile.h"
#include "platform/FileStream.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

constexpr std::ios::openmode kCreate = std::ios::out | std::ios::trunc;
constexpr std::ios::openmode kReopen = std::ios::in | std::ios::out;

SChunkHeader MakeWholeHeader(const SWordKind& kind, const CCaliBuf& store,
                             const SOwnerFields& owner) {
    SChunkHeader header = MakeChunkHeader(kind.formatId, {}, owner);
    header.width = store.Width();
    header.height = store.Height();
    header.recordCount = static_cast<std::uint32_t>(store.UsedBlocks().size());
    return header;
}

Status StatusOf(const std::ios& stream) { return stream ? S_OK : E_FAIL; }

/// Notes a writer's failure that the operation's status does not tell.
void NoteUntold(Status status) {
    if (Failed(status))
        CTransferReport::NoteWriteFailed();
}

} // namespace

std::uint32_t RectBlockCount(const SPixelRect& rect) {
    constexpr std::uint64_t kLargest = std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::uint32_t>(std::min(BlocksTouchedBy(rect).Count(), kLargest));
}

SChunkHeader MakeChunkHeader(const ChunkFormatId& formatId, const SPixelRect& rect,
                             const SOwnerFields& owner) {
    SChunkHeader header;
    header.formatId = formatId;
    header.originX = static_cast<std::uint32_t>(rect.left);
    header.originY = static_cast<std::uint32_t>(rect.top);
    header.width = static_cast<std::uint32_t>(rect.Width());
    header.height = static_cast<std::uint32_t>(rect.Height());
    header.recordCount = RectBlockCount(rect);
    header.fileKind = owner.fileKind;
    if (owner.name == nullptr)
        return header;
    std::memcpy(header.ownerData.data(), owner.name, header.ownerData.size());
    header.ownerFlag = owner.flag == nullptr ? std::uint8_t{0} : *owner.flag;
    return header;
}

Status WriteRectFile(const SWordKind& kind, const CCaliBuf* store, const wchar_t* path,
                     const SPixelRect& rect, const SOwnerFields& owner) {
    if (path == nullptr || store == nullptr)
        return E_POINTER;
    COutputFile stream;
    if (!OpenWritten(stream, path, kCreate))
        return kind.outputOpenFailed;
    WriteChunkHeader(stream, MakeChunkHeader(kind.formatId, rect, owner));
    if ((rect.*kind.writtenExtent)() != 0)
        NoteUntold(store->WriteRectChunks(stream, rect));
    CloseWritten(stream);
    return S_OK;
}

Status WriteBandFile(const SWordKind& kind, const CCaliBuf* store, const wchar_t* path,
                     const SPixelRect& band, const SBandPlace& place, const SOwnerFields& owner) {
    if (path == nullptr || store == nullptr)
        return E_POINTER;
    if (place.offset > static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max()))
        return E_COEF_INVALIDARG;
    const bool isFirst = place.offset == 0;
    COutputFile stream;
    if (!OpenWritten(stream, path, isFirst ? kCreate : kReopen))
        return kind.outputOpenFailed;
    if (isFirst)
        WriteChunkHeader(stream, MakeChunkHeader(kind.formatId, place.whole, owner));
    Status status = S_OK;
    if (band.Height() != 0)
        status =
            store->WriteBandChunks(stream, band, place.whole, place.directoryPosition,
                                   place.dataPosition, 0, static_cast<std::int32_t>(place.offset));
    CloseWritten(stream);
    return status;
}

Status WriteWholeFile(const SWordKind& kind, const CCaliBuf* store, const wchar_t* path,
                      const SOwnerFields& owner) {
    if (path == nullptr || store == nullptr)
        return E_POINTER;
    COutputFile stream;
    if (!OpenWritten(stream, path, kCreate))
        return E_COEF_OPENFAILED;
    NoteUntold(WriteWholeStream(kind, store, stream, owner));
    CloseWritten(stream);
    return S_OK;
}

Status WriteRectStream(const SWordKind& kind, const CCaliBuf* store, std::ostream& stream,
                       const SPixelRect& rect, const SOwnerFields& owner) {
    if (store == nullptr)
        return E_POINTER;
    if (const Status status = CCaliBuf::CheckWrittenRect(rect); Failed(status))
        return status;
    WriteChunkHeader(stream, MakeChunkHeader(kind.formatId, rect, owner));
    const Status status = store->WriteRectChunks(stream, rect);
    return Failed(status) ? status : StatusOf(stream);
}

Status WriteWholeStream(const SWordKind& kind, const CCaliBuf* store, std::ostream& stream,
                        const SOwnerFields& owner) {
    if (store == nullptr)
        return E_POINTER;
    WriteChunkHeader(stream, MakeWholeHeader(kind, *store, owner));
    const Status status = store->WriteAllChunks(stream);
    return Failed(status) ? status : StatusOf(stream);
}

Status WriteExtraWordStream(const CCaliBuf* matrix, const CCaliBuf* extra, std::ostream& stream,
                            const SPixelRect& rect, const SOwnerFields& owner) {
    if (matrix == nullptr)
        return E_POINTER;
    const std::streampos start = stream.tellp();
    SChunkHeader header = MakeChunkHeader(kChromaChunkFormat2, rect, owner);
    // The header is known whole only at the end; until then its place is held with zeros.
    WriteChunkHeader(stream, SChunkHeader{.version = 0});
    const bool hasColumns = rect.Width() != 0;
    if (hasColumns)
        NoteUntold(matrix->WriteRectChunks(stream, rect));
    stream.seekp(0, std::ios::end);
    const std::streamoff extraStart = stream.tellp();
    // Where no header can lead to the extra words they are left out, and the matrix still loads.
    const bool isReachable = IsDirectoryOffset(extraStart);
    if (isReachable) {
        header.directoryOffset = static_cast<std::uint32_t>(extraStart);
        if (extra != nullptr && hasColumns)
            NoteUntold(extra->WriteRectChunks(stream, rect));
    }
    stream.seekp(start);
    WriteChunkHeader(stream, header);
    return isReachable ? StatusOf(stream) : E_FAIL;
}

Status WriteExtraWordFile(const CCaliBuf* matrix, const CCaliBuf* extra, const wchar_t* path,
                          const SPixelRect& rect, const SOwnerFields& owner) {
    if (path == nullptr || matrix == nullptr)
        return E_POINTER;
    COutputFile stream;
    if (!OpenWritten(stream, path, kCreate))
        return E_COEF_OPENFAILED;
    NoteUntold(WriteExtraWordStream(matrix, extra, stream, rect, owner));
    CloseWritten(stream);
    return S_OK;
}

Status ReadFileMagic(CWordFileSource& file, ChunkFormatId& magic) {
    return file.Take([&](std::istream& stream) {
        magic.fill(0);
        if (!stream.read(reinterpret_cast<char*>(magic.data()),
                         static_cast<std::streamsize>(magic.size())))
            magic.fill(0);
        return S_OK;
    });
}

Status ReadChunkFileHeader(CWordFileSource& file, const SWordKind& kind, SChunkHeader& header) {
    return file.Take([&](std::istream& stream) {
        const auto read = ReadChunkHeader(stream);
        if (!read || !kind.HasFormat(read->formatId))
            return E_COEF_BADFORMAT;
        header = *read;
        return S_OK;
    });
}

Status ReadOwnerData(const wchar_t* path, const SWordKind& kind, std::byte* name,
                     std::uint32_t capacity, std::uint8_t& flag) {
    CWordFileSource file(path);
    SChunkHeader header;
    if (const Status status = ReadChunkFileHeader(file, kind, header); Failed(status))
        return status;
    if (name != nullptr)
        std::memcpy(name, header.ownerData.data(),
                    std::min<std::size_t>(capacity, header.ownerData.size()));
    flag = header.ownerFlag;
    return S_OK;
}

Status LoadChunkFile(CCaliBuf* store, CWordFileSource& file, std::uint32_t x, std::uint32_t y) {
    if (store == nullptr)
        return E_POINTER;
    std::istream* const stream = file.Open();
    return stream == nullptr ? E_HANDLE : store->ReadRectChunks(*stream, x, y, 0, 0);
}

Status LoadExtraWordFile(CCaliBuf* matrix, CCaliBuf* extra, CWordFileSource& file, std::uint32_t x,
                         std::uint32_t y) {
    if (matrix == nullptr || extra == nullptr)
        return E_POINTER;
    std::istream* const stream = file.Open();
    if (stream == nullptr)
        return E_COEF_OPENFAILED;
    if (Failed(matrix->ReadRectChunks(*stream, x, y, 0, 0)))
        return E_FAIL;
    // The extra-word store reads the header again and follows it to its own part.
    file.Rewind();
    return extra->ReadRectChunks(*stream, x, y, 0, 0);
}

} // namespace trevolt
