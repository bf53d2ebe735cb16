#include "trevolt/MassiveBuf.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <utility>

#include <lz4frame.h>

#include "common/CheckedArithmetic.h"
#include "common/LittleEndian.h"
#include "platform/FileStream.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

constexpr std::size_t kSliceBytes = std::size_t{4} << 20; // an LZ4 frame's largest block
constexpr std::size_t kReadBytes = std::size_t{1} << 18;
constexpr std::size_t kFillRun = std::size_t{1} << 14;
constexpr std::uint64_t kLargestRatio = 255; // no LZ4 stream holds more than 255 times its bytes
constexpr std::size_t kFrameFlags = 4;       // offset of the descriptor's first byte
constexpr int kContentSizeFlag = 0x08;

struct CompressionFree {
    void operator()(LZ4F_cctx* context) const { LZ4F_freeCompressionContext(context); }
};
struct DecompressionFree {
    void operator()(LZ4F_dctx* context) const { LZ4F_freeDecompressionContext(context); }
};

LZ4F_preferences_t FramePreferences(std::uint64_t byteCount) {
    LZ4F_preferences_t preferences{};
    preferences.frameInfo.blockSizeID = LZ4F_max4MB;
    preferences.frameInfo.blockMode = LZ4F_blockIndependent;
    preferences.frameInfo.contentChecksumFlag = LZ4F_contentChecksumEnabled;
    preferences.frameInfo.contentSize = byteCount;
    preferences.autoFlush = 1;
    return preferences;
}

/// Bytes that the frame's header, or one slice of it, takes at most.
std::size_t OutputBound(std::uint64_t byteCount, const LZ4F_preferences_t& preferences) {
    const auto slice = static_cast<std::size_t>(std::min<std::uint64_t>(byteCount, kSliceBytes));
    return std::max<std::size_t>(LZ4F_compressBound(slice, &preferences), LZ4F_HEADER_SIZE_MAX);
}

/// Writes one frame piece by piece; any failure makes every further step do nothing.
class CFrameWriter {
  public:
    CFrameWriter(std::ostream& stream, std::uint64_t byteCount)
        : m_stream(stream),
          m_preferences(FramePreferences(byteCount)),
          m_out(OutputBound(byteCount, m_preferences)) {
        LZ4F_cctx* context = nullptr;
        if (LZ4F_isError(LZ4F_createCompressionContext(&context, LZ4F_VERSION)) != 0U)
            return;
        m_context.reset(context);
        Put(LZ4F_compressBegin(context, m_out.data(), m_out.size(), &m_preferences));
    }

    void Write(const std::byte* bytes, std::size_t count) {
        for (std::size_t done = 0; done < count && m_ok; done += kSliceBytes)
            Put(LZ4F_compressUpdate(m_context.get(), m_out.data(), m_out.size(), bytes + done,
                                    std::min(kSliceBytes, count - done), nullptr));
    }

    bool Finish() {
        if (m_ok)
            Put(LZ4F_compressEnd(m_context.get(), m_out.data(), m_out.size(), nullptr));
        return m_ok;
    }

  private:
    void Put(std::size_t produced) {
        m_ok = LZ4F_isError(produced) == 0U &&
               m_stream.write(m_out.data(), static_cast<std::streamsize>(produced));
    }

    std::ostream& m_stream;
    LZ4F_preferences_t m_preferences;
    std::vector<char> m_out;
    std::unique_ptr<LZ4F_cctx, CompressionFree> m_context;
    bool m_ok = false;
};

} // namespace

/// Reads one frame of a known stored size into a buffer's blocks.
class CFrameReader {
  public:
    CFrameReader(std::istream& stream, std::uint64_t byteCount, CMassiveBuf& target)
        : m_stream(stream),
          m_left(byteCount),
          m_target(target),
          m_in(static_cast<std::size_t>(std::min<std::uint64_t>(byteCount, kReadBytes))) {}

    Status Read() {
        if (!Begin())
            return E_FAIL;
        if (const Status status = ReserveDeclared(); Failed(status))
            return status;
        return Decode();
    }

