#include "calibuf/ChunkLayout.h"

#include <cstring>

#include "common/LittleEndian.h"

namespace trevolt {

ChunkHeaderBytes EncodeChunkHeader(const SChunkHeader& header) {
    namespace at = chunk_header;
    ChunkHeaderBytes bytes{};
    std::byte* const to = bytes.data();
    std::memcpy(to + at::kFormatId, header.formatId.data(), header.formatId.size());
    StoreLittle<std::uint32_t>(to + at::kVersion, header.version);
    StoreLittle<std::uint32_t>(to + at::kOriginX, header.originX);
    StoreLittle<std::uint32_t>(to + at::kOriginY, header.originY);
    StoreLittle<std::uint32_t>(to + at::kWidth, header.width);
    StoreLittle<std::uint32_t>(to + at::kHeight, header.height);
    StoreLittle<std::uint32_t>(to + at::kRecordCount, header.recordCount);
    StoreLittle<std::uint8_t>(to + at::kFileKind, header.fileKind);
    std::memcpy(to + at::kOwnerData, header.ownerData.data(), header.ownerData.size());
    StoreLittle<std::uint8_t>(to + at::kOwnerFlag, header.ownerFlag);
    StoreLittle<std::uint32_t>(to + at::kDirectoryOffset, header.directoryOffset);
    return bytes;
}

SChunkHeader DecodeChunkHeader(const std::byte* bytes) {
    namespace at = chunk_header;
    SChunkHeader header;
    std::memcpy(header.formatId.data(), bytes + at::kFormatId, header.formatId.size());
    header.version = LoadLittle<std::uint32_t>(bytes + at::kVersion);
    header.originX = LoadLittle<std::uint32_t>(bytes + at::kOriginX);
    header.originY = LoadLittle<std::uint32_t>(bytes + at::kOriginY);
    header.width = LoadLittle<std::uint32_t>(bytes + at::kWidth);
    header.height = LoadLittle<std::uint32_t>(bytes + at::kHeight);
    header.recordCount = LoadLittle<std::uint32_t>(bytes + at::kRecordCount);
    header.fileKind = LoadLittle<std::uint8_t>(bytes + at::kFileKind);
    std::memcpy(header.ownerData.data(), bytes + at::kOwnerData, header.ownerData.size());
    header.ownerFlag = LoadLittle<std::uint8_t>(bytes + at::kOwnerFlag);
    header.directoryOffset = LoadLittle<std::uint32_t>(bytes + at::kDirectoryOffset);
    return header;
}

std::optional<SChunkHeader> ReadChunkHeader(std::istream& stream) {
    ChunkHeaderBytes bytes;
    if (!stream.read(reinterpret_cast<char*>(bytes.data()),
                     static_cast<std::streamsize>(bytes.size())))
        return std::nullopt;
    return DecodeChunkHeader(bytes.data());
}

void WriteChunkHeader(std::ostream& stream, const SChunkHeader& header) {
    const ChunkHeaderBytes bytes = EncodeChunkHeader(header);
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
}

void EncodeChunkRecord(const SChunkRecord& record, std::uint32_t planeCount, std::byte* bytes) {
    namespace at = chunk_record;
    StoreLittle<std::uint32_t>(bytes + at::kIndex, record.index);
    StoreLittle<std::uint32_t>(bytes + at::kX, record.x);
    StoreLittle<std::uint32_t>(bytes + at::kY, record.y);
    StoreLittle<std::uint16_t>(bytes + at::kWidth, record.width);
    StoreLittle<std::uint16_t>(bytes + at::kHeight, record.height);
    StoreLittle<std::uint32_t>(bytes + at::kTotalSize, record.totalSize);
    std::memcpy(bytes + at::kPlaneSizes, record.planeSizes.data(),
                planeCount * sizeof(std::uint32_t));
}

SChunkRecord DecodeChunkRecord(const std::byte* bytes, std::uint32_t planeCount) {
    namespace at = chunk_record;
    SChunkRecord record;
    record.index = LoadLittle<std::uint32_t>(bytes + at::kIndex);
    record.x = LoadLittle<std::uint32_t>(bytes + at::kX);
    record.y = LoadLittle<std::uint32_t>(bytes + at::kY);
    record.width = LoadLittle<std::uint16_t>(bytes + at::kWidth);
    record.height = LoadLittle<std::uint16_t>(bytes + at::kHeight);
    record.totalSize = LoadLittle<std::uint32_t>(bytes + at::kTotalSize);
    std::memcpy(record.planeSizes.data(), bytes + at::kPlaneSizes,
                planeCount * sizeof(std::uint32_t));
    return record;
}

} // namespace trevolt
