// CColorCorrectCoef: the interface of the four coefficient objects. An object holds the correction
// words of one cabinet or one whole screen in a block store, loads them from and writes them to word
// files, and gives access to them by pixel and by rectangle.
//
// Callers reach operations by their position, so the order of the virtual operations is a contract.
// Each one's comment opens with its slot number; docs/coefficient-objects.md tells which kinds offer
// it. What a kind does not offer changes nothing and answers E_FAIL, slots 118 to 124
// E_COEF_NOTIMPL, and the pixel getters the default element.
//
// Said once for all:
// - A word is a 16-bit fixed-point value; 65535 stands for 1.0. Word to float is word ÷ 65535.
// - A pixel is reachable when its block lies in the grid and is allocated; else it is missing.
// - A rectangle transfer (x, y, width, height, buffer) fails with E_FAIL without a store, without a
//   buffer, for a width or height of 0, and for an x or y larger than the store's size. What
//   reaches past the store's size is cut off, and the caller's rows are then as long as the cut
//   rectangle, unless the operation takes a pitch (elements from row to row; E_COEF_INVALIDARG when
//   that is below the cut width). Missing pixels are passed over. The result is S_OK then.
// - A path may be null; each operation says what it answers to that. Outputs are changed on success
//   only, where nothing else is said.
// - Names of owner data are 16 bytes; a null name leaves name and flag zero in the file.
//
// An object is used by one thread at a time; different objects by any threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>

#include "trevolt/Gamma.h"
#include "trevolt/GammaTables.h"
#include "trevolt/PixelRect.h"
#include "trevolt/StatusCodes.h"
#include "trevolt/WordElements.h"
#include "trevolt/WordViews.h"

namespace trevolt {

class CChromaCorrectCoef;
struct SChunkHeader;     // trevolt/ChunkHeader.h
struct SOperationRecord; // trevolt/ProgressSink.h

class CColorCorrectCoef {
  public:
    /// Takes copies of the gamma tables and a gamma curve of 2.8.
    CColorCorrectCoef();
    CColorCorrectCoef(const CColorCorrectCoef&) = delete;
    CColorCorrectCoef& operator=(const CColorCorrectCoef&) = delete;

    /// [0] Destroys the object.
    virtual ~CColorCorrectCoef();

    // ---- the store ----

    /// [1] Allocates the store (chroma: the matrix store, then the extra-word store) for
    /// width × height, dropping what it held. E_FAIL without a store, else the allocation's status;
    /// the chroma kind's second store is allocated only after the first succeeded.
    virtual Status Create(std::uint16_t width, std::uint16_t height) = 0;
    /// [2] The store's width in pixels, 0 without a store.
    virtual std::uint32_t GetWidth() const = 0;
    /// [3] The store's height in pixels, 0 without a store.
    virtual std::uint32_t GetHeight() const = 0;
    /// [4] How many blocks of the grid the rectangle touches, allocated or not: block columns from
    /// left ÷ 256 to below ceil(right ÷ 256), times block rows from top ÷ 128 to below
    /// ceil(bottom ÷ 128). So one without columns counts the block column that it lies in, and none
    /// when it lies on the edge of two; rows likewise. 0 without a store.
    virtual std::uint32_t GetRectBlockCount(const SPixelRect& rect) const = 0;
    /// [5] How many blocks are allocated, 0 without a store.
    virtual std::uint32_t GetBlockListSize() const = 0;
    /// [6] Sets the store's size limit: to all ones when `unlimited`, else to 2^63 − 1. Chroma: of
    /// both stores. E_FAIL without a store.
    virtual Status SetBufferMode(bool unlimited) = 0;

    // ---- channels and pixels ----

