// CMapCorrectCoef: what the brightness and the chroma kind share beyond their word store: a
// coefficient map through which files of the float, byte and text kinds are loaded and saved.
#pragma once

#include <algorithm>
#include <memory>

#include "coef/BinaryFileKind.h"
#include "coef/MapTransfer.h"
#include "coef/WordCorrectCoef.h"
#include "formats/BinaryCoefKind.h"
#include "trevolt/ChromaCorrectCoef.h"

namespace trevolt {

/// The owner of a second store, behind the first one's: of the chroma kind's extra words.
template <class Element>
struct SSecondStore {};
template <>
struct SSecondStore<S9WordCoef> {
    std::unique_ptr<CCaliOperation<SWordCoef>> owner;
};

template <class Element>
class CMapCorrectCoef : public CWordCorrectCoef<Element> {
  public:
    using CWordCorrectCoef<Element>::Store;

    Status SetRectFromBytes(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                            std::uint32_t height, const std::uint8_t* values,
                            std::uint32_t divisor) override;
    Status SetRectFromMatrixFloat(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                  std::uint32_t height, const float* values) override;

    Status LoadFromTextA(const wchar_t* path, std::int32_t x, std::int32_t y, std::uint32_t& width,
                         std::uint32_t& height) override;
    Status LoadFromTextB(const wchar_t* path, std::int32_t x, std::int32_t y, std::uint32_t& width,
                         std::uint32_t& height) override;
    Status ImportTable49(const wchar_t* path, SPixelRect& rect, bool clip,
                         const bool* mask) override;
    Status ImportTable50(const wchar_t* path, SPixelRect& rect, bool clip,
                         const bool* mask) override;
    Status ImportTable51(const wchar_t* path, SPixelRect& rect, bool clip,
                         const bool* mask) override;
    Status ImportTable52(const wchar_t* path, SPixelRect& rect, bool clip,
                         const bool* mask) override;
    Status ImportTable53(const wchar_t* path, std::uint32_t x, std::uint32_t y) override;
    Status ImportTable54(const wchar_t* path, std::uint32_t x, std::uint32_t y) override;
    Status ImportTable55(const wchar_t* path, std::uint32_t x, std::uint32_t y) override;
    Status ImportTable56(const wchar_t* path, std::uint32_t x, std::uint32_t y) override;
    Status ImportTable57(const wchar_t* path, const SOperationRecord* operation) override;
    Status ImportTable58(const wchar_t* path) override;
    Status ImportFromView(const CChromaCorrectCoef* map, const SPixelRect& rect) override;
    Status ImportFromWords(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                           std::uint32_t height, const std::uint16_t* words) override;

    Status LoadCoefRect(const wchar_t* path, std::uint32_t x, std::uint32_t y) override;

    Status SaveCoefKind72(const wchar_t* path, const SPixelRect& rect) override;
    Status SaveCoefKind73(const wchar_t* path, const SPixelRect& rect) override;
    Status SaveCoefKind74(const wchar_t* path, const SPixelRect& rect) override;
    Status SaveCoefKind75(const wchar_t* path, const SPixelRect& rect) override;
    Status LoadLegacyEx(const wchar_t* path, SPixelRect& rect) override;
    Status LoadLegacy(const wchar_t* path) override;
    Status SaveLegacy81(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode) override;
    Status SaveLegacy84(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode) override;
    Status SaveLegacy85(const wchar_t* path) override;

    Status GetCoefSize89(const wchar_t* path, std::uint32_t& width, std::uint32_t& height) override;
    Status GetCoefSize90(const wchar_t* path, std::uint32_t& width, std::uint32_t& height) override;
    Status GetCoefSize91(const wchar_t* path, std::uint32_t& width, std::uint32_t& height) override;

    Status SaveBlocks105(std::ostream& stream) override;
    Status SaveBlocks106(std::ostream& stream, const SPixelRect& rect) override;
    Status LoadBlocks107(std::istream& stream, std::uint32_t x, std::uint32_t y) override;
    Status LoadBlocks108(std::istream& stream, std::uint32_t x, std::uint32_t y,
                         std::uint32_t clipWidth, std::uint32_t clipHeight) override;
    Status LoadBlocks109(std::istream& stream, std::uint32_t x, std::uint32_t y,
                         std::uint32_t firstIndex, std::uint32_t endIndex) override;

