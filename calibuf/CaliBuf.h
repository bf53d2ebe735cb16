// CCaliBuf: the per-pixel store behind every coefficient object. A display of up to 131072 × 65536
// pixels holds one element of a fixed size a pixel; the store is a sparse grid of blocks that are
// allocated only for the area in use and filled with a neutral default. It writes itself to chunk
// files and memory images and reads them back (docs/formats/chunk.md).
//
// A store is used by one thread at a time; different stores by any threads.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <memory>
#include <ostream>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "calibuf/BlockGrid.h"
#include "calibuf/ChunkCounts.h"
#include "calibuf/ChunkLayout.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// One allocated block.
struct BlockRecord {
    std::uint32_t nIndex = 0;
    std::uint32_t nX = 0;     ///< pixel column of the left edge
    std::uint32_t nY = 0;     ///< pixel row of the top edge
    std::uint32_t nBytes = 0; ///< size of the data
    /// 32768 elements, row-major, 256 a row; in `memory`. A block without data counts as missing.
    std::byte* pData = nullptr;
    CBudgetBlock memory;
};

class CCaliBuf {
  public:
    /// An empty store for elements of 18 bytes whose records list 9 sizes. A store lives on the
    /// heap only: the block table, 2 MB, is part of it. Throws std::bad_alloc without memory.
    static std::unique_ptr<CCaliBuf> Create();

    virtual ~CCaliBuf();
    CCaliBuf(const CCaliBuf&) = delete;
    CCaliBuf& operator=(const CCaliBuf&) = delete;
    static void operator delete(void* memory, std::size_t bytes);

    // ---- the store ----

    /// Clears the store and sets what its elements are: `elemSize` bytes each, `planeCount` sizes
    /// (at most 12) in a chunk record.
    void SetElement(std::uint16_t elemSize, std::uint32_t planeCount);

    /// Drops all blocks, records the size and allocates the covering blocks row by row, each filled
    /// with the kind's default element. An empty size leaves no block and succeeds.
    /// E_COEF_INVALIDARG, nothing changed, for a size past the grid. E_COEF_SIZELIMIT when the next
    /// block would pass the size limit, E_FAIL when its data is refused, E_COEF_NOBUFFER when its
    /// record is: the blocks before it stay.
    Status Allocate(std::uint32_t width, std::uint32_t height);

    /// Whether the memory budget holds all blocks of such an area beside what is outstanding. To be
    /// asked before a size that only a file claims is allocated: a lie would fill memory with
    /// defaults up to the budget. False for a size past the grid.
    bool HasRoomFor(std::uint32_t width, std::uint32_t height) const;

    /// Frees every block. Width and height are left as they were.
    void Clear();

    /// Allocates block `index`, its data not initialised, as the block whose left top pixel is
    /// (x, y). E_COEF_INVALIDARG for an index past the table, a corner whose block would leave the
    /// grid, or a block that stands already; E_FAIL when the data is refused. When the record is
    /// refused: S_OK without a block. The transfer report hears of all memory refused here.
    Status AllocateBlock(std::uint32_t index, std::uint32_t x, std::uint32_t y);

    /// Writes the kind's default element into all places of the block. E_COEF_NOBUFFER for a
    /// missing block, E_FAIL for an element size of no kind.
    Status FillBlockDefault(std::uint32_t index);

    /// Copies a rectangle of whole elements into one block, row by row. `piece` is in pixels and
    /// lies in the block's area; its first row starts at element `sourceStart` of the source and
    /// rows are `sourceStride` elements apart. E_COEF_NOBUFFER for a null source or a missing
    /// block; E_COEF_INVALIDARG for a piece that leaves the block; S_OK without copying for a piece
    /// without rows.
    Status CopyRectIn(std::uint32_t index, const std::byte* source, const SPixelRect& piece,
                      std::uint32_t sourceStart, std::uint32_t sourceStride);

    /// Copies a rectangle out of one block into a packed destination (rows as long as the rectangle
    /// is wide). Does nothing for a missing block, a null destination, an empty rectangle or one
    /// that leaves the block.
    void CopyRectOut(std::uint32_t index, const SPixelRect& rect, std::byte* destination) const;

    /// The digest of all blocks' whole data in allocation order, as 32 upper-case hexadecimal
    /// characters. It depends on the store's size, not on the visible pixels alone. False, and the
    /// text unchanged, when the system's hashing fails.
    bool ComputeMD5(std::wstring& text) const;