    /// [7] Writes one channel of a rectangle, which is not cut to the store: `channel` modulo 3 (the
    /// virtual-green kinds: 4). Table index 0 or above 56: the word becomes round(value × 65535),
    /// clamped. 1 to 56: the transfer table's entry for the word, clamped; 41 to 56 first set the
    /// table's step to `value`. False, and nothing changed, without a store, for an empty size, a
    /// negative remainder, or an index from 1 to 56 without a table; else true.
    virtual bool FillRectChannel(std::int32_t channel, std::uint32_t x, std::uint32_t y,
                                 std::uint32_t width, std::uint32_t height, float value,
                                 std::uint32_t tableIndex) = 0;
    /// [8] Writes one channel of one pixel: `channel` modulo 3 (virtual-green brightness: 4;
    /// virtual-green chroma: channels 0 to 11 as they are). Table index 0 or above 56: the low 16
    /// bits of round(value × 65535), not clamped; the result tells whether that exceeded 65535.
    /// 1 to 56: the transfer table's entry for the word, clamped, with result false. False, and
    /// nothing changed, for a missing pixel, a negative remainder, a channel above 11, or an index
    /// from 1 to 56 without a table.
    virtual bool SetPixelChannel(std::int32_t channel, std::uint32_t x, std::uint32_t y,
                                 float value, std::uint32_t tableIndex) = 0;
    /// [9] Stores one pixel's twelve words. E_FAIL for a missing pixel.
    virtual Status SetPixel12Word(std::uint32_t x, std::uint32_t y, const S12WordCoef& words) = 0;
    /// [10] Rectangle transfer of raw elements into the store: four words a pixel (virtual-green
    /// brightness) or twelve (virtual-green chroma).
    virtual Status SetRect4WordU16(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                   std::uint32_t height, const std::uint16_t* words) = 0;
    /// [11] Rectangle transfer of raw twelve-word elements into the store, from rows `pitch`
    /// elements apart.
    virtual Status SetRect12WordEx(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                   std::uint32_t height, const std::uint16_t* words,
                                   std::uint32_t pitch) = 0;
    /// [12] Stores one pixel's four words. E_FAIL for a missing pixel.
    virtual Status SetPixel4Word(std::uint32_t x, std::uint32_t y, const S4WordCoef& words) = 0;
    /// [13] Rectangle transfer of raw four-word elements out of the store; missing pixels leave
    /// the buffer as it was.
    virtual Status GetRect4Word(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                std::uint32_t height, std::uint16_t* words) const = 0;
    /// [14] Rectangle transfer of raw four-word elements into the store, the rectangle given by its
    /// edges. E_COEF_INVALIDARG when left or top is negative.
    virtual Status SetRect4WordRaw(const SPixelRect& rect, const std::uint16_t* words) = 0;
    /// [15] Rectangle transfer of one channel (as in slot 37) out of the store, one float a pixel.
    /// The region comes back as it was cut. E_COEF_INVALIDARG when left or top is negative; E_FAIL
    /// for no such channel.
    virtual Status GetRectFloatEx(std::int32_t channel, SPixelRect& region,
                                  float* values) const = 0;
    /// [16] Stores one pixel's matrix and its extra word. E_FAIL, and nothing changed, when either
    /// store misses the pixel.
    virtual Status SetPixel10Word(std::uint32_t x, std::uint32_t y, const S9WordCoef& matrix,
                                  std::uint16_t extraWord) = 0;
    /// [17] Stores one pixel's extra word. E_FAIL for a missing pixel.
    virtual Status SetPixelExtraWord(std::uint32_t x, std::uint32_t y, std::uint16_t extraWord) = 0;
    /// [18] Rectangle transfer of raw nine-word elements into the store.
    virtual Status SetRect9WordU16(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                   std::uint32_t height, const std::uint16_t* words) = 0;
    /// [19] Rectangle transfer out of both stores: nine matrix words and the extra word a pixel.
    /// Missing pixels give 65535 on the diagonal and 0 elsewhere.
    virtual Status GetRect10Word(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                 std::uint32_t height, std::uint16_t* words) const = 0;
    /// [20] Rectangle transfer of bytes into the store, one a word: the low 16 bits of
    /// byte × 65535 ÷ divisor, rounded down. E_COEF_INVALIDARG for a divisor of 0.
    virtual Status SetRectFromBytes(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                    std::uint32_t height, const std::uint8_t* values,
                                    std::uint32_t divisor) = 0;
    /// [21] Stores one pixel's nine words. E_FAIL for a missing pixel.
    virtual Status SetPixel9Word(std::uint32_t x, std::uint32_t y, const S9WordCoef& words) = 0;
    /// [22] Rectangle transfer of nine floats a pixel into the store: the low 16 bits of
    /// value × 65535, truncated. Brightness: of m[0], m[4] and m[8].
    virtual Status SetRectFromMatrixFloat(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                          std::uint32_t height, const float* values) = 0;
    /// [23] Rectangle transfer of raw nine-word elements out of the store; missing pixels leave the
    /// buffer as it was.
    virtual Status GetRect9Word(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                std::uint32_t height, std::uint16_t* words) const = 0;
    /// [24] Rectangle transfer of raw nine-word elements into the store, from rows `pitch` elements
    /// apart.
    virtual Status SetRect9WordEx(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                  std::uint32_t height, const std::uint16_t* words,
                                  std::uint32_t pitch) = 0;
    /// [25] Stores one pixel's three words. E_FAIL for a missing pixel.
    virtual Status SetPixel3Word(std::uint32_t x, std::uint32_t y, const S3WordCoef& words) = 0;
    /// [26] Rectangle transfer of three floats a pixel into the store: the low 16 bits of
    /// value × 65535, truncated.
    virtual Status SetRectFromFloat3(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                     std::uint32_t height, const float* values) = 0;
    /// [27] Rectangle transfer of raw three-word elements out of the store; missing pixels leave
    /// the buffer as it was.
    virtual Status GetRect3Word(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                std::uint32_t height, std::uint16_t* words) const = 0;
    /// [28] Rectangle transfer of raw three-word elements into the store, from rows `pitch`
    /// elements apart.
    virtual Status SetRect3WordEx(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                  std::uint32_t height, const std::uint16_t* words,
                                  std::uint32_t pitch) = 0;
    /// [29] Rectangle transfer of one channel (as in slot 37) into the store, one float a pixel:
    /// the low 16 bits of round(value × 65535). E_FAIL for no such channel.
    virtual Status SetRectChannelFloat(std::int32_t channel, std::uint32_t x, std::uint32_t y,
                                       std::uint32_t width, std::uint32_t height,
                                       const float* values) = 0;
    /// [30] Rectangle transfer of raw nine-word elements, into the store or out of it, with rows
    /// `pitch` elements apart.
    virtual Status TransferRect9WordEx(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                       std::uint32_t height, std::uint16_t* words,
                                       std::uint32_t pitch, bool intoStore) = 0;
    /// [31] As slot 32, one extra word a pixel into the extra-word store.
    virtual Status SetRectExtraWord(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                    std::uint32_t height, const std::uint16_t* words) = 0;
    /// [32] Copies raw nine-word elements into the store, in rows of `width`; the rectangle is not
    /// cut to the store's size. E_COEF_NOBUFFER without buffer or store, E_COEF_INVALIDARG for a
    /// width or height of 0; missing pixels are passed over.
    virtual Status SetRect9Word(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                std::uint32_t height, const std::uint16_t* words) = 0;
    /// [33] One pixel's matrix, the identity for a missing pixel and in kinds without one.
    /// Virtual-green chroma: the twelve words without each row's virtual-green one.
    virtual S9WordCoef GetPixel9Word(std::uint32_t x, std::uint32_t y) const;
    /// [34] As slot 32 with raw three-word elements.
    virtual Status SetRect3Word(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                std::uint32_t height, const std::uint16_t* words) = 0;
    /// [35] One pixel's gains, 65535 each for a missing pixel and in kinds without three words.
    virtual S3WordCoef GetPixel3Word(std::uint32_t x, std::uint32_t y) const;
    /// [36] Rectangle transfer of one channel (as in slot 37) out of the store, one float a pixel;
    /// missing pixels leave the buffer as it was. E_FAIL for no such channel.
    virtual Status GetRectChannelFloat(std::int32_t channel, std::uint32_t x, std::uint32_t y,
                                       std::uint32_t width, std::uint32_t height,
                                       float* values) const = 0;
    /// [37] One word of a pixel, or of the default element for a missing pixel, as float.
    /// Brightness: channel modulo 3; virtual-green brightness: modulo 4; chroma and virtual-green
    /// chroma: word 0 to 11, of which the chroma kind has 0 to 8. 0 for any other channel.
    virtual float GetPixelChannelFloat(std::int32_t channel, std::uint32_t x,
                                       std::uint32_t y) const = 0;

