// What a coefficient object answers to the operations that its kind does not offer: E_COEF_NOTIMPL
// for slots 118 to 124, the default elements for the pixel getters, E_FAIL for every other one. A
// kind overrides what it does offer.
#pragma once

#include "trevolt/ColorCorrectCoef.h"

namespace trevolt {

class CDefaultAnswers : public CColorCorrectCoef {
  public:
    Status SetPixel12Word(std::uint32_t, std::uint32_t, const S12WordCoef&) override {
        return E_FAIL;
    }
    Status SetRect4WordU16(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                           const std::uint16_t*) override {
        return E_FAIL;
    }
    Status SetRect12WordEx(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                           const std::uint16_t*, std::uint32_t) override {
        return E_FAIL;
    }
    Status SetPixel4Word(std::uint32_t, std::uint32_t, const S4WordCoef&) override {
        return E_FAIL;
    }
    Status GetRect4Word(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                        std::uint16_t*) const override {
        return E_FAIL;
    }
    Status SetRect4WordRaw(const SPixelRect&, const std::uint16_t*) override { return E_FAIL; }
    Status SetPixel10Word(std::uint32_t, std::uint32_t, const S9WordCoef&, std::uint16_t) override {
        return E_FAIL;
    }
    Status SetPixelExtraWord(std::uint32_t, std::uint32_t, std::uint16_t) override {
        return E_FAIL;
    }
    Status SetRect9WordU16(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                           const std::uint16_t*) override {
        return E_FAIL;
    }
    Status GetRect10Word(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                         std::uint16_t*) const override {
        return E_FAIL;
    }
    Status SetRectFromBytes(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                            const std::uint8_t*, std::uint32_t) override {
        return E_FAIL;
    }
    Status SetPixel9Word(std::uint32_t, std::uint32_t, const S9WordCoef&) override {
        return E_FAIL;
    }
    Status SetRectFromMatrixFloat(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                                  const float*) override {
        return E_FAIL;
    }
    Status GetRect9Word(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                        std::uint16_t*) const override {
        return E_FAIL;
    }
    Status SetRect9WordEx(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                          const std::uint16_t*, std::uint32_t) override {
        return E_FAIL;
    }
    Status SetPixel3Word(std::uint32_t, std::uint32_t, const S3WordCoef&) override {
        return E_FAIL;
    }
    Status SetRectFromFloat3(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                             const float*) override {
        return E_FAIL;
    }
    Status GetRect3Word(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                        std::uint16_t*) const override {
        return E_FAIL;
    }
    Status SetRect3WordEx(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                          const std::uint16_t*, std::uint32_t) override {
        return E_FAIL;
    }
    Status TransferRect9WordEx(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                               std::uint16_t*, std::uint32_t, bool) override {
        return E_FAIL;
    }
    Status SetRectExtraWord(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                            const std::uint16_t*) override {
        return E_FAIL;
    }
    Status SetRect9Word(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                        const std::uint16_t*) override {
        return E_FAIL;
    }
    Status SetRect3Word(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                        const std::uint16_t*) override {
        return E_FAIL;
    }
    Status ConvertRect38(const SPixelRect&) override { return E_FAIL; }
    Status ConvertRect39(const SPixelRect&) override { return E_FAIL; }
    Status ConvertRect40(const SPixelRect&) override { return E_FAIL; }
    Status ConvertRect41(const SPixelRect&) override { return E_FAIL; }
    Status ApplyToStore42() override { return E_FAIL; }
    Status ApplyToStore43() override { return E_FAIL; }
    Status LoadFromTextA(const wchar_t*, std::int32_t, std::int32_t, std::uint32_t&,
                         std::uint32_t&) override {
        return E_FAIL;
    }
    Status LoadFromTextB(const wchar_t*, std::int32_t, std::int32_t, std::uint32_t&,
                         std::uint32_t&) override {
        return E_FAIL;
    }
    Status ImportTable49(const wchar_t*, SPixelRect&, bool, const bool*) override { return E_FAIL; }
    Status ImportTable50(const wchar_t*, SPixelRect&, bool, const bool*) override { return E_FAIL; }
    Status ImportTable51(const wchar_t*, SPixelRect&, bool, const bool*) override { return E_FAIL; }
    Status ImportTable52(const wchar_t*, SPixelRect&, bool, const bool*) override { return E_FAIL; }
    Status ImportTable53(const wchar_t*, std::uint32_t, std::uint32_t) override { return E_FAIL; }
    Status ImportTable54(const wchar_t*, std::uint32_t, std::uint32_t) override { return E_FAIL; }
    Status ImportTable55(const wchar_t*, std::uint32_t, std::uint32_t) override { return E_FAIL; }
    Status ImportTable56(const wchar_t*, std::uint32_t, std::uint32_t) override { return E_FAIL; }
    Status ImportTable57(const wchar_t*, const SOperationRecord*) override { return E_FAIL; }
    Status ImportTable58(const wchar_t*) override { return E_FAIL; }
    Status SaveTurnedBandB(const wchar_t*, const SPixelRect&, std::uint32_t, const SPixelRect&,
                           std::uint64_t&, std::uint64_t&, std::uint32_t, const std::byte*,
                           const std::uint8_t*) override {
        return E_FAIL;
    }
    Status SaveTurnedFileB(const wchar_t*, const SPixelRect&, std::uint32_t, const std::byte*,
                           const std::uint8_t*) override {
        return E_FAIL;
    }
    Status SaveTurnedBandC(const wchar_t*, const SPixelRect&, std::uint32_t, const SPixelRect&,
                           std::uint64_t&, std::uint64_t&, std::uint32_t, const std::byte*,
                           const std::uint8_t*) override {
        return E_FAIL;
    }
    Status SaveTurnedFileC(const wchar_t*, const SPixelRect&, std::uint32_t, const std::byte*,
                           const std::uint8_t*) override {
        return E_FAIL;
    }
    Status SaveTurnedBandVB(const wchar_t*, const SPixelRect&, std::uint32_t, const SPixelRect&,
                            std::uint64_t&, std::uint64_t&, std::uint32_t, const std::byte*,
                            const std::uint8_t*) override {
        return E_FAIL;
    }
    Status SaveTurnedFileVB(const wchar_t*, const SPixelRect&, std::uint32_t, const std::byte*,
                            const std::uint8_t*) override {
        return E_FAIL;
    }
    Status SaveTurnedBandVC(const wchar_t*, const SPixelRect&, std::uint32_t, const SPixelRect&,
                            std::uint64_t&, std::uint64_t&, std::uint32_t, const std::byte*,
                            const std::uint8_t*) override {
        return E_FAIL;
    }
    Status SaveTurnedFileVC(const wchar_t*, const SPixelRect&, std::uint32_t, const std::byte*,
                            const std::uint8_t*) override {
        return E_FAIL;
    }
    Status ImportFromView(const CChromaCorrectCoef*, const SPixelRect&) override { return E_FAIL; }
    Status ImportFromWords(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                           const std::uint16_t*) override {
        return E_FAIL;
    }
    Status SaveCoefKind72(const wchar_t*, const SPixelRect&) override { return E_FAIL; }
    Status SaveCoefKind73(const wchar_t*, const SPixelRect&) override { return E_FAIL; }
    Status SaveCoefKind74(const wchar_t*, const SPixelRect&) override { return E_FAIL; }
    Status SaveCoefKind75(const wchar_t*, const SPixelRect&) override { return E_FAIL; }
    Status SaveCoefKind76(const wchar_t*) override { return E_FAIL; }
    Status SaveCoefKind77(const wchar_t*) override { return E_FAIL; }
    Status LoadLegacyEx(const wchar_t*, SPixelRect&) override { return E_FAIL; }
    Status LoadLegacy(const wchar_t*) override { return E_FAIL; }
    Status SaveLegacy81(const wchar_t*, const SPixelRect&, std::uint32_t) override {
        return E_FAIL;
    }
    Status SaveLegacy82(const wchar_t*, const SPixelRect&, std::uint32_t) override {
        return E_FAIL;
    }
    Status SaveLegacy83(const wchar_t*, const SPixelRect&, std::uint32_t) override {
        return E_FAIL;
    }
    Status SaveLegacy84(const wchar_t*, const SPixelRect&, std::uint32_t) override {
        return E_FAIL;
    }
    Status SaveLegacy85(const wchar_t*) override { return E_FAIL; }
    Status GetBrightCoefSize(const wchar_t*, std::uint32_t&, std::uint32_t&) override {
        return E_FAIL;
    }
    Status GetChromaCoefSize(const wchar_t*, std::uint32_t&, std::uint32_t&) override {
        return E_FAIL;
    }
    Status GetCoefSize89(const wchar_t*, std::uint32_t&, std::uint32_t&) override { return E_FAIL; }
    Status GetCoefSize90(const wchar_t*, std::uint32_t&, std::uint32_t&) override { return E_FAIL; }
    Status GetCoefSize91(const wchar_t*, std::uint32_t&, std::uint32_t&) override { return E_FAIL; }
    Status GetBrightCoefInfo(const wchar_t*, std::byte*, std::uint32_t, std::uint8_t&) override {
        return E_FAIL;
    }
    Status GetChromaCoefInfo(const wchar_t*, std::byte*, std::uint32_t, std::uint8_t&) override {
        return E_FAIL;
    }
    Status GetVBCoefInfo(const wchar_t*, std::byte*, std::uint32_t, std::uint8_t&) override {
        return E_FAIL;
    }
    Status GetVCCoefInfo(const wchar_t*, std::byte*, std::uint32_t, std::uint8_t&) override {
        return E_FAIL;
    }
    Status LoadLegacy96(const wchar_t*, std::int32_t, std::int32_t, const bool*) override {
        return E_FAIL;
    }
    Status LoadLegacy97(const wchar_t*, std::int32_t, std::int32_t, const bool*) override {
        return E_FAIL;
    }
    Status Process99(const SPixelRect&) override { return E_FAIL; }
    Status Process100(const SPixelRect&) override { return E_FAIL; }
    Status Process101(const SPixelRect&) override { return E_FAIL; }
    Status Process102(const SPixelRect&) override { return E_FAIL; }
    Status Process103(const SPixelRect&) override { return E_FAIL; }
    Status Process104(const SPixelRect&) override { return E_FAIL; }
    Status SaveBlocks105(std::ostream&) override { return E_FAIL; }
    Status SaveBlocks106(std::ostream&, const SPixelRect&) override { return E_FAIL; }
    Status LoadBlocks107(std::istream&, std::uint32_t, std::uint32_t) override { return E_FAIL; }
    Status LoadBlocks108(std::istream&, std::uint32_t, std::uint32_t, std::uint32_t,
                         std::uint32_t) override {
        return E_FAIL;
    }
    Status LoadBlocks109(std::istream&, std::uint32_t, std::uint32_t, std::uint32_t,
                         std::uint32_t) override {
        return E_FAIL;
    }
    Status SetRect4WordVB(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                          const std::uint16_t*, std::uint32_t) override {
        return E_FAIL;
    }
    S4WordCoef GetPixel4Word(std::uint32_t, std::uint32_t) const override { return {}; }
    Status SetRect12WordVC(const SPixelRect&, const std::uint16_t*) override { return E_FAIL; }
    S12WordCoef GetPixel12Word(std::uint32_t, std::uint32_t) const override { return {}; }
    Status GetVBCoefSize(const wchar_t*, std::uint32_t&, std::uint32_t&) override { return E_FAIL; }
    Status GetVCCoefSize(const wchar_t*, std::uint32_t&, std::uint32_t&) override { return E_FAIL; }
    Status ReadChunkHeader2(std::istream&, SChunkHeader&) override { return E_COEF_NOTIMPL; }
    Status CopyRectFrom119(const SWordView&, std::uint32_t, std::uint32_t) override {
        return E_COEF_NOTIMPL;
    }
    Status CopyRectFrom120(const SWordView&, std::uint32_t, std::uint32_t) override {
        return E_COEF_NOTIMPL;
    }
    Status GetStoreInfo(SStoreInfo&) const override { return E_COEF_NOTIMPL; }
    Status CopyRectOut123(std::uint32_t, std::uint32_t, const SWordTarget&) const override {
        return E_COEF_NOTIMPL;
    }
    Status WriteChunks2(std::ostream&, const SPixelRect&, const std::byte*,
                        const std::uint8_t*) override {
        return E_COEF_NOTIMPL;
    }
};

} // namespace trevolt
