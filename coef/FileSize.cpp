#include "coef/FileSize.h"

#include "coef/ChunkFile.h"

namespace trevolt {
namespace {

std::uint32_t WithLowWord(std::uint32_t value, std::uint32_t lowWord) {
    return (value & 0xFFFF0000U) | (lowWord & 0xFFFFU);
}

const SBinaryFileKind* FindFloatFile(const ChunkFormatId& magic) {
    for (const SBinaryFileKind* kind : {&k9fFile, &k3fFile})
        if (kind->magic == magic)
            return kind;
    return nullptr;
}

} // namespace

Status QueryBinarySize(const SBinaryFileKind& kind, CWordFileSource& file, std::uint32_t& width,
                       std::uint32_t& height) {
    std::uint32_t fileWidth = 0;
    std::uint32_t fileHeight = 0;
    if (const Status status = ReadBinarySize(kind, file, fileWidth, fileHeight); Failed(status))
        return status;
    width = WithLowWord(width, fileWidth);
    height = WithLowWord(height, fileHeight);
    return S_OK;
}

Status QueryWordFileSize(const SWordKind& kind, std::uint32_t fileKind, CWordFileSource& file,
                         std::uint32_t& width, std::uint32_t& height) {
    if (kind.sizesFloatFiles) {
        ChunkFormatId magic{};
        if (const Status status = ReadFileMagic(file, magic); Failed(status))
            return status;
        if (const SBinaryFileKind* const floats = FindFloatFile(magic))
            return QueryBinarySize(*floats, file, width, height);
    }
    SChunkHeader header;
    if (const Status status = ReadChunkFileHeader(file, kind, header); Failed(status))
        return status;
    if (kind.hasFileKind && header.fileKind != fileKind)
        return E_COEF_BADFORMAT;
    width = header.width;
    height = header.height;
    return S_OK;
}

} // namespace trevolt
