// CWordCorrectCoef: what every coefficient object does with its word store, whatever its element:
// store, channels, floats, word files, turned copies, images. The kinds add what is their own; a
// kind that has nothing of its own is this, without a transfer table.
#pragma once

#include <memory>
#include <utility>

#include "calibuf/CaliOperation.h"
#include "coef/ChunkFile.h"
#include "coef/DefaultAnswers.h"
#include "coef/StoreTransfer.h"
#include "coef/WordFileSource.h"
#include "coef/WordKind.h"
#include "trevolt/CaliOperationData.h"

namespace trevolt {

template <class Element>
class CWordCorrectCoef : public CDefaultAnswers {
  public:
    CWordCorrectCoef();
    ~CWordCorrectCoef() override;

    // ---- access for those who know the kind ----

    /// The store, null without one; owned by the object.
    CCaliBuf* Store() { return m_pStore ? &m_pStore->Buffer() : nullptr; }
    const CCaliBuf* Store() const { return m_pStore ? &m_pStore->Buffer() : nullptr; }
    /// Replaces the store; null leaves the object without one.
    void SetStoreOwner(std::unique_ptr<CCaliOperation<Element>> owner) {
        m_pStore = std::move(owner);
    }

    /// A pixel's element, null when it is missing.
    Element* FindPixel(std::uint32_t x, std::uint32_t y) {
        return m_pStore ? m_pStore->Find(x, y) : nullptr;
    }
    const Element* FindPixel(std::uint32_t x, std::uint32_t y) const {
        return m_pStore ? std::as_const(*m_pStore).Find(x, y) : nullptr;
    }

    // ---- operations of the interface ----

    Status Create(std::uint16_t width, std::uint16_t height) override;
    std::uint32_t GetWidth() const override;
    std::uint32_t GetHeight() const override;
    std::uint32_t GetRectBlockCount(const SPixelRect& rect) const override;
    std::uint32_t GetBlockListSize() const override;
    Status SetBufferMode(bool unlimited) override;

    bool FillRectChannel(std::int32_t channel, std::uint32_t x, std::uint32_t y,
                         std::uint32_t width, std::uint32_t height, float value,
                         std::uint32_t tableIndex) override;
    bool SetPixelChannel(std::int32_t channel, std::uint32_t x, std::uint32_t y, float value,
                         std::uint32_t tableIndex) override;
    Status GetRectFloatEx(std::int32_t channel, SPixelRect& region, float* values) const override;
    Status SetRectChannelFloat(std::int32_t channel, std::uint32_t x, std::uint32_t y,
                               std::uint32_t width, std::uint32_t height,
                               const float* values) override;
    Status GetRectChannelFloat(std::int32_t channel, std::uint32_t x, std::uint32_t y,
                               std::uint32_t width, std::uint32_t height,
                               float* values) const override;
    Status GetRectChannelFloat98(std::int32_t channel, std::uint32_t x, std::uint32_t y,
                                 std::uint32_t width, std::uint32_t height, float* values,
                                 std::uint32_t pitch) const override;
    float GetPixelChannelFloat(std::int32_t channel, std::uint32_t x,
                               std::uint32_t y) const override;

    Status ExportCoefEx(const wchar_t* path, const SPixelRect& band, const SPixelRect& whole,
                        std::uint64_t& directoryPosition, std::uint64_t& dataPosition,
                        std::uint32_t bandOffset, const std::byte* name,
                        const std::uint8_t* flag) override;
    Status ExportCoef(const wchar_t* path, const SPixelRect& rect, const std::byte* name,
                      const std::uint8_t* flag) override;
    Status ExportCoefDefault(const wchar_t* path) override;

    Status LoadCoefRect(const wchar_t* path, std::uint32_t x, std::uint32_t y) override;
    Status LoadCoefEx(const wchar_t* path, SPixelRect& rect) override;
    Status LoadCoef(const wchar_t* path) override;
    Status LoadLegacy80(const wchar_t* path) override;
    Status SaveLegacy86(const wchar_t* path) override;

    Status GetStoreDigest(std::wstring& text) const override;
    Status LoadStoreImage(const std::byte* image) override;
    Status SaveStoreImage(std::byte* destination, std::uint32_t originX,
                          std::uint32_t originY) const override;

