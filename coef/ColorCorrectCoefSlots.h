// The virtual operations of CColorCorrectCoef by slot number, with the kinds that offer each. A slot
// that a kind does not offer gives the answer of CDefaultAnswers. Positions are a contract: callers
// reach operations by slot number through a CColorCorrectCoef pointer.
#pragma once

namespace trevolt {

/// Sets of coefficient kinds.
enum CoefKinds : unsigned {
    kNoKind = 0,
    kBright = 1,
    kChroma = 2,
    kGreenBright = 4,
    kGreenChroma = 8,
    kAllKinds = 15,
};

} // namespace trevolt

// X(slot, name, kinds) for slots 1 to 124; slot 0 is the destructor.
// clang-format off
#define TREVOLT_COEF_SLOTS(X) \
    X(1, Create, kAllKinds) \
    X(2, GetWidth, kAllKinds) \
    X(3, GetHeight, kAllKinds) \
    X(4, GetRectBlockCount, kAllKinds) \
    X(5, GetBlockListSize, kAllKinds) \
    X(6, SetBufferMode, kAllKinds) \
    X(7, FillRectChannel, kAllKinds) \
    X(8, SetPixelChannel, kAllKinds) \
    X(9, SetPixel12Word, kGreenChroma) \
    X(10, SetRect4WordU16, kGreenBright | kGreenChroma) \
    X(11, SetRect12WordEx, kGreenChroma) \
    X(12, SetPixel4Word, kGreenBright) \
    X(13, GetRect4Word, kGreenBright) \
    X(14, SetRect4WordRaw, kGreenBright) \
    X(15, GetRectFloatEx, kAllKinds) \
    X(16, SetPixel10Word, kChroma) \
    X(17, SetPixelExtraWord, kChroma) \
    X(18, SetRect9WordU16, kChroma) \
    X(19, GetRect10Word, kChroma) \
    X(20, SetRectFromBytes, kBright | kChroma) \
    X(21, SetPixel9Word, kChroma) \
    X(22, SetRectFromMatrixFloat, kBright | kChroma) \
    X(23, GetRect9Word, kChroma) \
    X(24, SetRect9WordEx, kChroma) \
    X(25, SetPixel3Word, kBright) \
    X(26, SetRectFromFloat3, kBright) \
    X(27, GetRect3Word, kBright) \
    X(28, SetRect3WordEx, kBright) \
    X(29, SetRectChannelFloat, kAllKinds) \
    X(30, TransferRect9WordEx, kChroma) \
    X(31, SetRectExtraWord, kChroma) \
    X(32, SetRect9Word, kChroma) \
    X(33, GetPixel9Word, kChroma | kGreenChroma) \
    X(34, SetRect3Word, kBright) \
    X(35, GetPixel3Word, kBright) \
    X(36, GetRectChannelFloat, kAllKinds) \
    X(37, GetPixelChannelFloat, kAllKinds) \
    X(38, ConvertRect38, kNoKind) \
    X(39, ConvertRect39, kNoKind) \
    X(40, ConvertRect40, kNoKind) \
    X(41, ConvertRect41, kNoKind) \
    X(42, ApplyToStore42, kNoKind) \
    X(43, ApplyToStore43, kNoKind) \
    X(44, ExportCoefEx, kAllKinds) \
    X(45, ExportCoef, kAllKinds) \
    X(46, ExportCoefDefault, kAllKinds) \
    X(47, LoadFromTextA, kBright | kChroma) \
    X(48, LoadFromTextB, kBright | kChroma) \
    X(49, ImportTable49, kBright | kChroma) \
    X(50, ImportTable50, kBright | kChroma) \
    X(51, ImportTable51, kBright | kChroma) \
    X(52, ImportTable52, kBright | kChroma) \
    X(53, ImportTable53, kBright | kChroma) \
    X(54, ImportTable54, kBright | kChroma) \
    X(55, ImportTable55, kBright | kChroma) \
    X(56, ImportTable56, kBright | kChroma) \
    X(57, ImportTable57, kBright | kChroma) \
    X(58, ImportTable58, kBright | kChroma) \
    X(59, SaveTurnedBandB, kBright) \
    X(60, SaveTurnedFileB, kBright) \
    X(61, SaveTurnedBandC, kChroma) \
    X(62, SaveTurnedFileC, kChroma) \
    X(63, SaveTurnedBandVB, kGreenBright) \
    X(64, SaveTurnedFileVB, kGreenBright) \
    X(65, SaveTurnedBandVC, kGreenChroma) \
    X(66, SaveTurnedFileVC, kGreenChroma) \
    X(67, ImportFromView, kBright | kChroma) \
    X(68, ImportFromWords, kBright | kChroma) \
    X(69, LoadCoefRect, kAllKinds) \
    X(70, LoadCoefEx, kAllKinds) \
    X(71, LoadCoef, kAllKinds) \
    X(72, SaveCoefKind72, kBright | kChroma) \
    X(73, SaveCoefKind73, kBright | kChroma) \
    X(74, SaveCoefKind74, kBright | kChroma) \
    X(75, SaveCoefKind75, kBright | kChroma) \
    X(76, SaveCoefKind76, kChroma) \
    X(77, SaveCoefKind77, kBright) \
    X(78, LoadLegacyEx, kBright | kChroma) \
    X(79, LoadLegacy, kBright | kChroma) \
    X(80, LoadLegacy80, kAllKinds) \
    X(81, SaveLegacy81, kBright | kChroma) \
    X(82, SaveLegacy82, kChroma) \
    X(83, SaveLegacy83, kBright) \
    X(84, SaveLegacy84, kBright | kChroma) \
    X(85, SaveLegacy85, kBright | kChroma) \
    X(86, SaveLegacy86, kAllKinds) \
    X(87, GetBrightCoefSize, kBright | kChroma) \
    X(88, GetChromaCoefSize, kBright | kChroma) \
    X(89, GetCoefSize89, kBright | kChroma) \
    X(90, GetCoefSize90, kBright | kChroma) \
    X(91, GetCoefSize91, kBright | kChroma) \
    X(92, GetBrightCoefInfo, kBright) \
    X(93, GetChromaCoefInfo, kChroma) \
    X(94, GetVBCoefInfo, kGreenBright) \
    X(95, GetVCCoefInfo, kGreenChroma) \
    X(96, LoadLegacy96, kBright) \
    X(97, LoadLegacy97, kChroma) \
    X(98, GetRectChannelFloat98, kAllKinds) \
    X(99, Process99, kNoKind) \
    X(100, Process100, kNoKind) \
    X(101, Process101, kNoKind) \
    X(102, Process102, kNoKind) \
    X(103, Process103, kNoKind) \
    X(104, Process104, kNoKind) \
    X(105, SaveBlocks105, kBright | kChroma) \
    X(106, SaveBlocks106, kBright | kChroma) \
    X(107, LoadBlocks107, kBright | kChroma) \
    X(108, LoadBlocks108, kBright | kChroma) \
    X(109, LoadBlocks109, kBright | kChroma) \
    X(110, SetRect4WordVB, kGreenBright) \
    X(111, GetPixel4Word, kGreenBright) \
    X(112, SetRect12WordVC, kGreenChroma) \
    X(113, GetPixel12Word, kGreenChroma) \
    X(114, GetVBCoefSize, kGreenBright) \
    X(115, GetVCCoefSize, kGreenChroma) \
    X(116, GetStoreDigest, kAllKinds) \
    X(117, LoadStoreImage, kAllKinds) \
    X(118, ReadChunkHeader2, kChroma) \
    X(119, CopyRectFrom119, kChroma) \
    X(120, CopyRectFrom120, kBright) \
    X(121, GetStoreInfo, kBright | kChroma) \
    X(122, SaveStoreImage, kAllKinds) \
    X(123, CopyRectOut123, kBright | kChroma | kGreenChroma) \
    X(124, WriteChunks2, kChroma)

// The slots that only the chroma kind has.
#define TREVOLT_CHROMA_SLOTS(X) \
    X(125, SaveWholeStoreC, kChroma) \
    X(126, SetChromaMode, kChroma)
// clang-format on