    std::uint32_t Width() const { return m_nWidth; }
    std::uint32_t Height() const { return m_nHeight; }
    std::uint16_t ElemSize() const { return m_nElemSize; }
    std::uint32_t PlaneCount() const { return m_nPlaneCount; }
    /// Bytes of the allocated blocks, 24 bytes of bookkeeping each included; wraps at 2^32.
    std::uint32_t BytesInUse() const { return m_nBytesInUse; }
    /// Bytes of one block's data.
    std::size_t BlockBytes() const { return std::size_t{m_nElemSize} * kBlockElements; }
    std::uint64_t SizeLimit() const { return m_nSizeLimit; }
    /// The ceiling on the bytes in use, looked at before each block of an `Allocate`.
    void SetSizeLimit(std::uint64_t bytes) { m_nSizeLimit = bytes; }

    /// Indices of the allocated blocks, in the order in which they were allocated.
    std::span<const std::uint32_t> UsedBlocks() const {
        return m_pUsedBlocks ? std::span<const std::uint32_t>(*m_pUsedBlocks)
                             : std::span<const std::uint32_t>();
    }

    /// Block `index`, null when it is not allocated or lies past the table.
    BlockRecord* Block(std::uint32_t index) {
        return index < kGridBlocks ? m_apBlocks[index] : nullptr;
    }
    const BlockRecord* Block(std::uint32_t index) const {
        return index < kGridBlocks ? m_apBlocks[index] : nullptr;
    }

    /// Block `index` as above, null also when it has no data.
    const BlockRecord* BlockWithData(std::uint32_t index) const {
        const BlockRecord* block = Block(index);
        return block == nullptr || block->pData == nullptr ? nullptr : block;
    }

    /// The element of pixel (x, y), `ElemSize()` bytes, null when its block is missing. Elements
    /// are aligned to 2 bytes; those of one block row follow each other.
    std::byte* FindElement(std::uint32_t x, std::uint32_t y) {
        return const_cast<std::byte*>(std::as_const(*this).FindElement(x, y));
    }
    const std::byte* FindElement(std::uint32_t x, std::uint32_t y) const {
        const BlockRecord* block = BlockWithData(BlockIndexOfPixel(x, y));
        if (block == nullptr)
            return nullptr;
        return block->pData + std::size_t{PlaceInBlock(x, y)} * m_nElemSize;
    }

    // ---- planes ----

    /// Bytes that `CompressPlanes` may need at its destination: twice a raw block.
    std::size_t CompressedBound() const { return BlockBytes() * 2; }

    /// Splits width × height packed elements into word planes and compresses each as a raw LZ4
    /// block, back to back at `destination` (`CompressedBound()` bytes). Sets one size for each
    /// word in `planeSizes` (12 entries; further ones are left alone) and their sum. A plane that
    /// does not compress has size 0 and is no failure. E_COEF_NOBUFFER for a null pointer or
    /// refused scratch memory, E_COEF_INVALIDARG for more elements than a block holds, E_FAIL for
    /// an element size of no kind; the total is 0 then.
    Status CompressPlanes(std::byte* destination, std::uint32_t& total, const std::byte* source,
                          std::uint32_t* planeSizes, std::uint16_t width,
                          std::uint16_t height) const;

    /// Decodes a chunk: the record's planes at `compressed` (`totalSize` bytes, which may be more
    /// than theirs) become width × height packed elements at `destination`; `total` becomes the
    /// decoded bytes. E_COEF_NOBUFFER for a null pointer or refused scratch memory; E_FAIL for a
    /// record that no chunk of this store can have, and at the first plane that lies past
    /// `totalSize` or does not decode to exactly its words. The planes before it are kept and count
    /// in `total`; everything else at the destination is as it was.
    Status DecompressPlanes(const SChunkRecord& record, const std::byte* compressed,
                            std::byte* destination, std::uint32_t& total) const;

    // ---- chunk files ----
    //
    // Writers leave failures of the stream in its state; the position behind their last write is
    // that of the directory's end. Headers are written by the owner of the file.

    /// Writes a directory at the current position and every allocated block behind it as a whole
    /// chunk, both in allocation order. The result is that of the last chunk; E_COEF_NOBUFFER, with
    /// nothing written, when scratch memory is refused.
    Status WriteAllChunks(std::ostream& stream) const;

    /// What the writers of rectangles and bands answer to `rect`: E_FAIL without rows (one without
    /// columns is taken), E_COEF_INVALIDARG when it is turned over or larger than the grid, else
    /// S_OK.
    static Status CheckWrittenRect(const SPixelRect& rect);

    /// Writes a directory at the current position and behind it what `rect` covers of the allocated
    /// blocks, cut to it, column by column. The directory has room for every block that the
    /// rectangle touches; what no chunk fills is zero. The status of `CheckWrittenRect`, or
    /// E_COEF_NOBUFFER when scratch memory is refused, each with nothing written; else S_OK,
    /// whatever became of single chunks.
    Status WriteRectChunks(std::ostream& stream, const SPixelRect& rect) const;