    // ---- transformations of the calibration library, offered by no kind ----

    /// [38] Transforms a rectangle.
    virtual Status ConvertRect38(const SPixelRect& rect) = 0;
    /// [39] Transforms a rectangle.
    virtual Status ConvertRect39(const SPixelRect& rect) = 0;
    /// [40] Transforms a rectangle.
    virtual Status ConvertRect40(const SPixelRect& rect) = 0;
    /// [41] Transforms a rectangle.
    virtual Status ConvertRect41(const SPixelRect& rect) = 0;
    /// [42] Transforms the whole store.
    virtual Status ApplyToStore42() = 0;
    /// [43] Transforms the whole store.
    virtual Status ApplyToStore43() = 0;

    // ---- word files out ----

    /// [44] Writes one band of a word file: the blocks of `band`, moved down by `bandOffset` rows.
    /// The band with offset 0 creates the file with the header of `whole`; the others open it
    /// again. Both positions start at 0 and carry the state from band to band. E_POINTER for a null
    /// path or without a store; E_COEF_INVALIDARG for an offset above 2^31 − 1; E_HANDLE (chroma:
    /// E_COEF_OPENFAILED) when the file does not open; S_OK for a band without rows; else the
    /// status of the store's band writer, which refuses bands that do not fit the whole: of a
    /// refused first band the file has the header only.
    virtual Status ExportCoefEx(const wchar_t* path, const SPixelRect& band,
                                const SPixelRect& whole, std::uint64_t& directoryPosition,
                                std::uint64_t& dataPosition, std::uint32_t bandOffset,
                                const std::byte* name, const std::uint8_t* flag) = 0;
    /// [45] Writes the rectangle as a word file whose origin is its left top. Chroma: with the
    /// extra words when the path's extension is exactly "9wPCoef". E_POINTER for a null path or
    /// without a store; E_HANDLE (chroma: E_COEF_OPENFAILED) when the file does not open; else
    /// S_OK, whatever became of the chunks.
    virtual Status ExportCoef(const wchar_t* path, const SPixelRect& rect, const std::byte* name,
                              const std::uint8_t* flag) = 0;
    /// [46] Writes every allocated block whole, with origin (0, 0) and the store's size. Chroma:
    /// the matrix store. E_POINTER for a null path or without a store; E_COEF_OPENFAILED; else
    /// S_OK.
    virtual Status ExportCoefDefault(const wchar_t* path) = 0;

