#include "coef/StoredWordCoef.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "calibuf/StoreDigest.h"
#include "calibuf/TurnedChunkWriter.h"
#include "calibuf/WordPlaneReader.h"
#include "coef/ChunkFile.h"
#include "coef/TurnedExtras.h"
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

/// Beside the planes of a file, what a turn of it keeps.
struct SKeptExtras {
    SChunkHeader header; ///< of the file
    std::optional<PixelSize> wall;
    std::optional<CWordPlanes> words; ///< of a file with extra words

    SOwnerFields Owner(std::uint8_t fileKind) const {
        return {fileKind, reinterpret_cast<const std::byte*>(header.ownerData.data()),
                &header.ownerFlag};
    }
};

class CStoredWordCoef final : public CStoredCoef {
  public:
    CStoredWordCoef(const SListedWordKind& kind, CWordPlanes planes,
                    std::optional<SKeptExtras> extras)
        : m_kind(kind), m_planes(std::move(planes)), m_extras(std::move(extras)) {}

    PixelSize Size() const override { return {m_planes.Width(), m_planes.Height()}; }

    Status WriteTurned(std::ostream& stream, const PixelSize& size, std::uint32_t code,
                       std::size_t threads) const override {
        SPlaneTurn turn{size, code, WordsOfDefault(m_kind)};
        const std::uint8_t fileKind = FileKindOf(*m_kind.row);
        if (!m_extras)
            return WriteMatrix(stream, turn, {.fileKind = fileKind}, threads);
        const auto place = TurnedOrigin(m_extras->header, size, code, m_extras->wall);
        if (!place || !IsInGrid(*place, CQuarterTurn(code, size.width, size.height).TurnedSize()))
            return E_COEF_INVALIDARG;
        turn.place = *place;
        const SOwnerFields owner = m_extras->Owner(fileKind);
        return m_extras->words ? WriteBothParts(stream, turn, owner, threads)
                               : WriteMatrix(stream, turn, owner, threads);
    }

    void CopyElements(std::uint32_t x, std::uint32_t y, std::uint32_t count,
                      SMatrixCoef* elements) const override {
        for (std::uint32_t i = 0; i < count; ++i) {
            elements[i] = SMatrixCoef{};
            for (const std::size_t value : m_kind.row->zeroedMapValues)
                elements[i].m[value] = 0.0F;
        }
        while (count > 0) { // up to the end of a block, since planes may hold single ones
            const std::uint32_t run = std::min(count, kBlockWidth - x % kBlockWidth);
            for (std::size_t k = 0; k < m_kind.element->wordCount; ++k)
                CopyWords(k, x, y, run, elements);
            x += run;
            elements += run;
            count -= run;
        }
    }

    std::optional<std::wstring> StoreDigest() const override {
        std::wstring text;
        return ComputeStoreDigest(m_planes, text) ? std::optional(std::move(text)) : std::nullopt;
    }

  private:
    /// Word k of pixels of one block.
    void CopyWords(std::size_t k, std::uint32_t x, std::uint32_t y, std::uint32_t count,
                   SMatrixCoef* elements) const {
        const std::size_t value = m_kind.row->mapValues[k];
        const std::uint16_t* const words = m_planes.FindRun(k, x, y, count);
        const float missing = WordToFloat(m_kind.element->defaultWords[k]);
        for (std::uint32_t i = 0; i < count; ++i)
            elements[i].m[value] = words == nullptr ? missing : WordToFloat(words[i]);
    }

    Status WriteMatrix(std::ostream& stream, const SPlaneTurn& turn, const SOwnerFields& owner,
                       std::size_t threads) const {
        WriteChunkHeader(stream, MakeChunkHeader(m_kind.row->formatId, turn.Rect(), owner));
        return WritePart(stream, m_planes, turn, threads);
    }