  private:
    /// Takes the frame's header; false when it is not one that is read here.
    bool Begin() {
        LZ4F_dctx* context = nullptr;
        if (LZ4F_isError(LZ4F_createDecompressionContext(&context, LZ4F_VERSION)) != 0U)
            return false;
        m_context.reset(context);
        m_bound = CheckedProduct<std::uint64_t>(m_left, kLargestRatio).value_or(UINT64_MAX);
        if (!Refill())
            return false;
        std::size_t taken = m_inSize;
        const std::size_t hint = LZ4F_getFrameInfo(context, &m_info, m_in.data(), &taken);
        if (LZ4F_isError(hint) != 0U || m_info.frameType != LZ4F_frame || m_info.dictID != 0)
            return false;
        m_inDone = taken;
        // The frame's information does not tell a declared 0 from no declaration.
        m_isSizeDeclared = (m_in[kFrameFlags] & kContentSizeFlag) != 0;
        return true;
    }

    /// With a declared size, allocates it at once.
    Status ReserveDeclared() {
        if (m_info.contentSize > m_bound)
            return E_FAIL;
        if (m_isSizeDeclared && !m_target.Allocate(m_info.contentSize))
            return E_OUTOFMEMORY;
        return S_OK;
    }

    Status Decode() {
        for (;;) {
            if (m_inDone == m_inSize && m_left > 0 && !Refill())
                return E_FAIL;
            std::byte spare{};
            std::size_t room = 0;
            std::byte* out = OutputPosition(room);
            if (out == nullptr && m_outOfMemory)
                return E_OUTOFMEMORY;
            std::size_t taken = m_inSize - m_inDone;
            std::size_t made = out == nullptr ? 0 : room;
            const std::size_t hint =
                LZ4F_decompress(m_context.get(), out == nullptr ? &spare : out, &made,
                                m_in.data() + m_inDone, &taken, nullptr);
            if (LZ4F_isError(hint) != 0U)
                return E_FAIL;
            m_inDone += taken;
            m_made += made;
            if (hint == 0)
                return Finish();
            if (taken == 0 && made == 0)
                return E_FAIL; // the end mark is missing, or more comes out than was declared
        }
    }

    /// The frame has ended: nothing may follow it, and all that was declared must be there.
    Status Finish() {
        if (m_left != 0 || m_inDone != m_inSize)
            return E_FAIL;
        if (m_isSizeDeclared && m_made != m_info.contentSize)
            return E_FAIL;
        m_target.m_byteCount = m_made;
        return S_OK;
    }

    /// Where the next decoded byte goes and how many fit there. Null when the declared size is
    /// full, or when there is no memory for another block.
    std::byte* OutputPosition(std::size_t& room) {
        const std::uint64_t index = m_made / m_target.m_blockBytes;
        const std::uint64_t offset = m_made % m_target.m_blockBytes;
        if (index == m_target.m_blocks.size()) {
            if (m_isSizeDeclared || m_made >= m_bound)
                return nullptr;
            if (!m_target.AppendBlock(m_bound - m_made)) {
                m_outOfMemory = true;
                return nullptr;
            }
        }
        CBudgetBlock& block = m_target.m_blocks[index];
        if (offset >= block.Size())
            return nullptr;
        room = block.Size() - offset;
        return block.Data() + offset;
    }

    bool Refill() {
        m_inSize = static_cast<std::size_t>(std::min<std::uint64_t>(m_left, m_in.size()));
        m_inDone = 0;
        m_left -= m_inSize;
        return m_inSize > 0 && m_stream.read(m_in.data(), static_cast<std::streamsize>(m_inSize));
    }

    std::istream& m_stream;
    std::uint64_t m_left; ///< stored bytes not yet taken from the stream
    CMassiveBuf& m_target;
    std::vector<char> m_in;
    std::size_t m_inSize = 0;
    std::size_t m_inDone = 0;
    std::unique_ptr<LZ4F_dctx, DecompressionFree> m_context;
    LZ4F_frameInfo_t m_info{};
    bool m_isSizeDeclared = false;
    std::uint64_t m_bound = 0; ///< no more than this can come out
    std::uint64_t m_made = 0;
    bool m_outOfMemory = false;
};

CMassiveBuf::CMassiveBuf(std::uint32_t blockBytes) : m_blockBytes(blockBytes) {}

CMassiveBuf::CMassiveBuf(CMassiveBuf&& other) noexcept
    : m_blockBytes(other.m_blockBytes),
      m_byteCount(std::exchange(other.m_byteCount, 0)),
      m_blocks(std::exchange(other.m_blocks, {})) {}