    // ---- other files in, through a coefficient map ----
    //
    // A map operation's pixels go to the store at the place told, by (int)(value × 65535 + 0.5)
    // truncated to the low 16 bits. A chroma object writes twelve words a pixel: behind the last
    // column of a rectangle in each block, the first three words of the element that follows in the
    // block's memory are overwritten too. The store must have been created; what reaches past it is
    // cut off, and a rectangle without pixels gives E_FAIL. A reader that fails ends the operation
    // with its status, the store unchanged; so does a map without memory, or with a side above
    // 65535, with E_FAIL.

    /// [47] Loads a text file to (x, y) with the full matrix; pixels that it does not name become
    /// the default. `width` and `height` are set from the file's size lines or raised to its
    /// extent. E_COEF_INVALIDARG for a null path or negative x or y; E_COEF_OPENFAILED;
    /// E_COEF_BADTEXT; E_FAIL without a store.
    virtual Status LoadFromTextA(const wchar_t* path, std::int32_t x, std::int32_t y,
                                 std::uint32_t& width, std::uint32_t& height) = 0;
    /// [48] As slot 47, taking only the diagonal.
    virtual Status LoadFromTextB(const wchar_t* path, std::int32_t x, std::int32_t y,
                                 std::uint32_t& width, std::uint32_t& height) = 0;
    /// [49] Places a `.9fcoef` file at the rectangle's left top, with the clip flag cut to the
    /// rectangle, taking the entries whose flag in `mask` (nine flags; null for all) is set. The
    /// rectangle comes back as what was filled. E_COEF_INVALIDARG for a null path or a bad
    /// rectangle; the reader's statuses; E_FAIL without a store.
    virtual Status ImportTable49(const wchar_t* path, SPixelRect& rect, bool clip,
                                 const bool* mask) = 0;
    /// [50] As slot 49 for a `.3fcoef` file (three flags); entries off the diagonal become 0.
    virtual Status ImportTable50(const wchar_t* path, SPixelRect& rect, bool clip,
                                 const bool* mask) = 0;
    /// [51] As slot 49 for a `.9bcoef` file.
    virtual Status ImportTable51(const wchar_t* path, SPixelRect& rect, bool clip,
                                 const bool* mask) = 0;
    /// [52] As slot 50 for a `.3bcoef` file.
    virtual Status ImportTable52(const wchar_t* path, SPixelRect& rect, bool clip,
                                 const bool* mask) = 0;
    /// [53] Loads a `.9fcoef` file to (x, y). E_COEF_INVALIDARG for a null path; the reader's
    /// statuses; E_FAIL without a store.
    virtual Status ImportTable53(const wchar_t* path, std::uint32_t x, std::uint32_t y) = 0;
    /// [54] As slot 53 for a `.3fcoef` file.
    virtual Status ImportTable54(const wchar_t* path, std::uint32_t x, std::uint32_t y) = 0;
    /// [55] As slot 53 for a `.9bcoef` file.
    virtual Status ImportTable55(const wchar_t* path, std::uint32_t x, std::uint32_t y) = 0;
    /// [56] As slot 53 for a `.3bcoef` file.
    virtual Status ImportTable56(const wchar_t* path, std::uint32_t x, std::uint32_t y) = 0;
    /// [57] Loads the diagonal of a `.9fcoef` file to the store's left top; the other entries stay.
    /// `operation` may be null; its sink is told the progress and may stop it. Statuses of slot 53,
    /// and E_FAIL, the store unchanged, when it does.
    virtual Status ImportTable57(const wchar_t* path, const SOperationRecord* operation) = 0;
    /// [58] As slot 57 for a `.9bcoef` file, without progress.
    virtual Status ImportTable58(const wchar_t* path) = 0;

    // ---- turned copies out ----

