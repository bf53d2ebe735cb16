// The LZ4 work that reading a file, or turning it, cannot do without, and nothing besides:
//
//   bare-lz4 SOURCE [TURNED]
//
// Prints seconds on one core: the decompression of all that the source file holds, and the
// compression of all that the turned one does, block by block (the blocks of a binary file's frame,
// the planes of a word file's chunks) from and to memory that was touched before. Checksums are not
// part of it.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <lz4.h>
#include <lz4frame.h>

#include "bench/WallClock.h"
#include "calibuf/ChunkLayout.h"
#include "coef/WordKind.h"
#include "common/LittleEndian.h"
#include "platform/ConsoleProgram.h"

namespace trevolt {
namespace {

constexpr std::size_t kBinaryHeaderBytes = 24;
constexpr std::size_t kFrameBlockBytes = std::size_t{4} << 20;
constexpr std::uint32_t kStoredFlag = 0x80000000U; ///< of a frame's block: it is not compressed

/// One LZ4 block, where it lies in the file.
struct SBlock {
    std::size_t at;
    int bytes;
    int rawBytes; ///< room for what it holds
    bool isStored;
};

using Bytes = std::vector<std::byte>;

Bytes ReadAll(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    Bytes bytes(std::filesystem::file_size(path));
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!stream)
        throw std::runtime_error(path + " does not read");
    return bytes;
}

/// The blocks of the frame behind a binary file's header.
std::vector<SBlock> FrameBlocks(const Bytes& file) {
    LZ4F_dctx* context = nullptr;
    LZ4F_createDecompressionContext(&context, LZ4F_VERSION);
    LZ4F_frameInfo_t info{};
    std::size_t headerBytes = file.size() - kBinaryHeaderBytes;
    const std::size_t hint =
        LZ4F_getFrameInfo(context, &info, file.data() + kBinaryHeaderBytes, &headerBytes);
    LZ4F_freeDecompressionContext(context);
    if (LZ4F_isError(hint) != 0U || info.blockMode != LZ4F_blockIndependent ||
        info.blockSizeID != LZ4F_max4MB || info.blockChecksumFlag != LZ4F_noBlockChecksum)
        throw std::runtime_error("the frame is not one of this project's");
    std::vector<SBlock> blocks;
    for (std::size_t at = kBinaryHeaderBytes + headerBytes;;) {
        const auto size = LoadLittle<std::uint32_t>(&file.at(at));
        if (size == 0)
            return blocks;
        const auto bytes = static_cast<int>(size & ~kStoredFlag);
        blocks.push_back({at + sizeof size, bytes, static_cast<int>(kFrameBlockBytes),
                          (size & kStoredFlag) != 0});
        at += sizeof size + static_cast<std::size_t>(bytes);
    }
}

/// The planes of a word file's chunks.
std::vector<SBlock> PlaneBlocks(const Bytes& file, const WordElementKind& element) {
    const SChunkHeader header = DecodeChunkHeader(file.data());
    const std::size_t recordBytes = ChunkRecordBytes(element.planeCount);
    std::vector<SBlock> blocks;
    std::size_t at = kChunkHeaderBytes + header.recordCount * recordBytes;
    for (std::size_t i = 0; i < header.recordCount; ++i) {
        const SChunkRecord record =
            DecodeChunkRecord(&file.at(kChunkHeaderBytes + i * recordBytes), element.planeCount);
        for (std::uint32_t k = 0; k < element.wordCount; ++k) {
            const auto bytes = static_cast<int>(record.planeSizes[k]);
            blocks.push_back({at, bytes, static_cast<int>(record.Elements() * 2), false});
            at += record.planeSizes[k];
        }
    }
    return blocks;
}

std::vector<SBlock> BlocksOf(const Bytes& file) {
    if (file.size() < kChunkHeaderBytes)
        throw std::runtime_error("a file is too short");
    ChunkFormatId format{};
    std::memcpy(format.data(), file.data(), format.size());
    const WordElementKind* const element = FindElementOfFormat(format);
    return element == nullptr ? FrameBlocks(file) : PlaneBlocks(file, *element);
}

char* Chars(std::byte* bytes) { return reinterpret_cast<char*>(bytes); }
const char* Chars(const std::byte* bytes) { return reinterpret_cast<const char*>(bytes); }

/// A file's LZ4 blocks and room for what they hold.
class CBlockContent {
  public:
    explicit CBlockContent(const std::string& path)
        : m_file(ReadAll(path)), m_blocks(BlocksOf(m_file)) {
        std::size_t room = 0;
        for (const SBlock& block : m_blocks)
            room += static_cast<std::size_t>(block.rawBytes);
        m_raw.resize(room);
    }

    void Decompress() {
        std::byte* to = m_raw.data();
        for (SBlock& block : m_blocks) {
            block.rawBytes = block.isStored ? CopyBlock(block, to) : DecompressBlock(block, to);
            to += block.rawBytes;
        }
    }

    /// Of content that was decompressed before.
    void Compress() {
        const std::byte* from = m_raw.data();
        for (const SBlock& block : m_blocks) {
            if (LZ4_compress_fast(Chars(from), Chars(m_packed.data()), block.rawBytes,
                                  static_cast<int>(m_packed.size()), 1) == 0)
                throw std::runtime_error("a block does not compress");
            from += block.rawBytes;
        }
    }

  private:
    int CopyBlock(const SBlock& block, std::byte* to) const {
        std::memcpy(to, &m_file.at(block.at), static_cast<std::size_t>(block.bytes));
        return block.bytes;
    }

    int DecompressBlock(const SBlock& block, std::byte* to) const {
        const int made = LZ4_decompress_safe(Chars(&m_file.at(block.at)), Chars(to), block.bytes,
                                             block.rawBytes);
        if (made < 0)
            throw std::runtime_error("a block does not decompress");
        return made;
    }

    Bytes m_file;
    std::vector<SBlock> m_blocks;
    Bytes m_raw;
    Bytes m_packed = Bytes(LZ4_COMPRESSBOUND(kFrameBlockBytes));
};

} // namespace

int StatusWithoutMemory(std::string_view /*firstArgument*/) noexcept { return 1; }

int ConsoleMain(const std::vector<std::string>& arguments) {
    if (arguments.empty() || arguments.size() > 2) {
        fmt::print(stderr, "bare-lz4: SOURCE is wanted, and TURNED where it is turned\n");
        return 2;
    }
    try {
        CBlockContent source(arguments[0]);
        double seconds = SecondsOf([&] { source.Decompress(); });
        if (arguments.size() == 2) {
            CBlockContent turned(arguments[1]);
            turned.Decompress();
            seconds += SecondsOf([&] { turned.Compress(); });
        }
        fmt::print("{:.6f}\n", seconds);
    } catch (const std::exception& error) {
        fmt::print(stderr, "bare-lz4: {}\n", error.what());
        return 1;
    }
    return 0;
}

} // namespace trevolt