    Status GetStoreInfo(SStoreInfo& info) const override;
    Status CopyRectOut123(std::uint32_t x, std::uint32_t y,
                          const SWordTarget& target) const override;

    /// As that of every kind; also its own float kind and a map image.
    Status LoadFile(CWordFileSource& file, std::uint32_t x, std::uint32_t y);

  protected:
    CMapCorrectCoef();

    /// Loads the file that opens with `magic`: a word file of the kind, its own float kind, or a
    /// map image. E_COEF_BADFORMAT for any other.
    Status LoadRecognised(const ChunkFormatId& magic, CWordFileSource& file, std::uint32_t x,
                          std::uint32_t y);

    /// Lets change(map, rect) work on the store's pixels in the map, then takes the rectangle's back
    /// and hands the rectangle to the caller.
    template <class Change>
    Status ChangeRect(SPixelRect& rect, Change&& change) {
        SPixelRect changed = rect;
        const Status status = ChangeThroughMap<Element>(Store(), *m_pMap, changed,
                                                        [&] { return change(*m_pMap, changed); });
        if (!Failed(status)) {
            rect = changed;
            m_pMap->Reset();
        }
        return status;
    }

    /// Lets write(map) save the store's pixels from the map.
    template <class Write>
    Status SaveThroughMap(Write&& write) {
        Status status = StoreToMap<Element>(Store(), *m_pMap);
        if (!Failed(status))
            status = write(std::as_const(*m_pMap));
        if (!Failed(status))
            m_pMap->Reset();
        return status;
    }

    /// Places a file by one of the placed readers, with `mask` (null for all entries).
    template <class Kind>
    Status PlaceFile(Status (*place)(CChromaCorrectCoef&, const wchar_t*, SPixelRect&, bool,
                                     const typename Kind::EntryMask&),
                     const wchar_t* path, SPixelRect& rect, bool clip, const bool* mask) {
        auto entries = Kind::AllEntries();
        if (mask != nullptr)
            std::copy_n(mask, entries.size(), entries.begin());
        return ChangeRect(rect, [&](CChromaCorrectCoef& map, SPixelRect& placed) {
            return place(map, path, placed, clip, entries);
        });
    }

    [[no_unique_address]] SSecondStore<Element> m_second;

  private:
    friend struct SCoefFields;

    Status LoadText(const wchar_t* path, std::int32_t x, std::int32_t y, std::uint32_t& width,
                    std::uint32_t& height, bool diagonalOnly);
    template <class Read>
    Status LoadDiagonal(const SBinaryFileKind& kind, const wchar_t* path, Read&& read);
    /// Sizes the map for a binary file, no larger than the store, whatever a header claims. `extent`
    /// gets the size that the header tells, 1 × 1 when it tells none. Statuses of `SizeMap`.
    Status SizeMapFor(const SBinaryFileKind& kind, CWordFileSource& file, SStoreRect& extent);
    Status ReadIntoMap(const SBinaryFileKind& kind, CWordFileSource& file);
    Status LoadBinary(const SBinaryFileKind& kind, const wchar_t* path, std::uint32_t x,
                      std::uint32_t y);
    /// As above, but the result is the conversion's status, also after a failed read; without
    /// memory for the map or the file's body E_FAIL, the store unchanged.
    Status LoadOwnBinary(CWordFileSource& file, std::uint32_t x, std::uint32_t y);
    void LoadMapImage(CWordFileSource& file, std::uint32_t x, std::uint32_t y);
    /// Takes map pixels from (0, 0) on into the store; the map is emptied after a success.
    Status TakeFromMap(const SStoreRect& target);

    std::unique_ptr<CChromaCorrectCoef> m_pMap;
};

extern template class CMapCorrectCoef<S3WordCoef>;
extern template class CMapCorrectCoef<S9WordCoef>;

} // namespace trevolt