    /// [59] Brightness: turns a rectangle of the store by `mode` (1 a quarter turn clockwise, 2 a
    /// half turn, 3 a quarter turn counter-clockwise) and writes the copy as one band of a word
    /// file, as slot 44: `whole` is the turned area, `bandOffset` the copy's first row in it.
    /// Pixels that are missing, or that the store's size does not hold, are the default element.
    /// E_COEF_INVALIDARG for a null path, a store without a size, an empty rectangle or one with
    /// negative edges, or another mode; E_FAIL when the copy gets no memory; else as slot 44.
    virtual Status SaveTurnedBandB(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode,
                                   const SPixelRect& whole, std::uint64_t& directoryPosition,
                                   std::uint64_t& dataPosition, std::uint32_t bandOffset,
                                   const std::byte* name, const std::uint8_t* flag) = 0;
    /// [60] Brightness: as slot 59, the copy as one complete word file with origin (0, 0).
    virtual Status SaveTurnedFileB(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode,
                                   const std::byte* name, const std::uint8_t* flag) = 0;
    /// [61] Chroma: as slot 59 for the matrix store.
    virtual Status SaveTurnedBandC(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode,
                                   const SPixelRect& whole, std::uint64_t& directoryPosition,
                                   std::uint64_t& dataPosition, std::uint32_t bandOffset,
                                   const std::byte* name, const std::uint8_t* flag) = 0;
    /// [62] Chroma: as slot 60 for the matrix store.
    virtual Status SaveTurnedFileC(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode,
                                   const std::byte* name, const std::uint8_t* flag) = 0;
    /// [63] Virtual-green brightness: as slot 59.
    virtual Status SaveTurnedBandVB(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode,
                                    const SPixelRect& whole, std::uint64_t& directoryPosition,
                                    std::uint64_t& dataPosition, std::uint32_t bandOffset,
                                    const std::byte* name, const std::uint8_t* flag) = 0;
    /// [64] Virtual-green brightness: as slot 60.
    virtual Status SaveTurnedFileVB(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode,
                                    const std::byte* name, const std::uint8_t* flag) = 0;
    /// [65] Virtual-green chroma: as slot 59.
    virtual Status SaveTurnedBandVC(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode,
                                    const SPixelRect& whole, std::uint64_t& directoryPosition,
                                    std::uint64_t& dataPosition, std::uint32_t bandOffset,
                                    const std::byte* name, const std::uint8_t* flag) = 0;
    /// [66] Virtual-green chroma: as slot 60.
    virtual Status SaveTurnedFileVC(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode,
                                    const std::byte* name, const std::uint8_t* flag) = 0;

    // ---- maps and words in ----
    //
    // A chroma object writes twelve words a pixel here too, as slots 47 to 58 do.

    /// [67] Fills the rectangle from a caller's map, whose pixel (0, 0) goes to its left top; pixels
    /// that the map does not have become the default. E_COEF_INVALIDARG for a null map or negative
    /// left or top; else the conversion's status.
    virtual Status ImportFromView(const CChromaCorrectCoef* map, const SPixelRect& rect) = 0;
    /// [68] Rectangle transfer of caller words, nine a pixel as a matrix, into the store; a
    /// brightness object takes the diagonal. E_FAIL also when the map gets no memory or a side of the
    /// cut rectangle is above 65535.
    virtual Status ImportFromWords(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                   std::uint32_t height, const std::uint16_t* words) = 0;

    // ---- word files in ----
    //
    // A store is never resized by a load: the caller has created it.

    /// [69] As slot 71, with the file's left top at (x, y).
    virtual Status LoadCoefRect(const wchar_t* path, std::uint32_t x, std::uint32_t y) = 0;
    /// [70] As slot 69 at the rectangle's left top. Before the file is read, right and bottom are
    /// set to where file or store end (without a store to 0); they stay so when the read fails.
    /// E_COEF_INVALIDARG also for negative left or top; the statuses of the kind's size query (87,
    /// 88, 114, 115), which refuses map images with E_COEF_BADFORMAT; the rectangle is unchanged
    /// then, and for a file that is sized but not of a kind that slot 71 loads.
    virtual Status LoadCoefEx(const wchar_t* path, SPixelRect& rect) = 0;
    /// [71] Loads a file, recognised by its first 16 bytes, to the store's left top.
    /// All: the kind's own word files. Brightness also `.3fcoef`, chroma `.9fcoef` and word files
    /// with extra words. Both know the raw map image: S_OK always, and the store stays as it was,
    /// for reading one gives a map without a size; all of the store's pixels are noted as missing.
    /// E_COEF_INVALIDARG for a null path, E_COEF_OPENFAILED, E_COEF_BADFORMAT; for word files
    /// E_POINTER without a store, E_HANDLE (extra words: E_COEF_OPENFAILED) when the file does not
    /// open again, else the chunk reader's status (extra words: E_FAIL when the matrix part failed).
    /// `.3fcoef` and `.9fcoef` give the conversion's status and not the reader's: after a failed
    /// read the store takes defaults, which the transfer report tells; but E_FAIL, the store
    /// unchanged, when the map or the file's content gets no memory.
    /// Chroma: the conversion writes as slots 47 to 58 do.
    virtual Status LoadCoef(const wchar_t* path) = 0;

    // ---- other files out, through a coefficient map ----
    //
    // Words become floats by word ÷ 65535; a brightness object gives a diagonal matrix. Missing
    // pixels give the default element, and so do pixels of a rectangle that the store does not have.
    // The statuses are the writer's, among them E_COEF_INVALIDARG for a null path and, but for text
    // files, a store without a size, and E_COEF_OPENFAILED; E_FAIL without a store, when the map
    // gets no memory, or when a side of the store is above 65535.

