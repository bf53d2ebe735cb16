#include "coef/StoredWordCoef.h"

#include <algorithm>
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
        if (Failed(WriteTurnedChunks(stream, m_planes, *m_kind.element, turn, threads)))
            return E_FAIL;
        stream.seekp(0, std::ios::end); // the directory is written last
        return stream ? S_OK : E_FAIL;
    }

  private:
    const SListedWordKind& m_kind;
    CWordPlanes m_planes;
};

bool IsMapSide(std::uint32_t side) { return side >= 1 && side <= std::uint32_t{kLargestMapSide}; }

/// Whether the kind's load takes a file with this header as one of its own words.
bool IsPlainFile(const SWordKind& kind, const SChunkHeader& header) {
    return header.formatId == kind.formatId &&
           (!kind.hasFileKind || header.fileKind == FileKindOf(kind)) && IsMapSide(header.width) &&
           IsMapSide(header.height);
}

} // namespace

std::unique_ptr<CStoredCoef> LoadStoredWordCoef(EWordKind kind, std::istream& stream,
                                                std::size_t threads) {
    const SListedWordKind* const listed = FindListedKind(kind);
    const auto header = ReadChunkHeader(stream);
    if (listed == nullptr || !header || !IsPlainFile(*listed->row, *header))
        return nullptr;
    auto planes = ReadWordPlanes(stream, *header, *listed->element, threads);
    if (!planes)
        return nullptr;
    return std::make_unique<CStoredWordCoef>(*listed, std::move(*planes));
}

} // namespace trevolt