    // ---- operations that are no slots ----

    /// As slot 117 for an image that is not trusted: nothing past its `length` bytes is read.
    /// Statuses of slot 117; E_FAIL also for an image shorter than its header and directory.
    Status LoadBoundedStoreImage(const std::byte* image, std::size_t length);

    /// Bytes that slot 122 writes at most; 0 without a store.
    std::uint64_t MaxStoreImageBytes() const;

    /// Writes the rectangle as a word file with the kind's identifier (slot 45 without its choice
    /// by extension). E_POINTER for a null path or without a store; the kind's answer when the file
    /// does not open; else S_OK, whatever became of the chunks.
    Status WriteChunkFile(const wchar_t* path, const SPixelRect& rect, const std::byte* name,
                          const std::uint8_t* flag) const;

    /// As `WriteChunkFile` at a stream's position. E_POINTER without a store, E_FAIL when the stream
    /// fails, and the rectangle writer's status.
    Status WriteChunkStream(std::ostream& stream, const SPixelRect& rect) const;

    /// As slot 69 for a file in either form; kinds that load more than their own word files have
    /// operations of this name that do. Statuses of slot 69.
    Status LoadFile(CWordFileSource& file, std::uint32_t x, std::uint32_t y);

  protected:
    static constexpr const SWordKind& Kind() { return kWordKind<Element>; }

    SOwnerFields OwnerFields(const std::byte* name, const std::uint8_t* flag) const {
        return {Kind().hasFileKind ? static_cast<std::uint8_t>(FileKind()) : std::uint8_t{0}, name,
                flag};
    }

    /// The size of a file that the kind sizes, of the object's file-kind value.
    Status QuerySize(const wchar_t* path, std::uint32_t& width, std::uint32_t& height) const;
    /// Owner data of a word file of the kind, whatever its file-kind value.
    static Status ReadInfo(const wchar_t* path, std::byte* name, std::uint32_t capacity,
                           std::uint8_t& flag);

    Element PixelOrDefault(std::uint32_t x, std::uint32_t y) const {
        const Element* pixel = FindPixel(x, y);
        return pixel == nullptr ? Element{} : *pixel;
    }

    Status SetPixel(std::uint32_t x, std::uint32_t y, const Element& words) {
        Element* pixel = FindPixel(x, y);
        if (pixel == nullptr)
            return E_FAIL;
        *pixel = words;
        return S_OK;
    }

    // The channel writes of slots 7 and 8, through the kind's transfer table; null without one.
    bool FillThrough(CCaliOperationData* table, std::int32_t channel, const SStoreRect& rect,
                     float value, std::uint32_t tableIndex);
    bool SetThrough(const CCaliOperationData* table, std::int32_t channel, std::uint32_t x,
                    std::uint32_t y, float value, std::uint32_t tableIndex);

    /// Words given by the rectangle's edges. E_COEF_INVALIDARG when left or top is negative.
    Status SetEdgedRect(const SPixelRect& rect, const std::uint16_t* words);

    // The view transfers of slots 119, 120 and 123.
    Status CopyViewIn(const SWordView& view, std::uint32_t x, std::uint32_t y);
    Status CopyViewOut(std::uint32_t x, std::uint32_t y, const SWordTarget& target) const;

    // The turned writers of slots 59 to 66.
    Status SaveTurnedBand(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode,
                          const SBandPlace& place, const SOwnerFields& owner) const;
    Status SaveTurnedFile(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode,
                          const SOwnerFields& owner) const;

  private:
    friend struct SCoefFields;

    /// Makes the turned copy; the statuses of slot 59 before the file is touched.
    Status MakeTurnedCopy(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode,
                          CCaliOperation<Element>& copy) const;

    std::unique_ptr<CCaliOperation<Element>> m_pStore;
};

#define TREVOLT_WORD_OBJECT(kind, element, sizes) extern template class CWordCorrectCoef<element>;
TREVOLT_WORD_KINDS(TREVOLT_WORD_OBJECT)
#undef TREVOLT_WORD_OBJECT

/// The object of an element's kind: a class of the kind's own says so where it is declared, so it is
/// asked for behind coef/WordObjects.h only.
template <class Element>
struct SObjectOf {
    using Type = CWordCorrectCoef<Element>;
};

} // namespace trevolt