    /// [72] Writes a rectangle as a `.9fcoef` file. E_COEF_INVALIDARG also for one that is wider or
    /// higher than the store, E_FAIL for one that is turned over.
    virtual Status SaveCoefKind72(const wchar_t* path, const SPixelRect& rect) = 0;
    /// [73] As slot 72 as a `.3fcoef` file.
    virtual Status SaveCoefKind73(const wchar_t* path, const SPixelRect& rect) = 0;
    /// [74] As slot 72 as a `.9bcoef` file.
    virtual Status SaveCoefKind74(const wchar_t* path, const SPixelRect& rect) = 0;
    /// [75] As slot 72 as a `.3bcoef` file.
    virtual Status SaveCoefKind75(const wchar_t* path, const SPixelRect& rect) = 0;
    /// [76] Chroma: writes the whole store as a text file; of a store without a size the header
    /// lines, with S_OK.
    virtual Status SaveCoefKind76(const wchar_t* path) = 0;
    /// [77] Brightness: as slot 76.
    virtual Status SaveCoefKind77(const wchar_t* path) = 0;

    /// [78] As slot 79 at the rectangle's left top, which comes back with right and bottom where
    /// file or store end. E_COEF_INVALIDARG also for negative left or top.
    virtual Status LoadLegacyEx(const wchar_t* path, SPixelRect& rect) = 0;
    /// [79] Loads any of the four binary kinds, recognised by its first 16 bytes, to the store's
    /// left top. E_COEF_INVALIDARG for a null path; E_COEF_OPENFAILED; E_COEF_BADFORMAT for other
    /// files; the reader's statuses; E_FAIL without a store, or when the map gets no memory. Chroma
    /// writes as slots 47 to 58 do.
    virtual Status LoadLegacy(const wchar_t* path) = 0;
    /// [80] Loads a `.9fcoef` file, the pair of slot 86, to the store's left top. The virtual-green
    /// words, which such a file does not hold, stay as they are. Statuses of slot 53. Chroma writes
    /// as slots 47 to 58 do.
    virtual Status LoadLegacy80(const wchar_t* path) = 0;

    /// [81] Writes a rectangle turned by `mode` (as slot 59) as a `.9fcoef` file. Any other mode
    /// writes a file of 0 × 0 pixels, with S_OK; a rectangle may be larger than the store. E_FAIL for
    /// one that is turned over.
    virtual Status SaveLegacy81(const wchar_t* path, const SPixelRect& rect,
                                std::uint32_t mode) = 0;
    /// [82] Chroma: as slot 81 as a `.9bcoef` file.
    virtual Status SaveLegacy82(const wchar_t* path, const SPixelRect& rect,
                                std::uint32_t mode) = 0;
    /// [83] Brightness: as slot 81 as a `.3bcoef` file.
    virtual Status SaveLegacy83(const wchar_t* path, const SPixelRect& rect,
                                std::uint32_t mode) = 0;
    /// [84] As slot 81 as a `.3fcoef` file.
    virtual Status SaveLegacy84(const wchar_t* path, const SPixelRect& rect,
                                std::uint32_t mode) = 0;
    /// [85] Writes the whole store as a `.3fcoef` file.
    virtual Status SaveLegacy85(const wchar_t* path) = 0;
    /// [86] Writes the whole store as a `.9fcoef` file; of the virtual-green kinds the matrix
    /// without the virtual-green words.
    virtual Status SaveLegacy86(const wchar_t* path) = 0;

    // ---- what files tell of themselves ----
    //
    // Sizes from binary float and byte headers replace the low 16 bits of the outputs only, so
    // callers set them to 0 first. E_COEF_INVALIDARG for a null path, E_COEF_OPENFAILED,
    // E_COEF_BADFORMAT for other files, a version above 1 or a file shorter than its header; the
    // outputs are then unchanged.