    /// The matrix part and that of the extra words, in the layout of `WriteExtraWordStream`.
    Status WriteBothParts(std::ostream& stream, SPlaneTurn turn, const SOwnerFields& owner,
                          std::size_t threads) const {
        SChunkHeader header = MakeChunkHeader(*m_kind.row->extraWordFormatId, turn.Rect(), owner);
        const std::streampos start = stream.tellp();
        WriteChunkHeader(stream, header);
        if (const Status status = WritePart(stream, m_planes, turn, threads); Failed(status))
            return status;
        const std::streamoff extraStart = stream.tellp();
        if (!IsDirectoryOffset(extraStart))
            return E_FAIL;
        header.directoryOffset = static_cast<std::uint32_t>(extraStart);
        turn.beyond = {SWordCoef{}.w[0]};
        if (const Status status = WritePart(stream, *m_extras->words, turn, threads);
            Failed(status))
            return status;
        stream.seekp(start);
        WriteChunkHeader(stream, header);
        stream.seekp(0, std::ios::end);
        return stream ? S_OK : E_FAIL;
    }

    /// The directory and the chunks; the stream then stands at its end.
    static Status WritePart(std::ostream& stream, const CWordPlanes& planes, const SPlaneTurn& turn,
                            std::size_t threads) {
        if (Failed(WriteTurnedChunks(stream, planes, turn, threads)))
            return E_FAIL;
        stream.seekp(0, std::ios::end); // the directory is written last
        return stream ? S_OK : E_FAIL;
    }

    const SListedWordKind& m_kind;
    CWordPlanes m_planes;
    std::optional<SKeptExtras> m_extras;
};

SStoredLoad Loaded(const SListedWordKind& kind, Status status, CWordPlanes planes,
                   std::optional<SKeptExtras> extras) {
    return {status, std::make_unique<CStoredWordCoef>(kind, std::move(planes), std::move(extras))};
}

SStoredLoad WithoutPixels(const SListedWordKind& kind, Status status,
                          std::optional<SKeptExtras> extras = std::nullopt) {
    return Loaded(kind, status, CWordPlanes(*kind.element, 0, 0), std::move(extras));
}

bool HasMagicOf(const SWordKind& kind, CWordFileSource& file) {
    ChunkFormatId magic{};
    return !Failed(ReadFileMagic(file, magic)) && kind.HasFormat(magic);
}

/// Reads the extra words of a file whose matrix part was read with `status`, into `words` unless that
/// is null. A turn may lose them, but what is damaged there is damage of the file.
Status ReadExtraWords(CWordFileSource& file, const SChunkHeader& header, Status status,
                      std::size_t threads, std::optional<CWordPlanes>* words) {
    const WordElementKind& kind = kWordElementKind<SWordCoef>;
    if (words != nullptr)
        words->emplace(kind, 0, 0);
    if (Failed(status))
        return E_FAIL;
    if (words == nullptr)
        return PassOverChunks(*file.Open(), header, kind);
    SPlanesRead read = ReadWordPlanes(*file.Open(), header, kind, threads);
    *words = std::move(read.planes);
    return read.status;
}

} // namespace

SStoredLoad LoadStoredWordCoef(EWordKind kind, std::istream& stream, std::size_t threads,
                               const SExtrasOfTurn& extras) {
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
    if (!IsHeaderOf(row, header))
        return WithoutPixels(*listed, E_COEF_BADFORMAT);
    std::optional<SKeptExtras> kept;
    if (extras.areKept)
        kept = SKeptExtras{header, extras.wall, std::nullopt};
    auto [status, planes] = ReadWordPlanes(stream, header, *listed->element, threads);
    if (header.formatId == row.extraWordFormatId)
        status = ReadExtraWords(file, header, status, threads, kept ? &kept->words : nullptr);
    return Failed(status) ? WithoutPixels(*listed, status, std::move(kept))
                          : Loaded(*listed, status, std::move(planes), std::move(kept));
}

} // namespace trevolt