CMassiveBuf& CMassiveBuf::operator=(CMassiveBuf&& other) noexcept {
    if (this == &other)
        return *this;
    m_blockBytes = other.m_blockBytes;
    m_byteCount = std::exchange(other.m_byteCount, 0);
    m_blocks = std::exchange(other.m_blocks, {});
    return *this;
}

bool CMassiveBuf::Allocate(std::uint64_t byteCount) {
    Release();
    if (!CMemoryBudget::Process().HasRoomFor(byteCount)) {
        CTransferReport::NoteMemoryRefused();
        return false;
    }
    m_blocks.reserve(static_cast<std::size_t>(byteCount / m_blockBytes + 1));
    for (std::uint64_t left = byteCount; left > 0; left -= m_blocks.back().Size()) {
        if (!AppendBlock(left)) {
            Release();
            return false;
        }
    }
    m_byteCount = byteCount;
    return true;
}

void CMassiveBuf::Release() {
    m_blocks.clear();
    m_byteCount = 0;
}

bool CMassiveBuf::AppendBlock(std::uint64_t bytes) {
    CBudgetBlock block(static_cast<std::size_t>(std::min<std::uint64_t>(bytes, m_blockBytes)));
    if (!block)
        return false;
    m_blocks.push_back(std::move(block));
    return true;
}

void CMassiveBuf::FillWith(const void* pattern, std::size_t patternBytes) {
    // What is filled is copied on, in runs that stay in the cache and are whole patterns.
    const std::size_t longestRun = std::max(patternBytes, kFillRun / patternBytes * patternBytes);
    for (CBudgetBlock& block : m_blocks) {
        std::size_t filled = std::min(patternBytes, block.Size());
        std::memcpy(block.Data(), pattern, filled);
        while (filled < block.Size()) {
            const std::size_t run = std::min({filled, longestRun, block.Size() - filled});
            std::memcpy(block.Data() + filled, block.Data(), run);
            filled += run;
        }
    }
}

bool CMassiveBuf::CopyFrom(const CMassiveBuf& other) {
    if (&other == this)
        return true;
    if (!Allocate(other.m_byteCount))
        return false;
    std::uint64_t done = 0;
    while (done < m_byteCount) {
        const std::uint64_t toOffset = done % m_blockBytes;
        const std::uint64_t fromOffset = done % other.m_blockBytes;
        const std::uint64_t count = std::min(
            {m_blockBytes - toOffset, other.m_blockBytes - fromOffset, m_byteCount - done});
        std::memcpy(Block(static_cast<std::size_t>(done / m_blockBytes)) + toOffset,
                    other.Block(static_cast<std::size_t>(done / other.m_blockBytes)) + fromOffset,
                    static_cast<std::size_t>(count));
        done += count;
    }
    return true;
}

Status CMassiveBuf::CompressToFile(std::ostream& stream) const {
    CFrameWriter writer(stream, m_byteCount);
    std::uint64_t left = m_byteCount;
    for (const CBudgetBlock& block : m_blocks) {
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(left, block.Size()));
        writer.Write(block.Data(), count);
        left -= count;
    }
    return writer.Finish() ? S_OK : E_FAIL;
}

Status CMassiveBuf::UncompressFromFile(std::istream& stream, std::uint64_t byteCount) {
    Release();
    const Status status = CFrameReader(stream, byteCount, *this).Read();
    if (Failed(status))
        Release();
    return status;
}

Status CMassiveBuf::ReadFromFile(std::istream& stream) {
    Release();
    std::array<std::byte, 8> field{};
    if (!stream.read(reinterpret_cast<char*>(field.data()), field.size()))
        return E_FAIL;
    const auto byteCount = LoadLittle<std::uint64_t>(field.data());
    const auto stored = BytesToEnd(stream);
    if (!stored || byteCount > *stored)
        return E_FAIL;
    if (!Allocate(byteCount))
        return E_OUTOFMEMORY;
    for (CBudgetBlock& block : m_blocks)
        stream.read(reinterpret_cast<char*>(block.Data()),
                    static_cast<std::streamsize>(block.Size()));
    if (stream)
        return S_OK;
    Release();
    return E_FAIL;
}

} // namespace trevolt
