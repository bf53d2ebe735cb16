#include "calibuf/ChunkDirectory.h"

#include <algorithm>

#include "calibuf/PlaneCodec.h"
#include "platform/FileStream.h"

namespace trevolt {

Status ReadDirectory(std::istream& stream, std::uint32_t count, std::uint32_t planeCount,
                     CBudgetBlock& bytes) {
    const std::uint64_t size = std::uint64_t{count} * ChunkRecordBytes(planeCount);
    const auto stored = BytesToEnd(stream);
    if (!stored || size > *stored) {
        stream.setstate(std::ios::failbit);
        return E_FAIL;
    }
    bytes = CBudgetBlock(static_cast<std::size_t>(size));
    if (!bytes)
        return E_COEF_NOBUFFER;
    stream.read(reinterpret_cast<char*>(bytes.Data()), static_cast<std::streamsize>(size));
    return stream ? S_OK : E_FAIL;
}

Status ReadRectDirectory(std::istream& stream, const SChunkHeader& header, std::size_t elemSize,
                         std::uint32_t planeCount, CBudgetBlock& bytes) {
    if (elemSize == sizeof(SWordCoef)) {
        if (header.directoryOffset < kChunkHeaderBytes)
            return E_FAIL;
        stream.seekg(static_cast<std::streamoff>(header.directoryOffset));
    }
    return ReadDirectory(stream, header.recordCount, planeCount, bytes);
}

SLargestChunk::SLargestChunk(const SChunkDirectory& directory, std::size_t elemSize) {
    for (std::uint32_t i = 0; i < directory.count; ++i) {
        const SChunkRecord record = directory[i];
        if (!IsPossibleChunk(record, elemSize))
            continue;
        elements = std::max<std::size_t>(elements, record.Elements());
        compressedBytes = std::max<std::size_t>(compressedBytes, record.totalSize);
    }
}

} // namespace trevolt
