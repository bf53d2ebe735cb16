// CCNewChromaCorrectCoef: the chroma kind of coefficient object. A pixel has a 3×3 colour matrix of
// nine words and, in a second store, one extra word. Its own files are the plain chroma word file
// and the one with extra words (docs/formats/9wcoef.md); it also loads `.9fcoef` files.
//
// An object is used by one thread at a time; different objects by any threads.
#pragma once

#include <string_view>

#include "coef/MapCorrectCoef.h"

namespace trevolt {

/// Whether a chroma file under this path is written with extra words.
bool NamesExtraWordFile(std::wstring_view path);

class CCNewChromaCorrectCoef final : public CMapCorrectCoef<S9WordCoef> {
  public:
    CCNewChromaCorrectCoef();

    /// The extra-word store, null without one; owned by the object.
    CCaliBuf* ExtraStore() { return m_second.owner ? &m_second.owner->Buffer() : nullptr; }
    const CCaliBuf* ExtraStore() const {
        return m_second.owner ? &m_second.owner->Buffer() : nullptr;
    }
    /// Replaces the extra-word store; null leaves the object without one.
    void SetExtraStoreOwner(std::unique_ptr<CCaliOperation<SWordCoef>> owner) {
        m_second.owner = std::move(owner);
    }
    /// Hands the extra-word store over; the object is left without one.
    std::unique_ptr<CCaliOperation<SWordCoef>> TakeExtraStoreOwner() {
        return std::move(m_second.owner);
    }
    /// A pixel's extra word, null when it is missing.
    SWordCoef* FindExtraWord(std::uint32_t x, std::uint32_t y) {
        return m_second.owner ? m_second.owner->Find(x, y) : nullptr;
    }
    const SWordCoef* FindExtraWord(std::uint32_t x, std::uint32_t y) const {
        return m_second.owner ? std::as_const(*m_second.owner).Find(x, y) : nullptr;
    }

    /// The object's own table, which channel writes with an index from 1 to 56 read.
    const CCaliOperationData* TransferTable() const { return &m_transferTable; }

    std::uint32_t ChromaMode() const { return m_mode; }

    Status Create(std::uint16_t width, std::uint16_t height) override;
    Status SetBufferMode(bool unlimited) override;
    bool FillRectChannel(std::int32_t channel, std::uint32_t x, std::uint32_t y,
                         std::uint32_t width, std::uint32_t height, float value,
                         std::uint32_t tableIndex) override;
    bool SetPixelChannel(std::int32_t channel, std::uint32_t x, std::uint32_t y, float value,
                         std::uint32_t tableIndex) override;

    Status SetPixel10Word(std::uint32_t x, std::uint32_t y, const S9WordCoef& matrix,
                          std::uint16_t extraWord) override;
    Status SetPixelExtraWord(std::uint32_t x, std::uint32_t y, std::uint16_t extraWord) override;
    Status SetRect9WordU16(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                           std::uint32_t height, const std::uint16_t* words) override;
    Status GetRect10Word(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                         std::uint32_t height, std::uint16_t* words) const override;
    Status SetPixel9Word(std::uint32_t x, std::uint32_t y, const S9WordCoef& words) override;
    Status GetRect9Word(std::uint32_t x, std::uint32_t y, std::uint32_t width, std::uint32_t height,
                        std::uint16_t* words) const override;
    Status SetRect9WordEx(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                          std::uint32_t height, const std::uint16_t* words,
                          std::uint32_t pitch) override;
    Status TransferRect9WordEx(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                               std::uint32_t height, std::uint16_t* words, std::uint32_t pitch,
                               bool intoStore) override;
    Status SetRectExtraWord(std::uint32_t x, std::uint32_t y, std::uint32_t width,
                            std::uint32_t height, const std::uint16_t* words) override;
    Status SetRect9Word(std::uint32_t x, std::uint32_t y, std::uint32_t width, std::uint32_t height,
                        const std::uint16_t* words) override;
    S9WordCoef GetPixel9Word(std::uint32_t x, std::uint32_t y) const override;

    Status ExportCoef(const wchar_t* path, const SPixelRect& rect, const std::byte* name,
                      const std::uint8_t* flag) override;
    Status LoadCoefRect(const wchar_t* path, std::uint32_t x, std::uint32_t y) override;

    Status SaveTurnedBandC(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode,
                           const SPixelRect& whole, std::uint64_t& directoryPosition,
                           std::uint64_t& dataPosition, std::uint32_t bandOffset,
                           const std::byte* name, const std::uint8_t* flag) override;
    Status SaveTurnedFileC(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode,
                           const std::byte* name, const std::uint8_t* flag) override;
    Status SaveCoefKind76(const wchar_t* path) override;
    Status SaveLegacy82(const wchar_t* path, const SPixelRect& rect, std::uint32_t mode) override;
    Status LoadLegacy97(const wchar_t* path, std::int32_t x, std::int32_t y,
                        const bool* mask) override;

    Status GetBrightCoefSize(const wchar_t* path, std::uint32_t& width,
                             std::uint32_t& height) override;
    Status GetChromaCoefSize(const wchar_t* path, std::uint32_t& width,
                             std::uint32_t& height) override;
    Status GetChromaCoefInfo(const wchar_t* path, std::byte* name, std::uint32_t capacity,
                             std::uint8_t& flag) override;

    Status ReadChunkHeader2(std::istream& stream, SChunkHeader& header) override;
    Status CopyRectFrom119(const SWordView& view, std::uint32_t x, std::uint32_t y) override;
    Status WriteChunks2(std::ostream& stream, const SPixelRect& rect, const std::byte* name,
                        const std::uint8_t* flag) override;

    /// As that of the kinds with a map; also a file with extra words.
    Status LoadFile(CWordFileSource& file, std::uint32_t x, std::uint32_t y);

    // ---- slots of the chroma kind alone ----

    /// [125] Writes the whole of both stores as a word file with extra words, whatever the path's
    /// extension. E_POINTER for a null path or without a matrix store, E_COEF_OPENFAILED; else
    /// S_OK, whatever became of the chunks.
    virtual Status SaveWholeStoreC(const wchar_t* path);
    /// [126] Sets the mode, which is carried for the calibration library and read by nothing else.
    virtual void SetChromaMode(std::uint32_t mode);

  private:
    friend struct SCoefFields;

    CCaliOperationData m_transferTable;
    std::uint32_t m_mode = 0;
};

template <>
struct SObjectOf<S9WordCoef> {
    using Type = CCNewChromaCorrectCoef;
};

} // namespace trevolt