    /// [87] Brightness: the size of a brightness word file, a `.3fcoef` or a `.9fcoef` file.
    /// Chroma: of a `.3fcoef` file only.
    virtual Status GetBrightCoefSize(const wchar_t* path, std::uint32_t& width,
                                     std::uint32_t& height) = 0;
    /// [88] Chroma: the size of a chroma word file of either layout, a `.9fcoef` or a `.3fcoef`
    /// file. Brightness: of a `.9fcoef` file only.
    virtual Status GetChromaCoefSize(const wchar_t* path, std::uint32_t& width,
                                     std::uint32_t& height) = 0;
    /// [89] The size of a `.9bcoef` file.
    virtual Status GetCoefSize89(const wchar_t* path, std::uint32_t& width,
                                 std::uint32_t& height) = 0;
    /// [90] The size of a `.3bcoef` file.
    virtual Status GetCoefSize90(const wchar_t* path, std::uint32_t& width,
                                 std::uint32_t& height) = 0;
    /// [91] The size of a text file: its size lines set the outputs, or its pixels raise them.
    /// E_COEF_BADTEXT for an unknown tag line.
    virtual Status GetCoefSize91(const wchar_t* path, std::uint32_t& width,
                                 std::uint32_t& height) = 0;
    /// [92] Owner data of a brightness word file: min(capacity, 16) bytes of the name, and the
    /// flag. Statuses of slot 87.
    virtual Status GetBrightCoefInfo(const wchar_t* path, std::byte* name, std::uint32_t capacity,
                                     std::uint8_t& flag) = 0;
    /// [93] As slot 92 for a chroma word file of either layout.
    virtual Status GetChromaCoefInfo(const wchar_t* path, std::byte* name, std::uint32_t capacity,
                                     std::uint8_t& flag) = 0;
    /// [94] As slot 92 for a virtual-green brightness word file of any file-kind value.
    virtual Status GetVBCoefInfo(const wchar_t* path, std::byte* name, std::uint32_t capacity,
                                 std::uint8_t& flag) = 0;
    /// [95] As slot 92 for a virtual-green chroma word file of any file-kind value.
    virtual Status GetVCCoefInfo(const wchar_t* path, std::byte* name, std::uint32_t capacity,
                                 std::uint8_t& flag) = 0;
    /// [96] Brightness: places a `.3fcoef` file at (x, y), taking the gains whose flag in `mask`
    /// (three flags; null for all) is set. Statuses of slot 50.
    virtual Status LoadLegacy96(const wchar_t* path, std::int32_t x, std::int32_t y,
                                const bool* mask) = 0;
    /// [97] Chroma: places a `.9fcoef` file at (x, y), taking the entries whose flag in `mask` (nine
    /// flags; null for all) is set. Statuses of slot 49; it writes as slots 47 to 58 do.
    virtual Status LoadLegacy97(const wchar_t* path, std::int32_t x, std::int32_t y,
                                const bool* mask) = 0;
    /// [98] As slot 36, into rows `pitch` floats apart.
    virtual Status GetRectChannelFloat98(std::int32_t channel, std::uint32_t x, std::uint32_t y,
                                         std::uint32_t width, std::uint32_t height, float* values,
                                         std::uint32_t pitch) const = 0;

    // ---- processing of the calibration library, offered by no kind ----

    /// [99] Estimates from measured points.
    virtual Status Process99(const SPixelRect& rect) = 0;
    /// [100] Estimates from measured points.
    virtual Status Process100(const SPixelRect& rect) = 0;
    /// [101] Works on the pixels' matrices.
    virtual Status Process101(const SPixelRect& rect) = 0;
    /// [102] Works on the pixels' matrices as the processing flags say.
    virtual Status Process102(const SPixelRect& rect) = 0;
    /// [103] Works on the pixels' matrices as the processing flags say.
    virtual Status Process103(const SPixelRect& rect) = 0;
    /// [104] Works on the pixels' matrices as the processing flags say.
    virtual Status Process104(const SPixelRect& rect) = 0;

    // ---- bare chunk streams ----
    //
    // A bare chunk stream is what a word file holds (header, directory, chunks) at a stream's
    // current position. Chroma: of the matrix store. E_POINTER without a store.

    /// [105] Writes every allocated block whole, with origin (0, 0) and the store's size. E_FAIL
    /// when the stream fails.
    virtual Status SaveBlocks105(std::ostream& stream) = 0;
    /// [106] Writes the rectangle, with its left top as origin. E_FAIL for a rectangle without
    /// rows, E_COEF_INVALIDARG for a bad one, both with nothing written; E_FAIL when the stream
    /// fails.
    virtual Status SaveBlocks106(std::ostream& stream, const SPixelRect& rect) = 0;
    /// [107] Reads a stream so that its left top comes to (x, y); the chunk reader's status.
    virtual Status LoadBlocks107(std::istream& stream, std::uint32_t x, std::uint32_t y) = 0;
    /// [108] As slot 107; with both clip sizes above 0 each chunk is cut to so many columns and
    /// rows.
    virtual Status LoadBlocks108(std::istream& stream, std::uint32_t x, std::uint32_t y,
                                 std::uint32_t clipWidth, std::uint32_t clipHeight) = 0;
    /// [109] Reads only the chunks whose block index lies from `firstIndex` to below `endIndex`,
    /// moved right by x and down by y less the first one's top; the chunk reader's status.
    virtual Status LoadBlocks109(std::istream& stream, std::uint32_t x, std::uint32_t y,
                                 std::uint32_t firstIndex, std::uint32_t endIndex) = 0;

    // ---- virtual-green elements ----

    /// [110] Rectangle transfer of raw four-word elements into the store, from rows `pitch`
    /// elements apart.
    virtual Status SetRect4WordVB(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                  std::uint32_t height, const std::uint16_t* words,
                                  std::uint32_t pitch) = 0;
    /// [111] One pixel's four words, 65535 each for a missing pixel and in other kinds.
    virtual S4WordCoef GetPixel4Word(std::uint32_t x, std::uint32_t y) const = 0;
    /// [112] Rectangle transfer of raw twelve-word elements into the store, the rectangle given by
    /// its edges. E_COEF_INVALIDARG when left or top is negative.
    virtual Status SetRect12WordVC(const SPixelRect& rect, const std::uint16_t* words) = 0;
    /// [113] One pixel's twelve words, the default element for a missing pixel and 65535 in words
    /// 0, 5, 6 and 11 in other kinds.
    virtual S12WordCoef GetPixel12Word(std::uint32_t x, std::uint32_t y) const = 0;
    /// [114] The size of a virtual-green brightness word file. E_COEF_BADFORMAT also when header
    /// byte 67 is not the object's file-kind value.
    virtual Status GetVBCoefSize(const wchar_t* path, std::uint32_t& width,
                                 std::uint32_t& height) = 0;
    /// [115] As slot 114 for a virtual-green chroma word file.
    virtual Status GetVCCoefSize(const wchar_t* path, std::uint32_t& width,
                                 std::uint32_t& height) = 0;

