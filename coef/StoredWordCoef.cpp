#include "coef/StoredWordCoef.h"

#include <utility>

#include "calibuf/TurnedChunkWriter.h"
#include "calibuf/WordPlaneReader.h"
#include "coef/ChunkFile.h"
#include "coef/WordKind.h"
#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/FixedPoint.h"
#include "trevolt/MatrixCoef.h"

namespace trevolt {
namespace {

/// The words that a map's default element is saved as.
std::array<std::uint16_t, kMaxWords> WordsOfDefault(const SListedWordKind& kind) {
    const SMatrixCoef element;
    std::array<std::uint16_t, kMaxWords> words{};
    for (std::size_t k = 0; k < kind.element->wordCount; ++k)
        words[k] = RoundToWord(element.m[kind.row->mapValues[k]]);
    return words;
}

/// The file-kind value of the kind's files.
std::uint8_t FileKindOf(const SWordKind& kind) {
    return kind.hasFileKind ? kVirtualGreenFileKind : std::uint8_t{0};
}

class CStoredWordCoef final : public CStoredCoef {
  public:
    CStoredWordCoef(const SListedWordKind& kind, CWordPlanes planes)
        : m_kind(kind), m_planes(std::move(planes)) {}

    PixelSize Size() const override { return {m_planes.Width(), m_planes.Height()}; }

    Status WriteTurned(std::ostream& stream, const PixelSize& size, std::uint32_t code,
                       std::size_t threads) const override {
        const SPlaneTurn turn{size, code, WordsOfDefault(m_kind)};
        const SOwnerFields owner{.fileKind = FileKindOf(*m_kind.row)};
        WriteChunkHeader(stream, MakeChunkHeader(m_kind.row->formatId, turn.Rect(), owner));
        if (Failed(WriteTurnedChunks(stream, m_planes, turn, threads)))
            return E_FAIL;
        stream.seekp(0, std::ios::end); // the directory is written last
        return stream ? S_OK : E_FAIL;
    }

  private:
    const SListedWordKind& m_kind;
    CWordPlanes m_planes;
};

SStoredLoad Loaded(const SListedWordKind& kind, Status status, CWordPlanes planes) {
    return {status, std::make_unique<CStoredWordCoef>(kind, std::move(planes))};
}

SStoredLoad WithoutPixels(const SListedWordKind& kind, Status status) {
    return Loaded(kind, status, CWordPlanes(*kind.element, 0, 0));
}

bool HasMagicOf(const SWordKind& kind, CWordFileSource& file) {
    ChunkFormatId magic{};
    return !Failed(ReadFileMagic(file, magic)) && kind.HasFormat(magic);
}

/// Reads the extra words of a file whose matrix part was read with `status`. A turn loses them, but
/// what is damaged there is damage of the file.
Status PassOverExtraWords(CWordFileSource& file, const SChunkHeader& header, Status status) {
    if (Failed(status))
        return E_FAIL;
    return PassOverChunks(*file.Open(), header, kWordElementKind<SWordCoef>);
}

} // namespace

SStoredLoad LoadStoredWordCoef(EWordKind kind, std::istream& stream, std::size_t threads) {
    const SListedWordKind* const listed = FindListedKind(kind);
    if (listed == nullptr)
        return {};
    const SWordKind& row = *listed->row;
    CWordFileSource file(stream);
    SChunkHeader header;
    if (const Status status = ReadChunkFileHeader(file, row, header); Failed(status))
        return HasMagicOf(row, file) ? WithoutPixels(*listed, status) : SStoredLoad{};
    if (header.width > kLargestMapSide || header.height > kLargestMapSide)
        return {};
    if (row.hasFileKind && header.fileKind != FileKindOf(row))
        return WithoutPixels(*listed, E_COEF_BADFORMAT);
    auto [status, planes] = ReadWordPlanes(stream, header, *listed->element, threads);
    if (header.formatId == row.extraWordFormatId)
        status = PassOverExtraWords(file, header, status);
    return Failed(status) ? WithoutPixels(*listed, status)
                          : Loaded(*listed, status, std::move(planes));
}

} // namespace trevolt