    /// Writes one band of a larger area; successive calls fill one file whose header the caller has
    /// written. `whole` fixes the directory space behind the header; records get the shift
    /// added. Both positions start at 0 and carry the state from band to band: where the next
    /// record and the next data byte go. E_FAIL for a band without rows. E_COEF_INVALIDARG for bad
    /// rectangles, for chunks that the shift moves off the grid, for positions inside what is
    /// reserved for others, and for records that would run past the directory space;
    /// E_COEF_NOBUFFER when scratch memory is refused. After a failure nothing is written and both
    /// positions are as they were.
    Status WriteBandChunks(std::ostream& stream, const SPixelRect& band, const SPixelRect& whole,
                           std::uint64_t& directoryPosition, std::uint64_t& dataPosition,
                           std::int32_t shiftX, std::int32_t shiftY) const;

    // Readers fill blocks that are allocated and allocate none: chunks on other blocks are skipped.
    // A chunk that does not fit its record, the stream or the store has failed with E_FAIL, and the
    // next ones are still read; the result is that of the last chunk that was decoded or failed. No
    // block takes a part of a chunk that does not decode whole. A chunk whose data is missing where
    // no block would take it has failed, too, but leaves the result alone. A stream that ends too
    // early, in the directory or in the data, has its fail bit set; any other stands behind the
    // data of the last record, unless there was no memory to read with.
    // Damage that the result hides stands in `LastRead` and in the thread's transfer report.
    //
    // Whole files and images also note there in what their directory differs from a writer's: pixels
    // of the size in their header in no record or in several, chunks that reach out of it, block
    // indices that are not those of the places; and a file, bytes behind its last chunk. A record whose
    // chunk fails still holds its pixels. It is the file that is measured: neither clip nor blocks of
    // the store count. A band read takes a part, which may leave out anything, and notes nothing; a
    // single-word store, whose words stand beside a matrix store's, notes the bytes behind it and the
    // pixels without a word alone. Without memory for counting pixels the read goes on, and the report tells of the
    // refusal.

    /// Reads the chunk file that starts at the current position and moves it so that its origin
    /// comes to (x, y). With both clip sizes non-zero a chunk is cut to so many columns and rows.
    /// A single-word store's directory is sought at the header's directory offset, a position in
    /// the stream. E_FAIL, and no chunk read, when header or directory are not there whole, or when
    /// that offset points into a header; E_COEF_NOBUFFER when scratch memory is refused.
    Status ReadRectChunks(std::istream& stream, std::uint32_t x, std::uint32_t y,
                          std::uint32_t clipWidth, std::uint32_t clipHeight);

    /// Reads the chunks whose block index lies in [firstIndex, endIndex), moved right by x and down
    /// by y, less the top edge of the (last) chunk with the first index; the header's origin counts
    /// for nothing. A single-word store's directory is as many bytes behind the header as the
    /// header's directory offset says. Statuses as `ReadRectChunks`.
    Status ReadBandChunks(std::istream& stream, std::uint32_t x, std::uint32_t y,
                          std::uint32_t firstIndex, std::uint32_t endIndex);

    /// Bytes that `SaveToMemory` needs at most: header, directory, and twice the raw size of every
    /// block.
    std::uint64_t MaxMemoryImageBytes() const;

    /// Writes header, directory and all blocks as whole chunks to `destination`, which has
    /// `MaxMemoryImageBytes()` bytes. `imageBytes`, when asked for, becomes the size of the image.
    /// E_FAIL for a null destination or refused scratch memory; else the result of the last chunk.
    Status SaveToMemory(std::byte* destination, std::uint32_t originX, std::uint32_t originY,
                        std::uint64_t* imageBytes = nullptr) const;

    /// Reads a memory image of `length` bytes into the blocks, moved right and down by its own
    /// origin, and never looks past its end. E_FAIL for a null source and where `ReadRectChunks`
    /// fails.
    Status LoadFromMemory(const std::byte* source, std::size_t length);

    /// As above, for an image that is known to be whole: its own fields say where it ends.
    Status LoadFromMemory(const std::byte* source);

    /// What became of the chunks in the last read.
    const SChunkCounts& LastRead() const { return m_lastRead; }

  private:
    CCaliBuf();
    static void* operator new(std::size_t bytes);

    std::uint32_t m_nBytesInUse = 0;
    std::uint16_t m_nElemSize = 18;
    std::uint32_t m_nPlaneCount = 9;
    std::uint32_t m_nWidth = 0;
    std::uint32_t m_nHeight = 0;
    std::array<BlockRecord*, kGridBlocks> m_apBlocks; // zeroed by operator new, owned
    std::unique_ptr<std::vector<std::uint32_t>> m_pUsedBlocks;
    std::uint64_t m_nSizeLimit = 0x7FFFFFFFFFFFFFFF;
    SChunkCounts m_lastRead;
};

} // namespace trevolt