    // ---- images and views ----

    /// [116] The store's digest as 32 upper-case hexadecimal characters (chroma: of the matrix
    /// store). E_FAIL without a store or when hashing fails.
    virtual Status GetStoreDigest(std::wstring& text) const = 0;
    /// [117] Reads a memory image into the store. The image must be whole, for its own fields say
    /// where it ends; `LoadBoundedStoreImage` (trevolt/CoefObjects.h) takes one that may not be.
    /// E_FAIL for a null image or without a store, else the chunk reader's status.
    virtual Status LoadStoreImage(const std::byte* image) = 0;
    /// [118] Reads the header of a chroma word file with extra words at the stream's position.
    /// E_COEF_BADFORMAT for any other; the position is then undefined.
    virtual Status ReadChunkHeader2(std::istream& stream, SChunkHeader& header) = 0;
    /// [119] Chroma: copies a view of nine-word elements into the store at (x, y), cut to the
    /// store. Statuses of a rectangle transfer.
    virtual Status CopyRectFrom119(const SWordView& view, std::uint32_t x, std::uint32_t y) = 0;
    /// [120] Brightness: as slot 119 with three-word elements.
    virtual Status CopyRectFrom120(const SWordView& view, std::uint32_t x, std::uint32_t y) = 0;
    /// [121] What the store is made of. E_FAIL without a store.
    virtual Status GetStoreInfo(SStoreInfo& info) const = 0;
    /// [122] Writes header, directory and all blocks to `destination`, which must have room for the
    /// worst case (`MaxStoreImageBytes`, trevolt/CoefObjects.h). E_FAIL for a null destination or
    /// without a store.
    virtual Status SaveStoreImage(std::byte* destination, std::uint32_t originX,
                                  std::uint32_t originY) const = 0;
    /// [123] Copies the store's rectangle at (x, y) of the target's size out; missing pixels leave
    /// the target as it was. Statuses of a rectangle transfer.
    virtual Status CopyRectOut123(std::uint32_t x, std::uint32_t y,
                                  const SWordTarget& target) const = 0;
    /// [124] Chroma: writes the rectangle of both stores, as a word file with extra words holds it,
    /// at the stream's position, and leaves the position behind the header. E_POINTER without the
    /// matrix store; E_FAIL when the stream fails, or when the matrix part ends past 4 GiB, where no
    /// header leads to extra words; else S_OK, whatever became of the chunks.
    virtual Status WriteChunks2(std::ostream& stream, const SPixelRect& rect, const std::byte* name,
                                const std::uint8_t* flag) = 0;

    // ---- fields ----

    const CGamma& Gamma() const { return *m_gamma; }
    const GammaToLinearTable& GammaToLinear() const { return *m_gammaToLinear; }
    const LinearToGammaTable& LinearToGamma() const { return *m_linearToGamma; }

    /// The value that the virtual-green kinds write into byte 67 of a word file's header (its low
    /// 8 bits) and expect there when loading.
    std::uint32_t FileKind() const { return m_fileKind; }
    void SetFileKind(std::uint32_t value) { m_fileKind = value; }

    /// A mark that savers of virtual-green files set to 1; carried only.
    std::uint16_t SaverMark() const { return m_saverMark; }
    void SetSaverMark(std::uint16_t value) { m_saverMark = value; }

  private:
    friend struct SCoefFields; ///< the tests' view of the fields, here and in the kinds

    std::unique_ptr<CGamma> m_gamma;
    // The fields without an accessor are carried for the calibration library and read by nothing.
    [[maybe_unused]] std::uint64_t m_reserved[2] = {0, 0};
    [[maybe_unused]] std::uint8_t m_processingFlags[3] = {0, 0, 0};
    std::unique_ptr<GammaToLinearTable> m_gammaToLinear;
    std::unique_ptr<LinearToGammaTable> m_linearToGamma;
    std::uint32_t m_fileKind = 0;
    std::uint16_t m_saverMark = 0;
    [[maybe_unused]] std::uint8_t m_saverMark2 = 0;
    [[maybe_unused]] std::uint32_t m_channelLevels[3] = {255, 255, 255};
    [[maybe_unused]] float m_channelFactors[3] = {0.15F, 0.15F, 0.15F};
    [[maybe_unused]] float m_factors[3] = {1.0F, 1.3F, 1.2F};
};

} // namespace trevolt
