#include "app/inspection/FileFacts.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include <fmt/format.h>

#include "app/rotation/CoefFile.h"
#include "app/rotation/StoredKinds.h"
#include "calibuf/ChunkLayout.h"
#include "coef/WordKind.h"
#include "common/LittleEndian.h"
#include "common/OrderedJobs.h"
#include "platform/FileSystem.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/TransferProblems.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

/// What every file begins with that is not text.
struct SFileMark {
    std::array<std::uint8_t, 16> format{};
    std::uint32_t version = 0;
};
constexpr std::size_t kMarkBytes = sizeof SFileMark::format + sizeof SFileMark::version;

/// One thread sums a piece up while another looks at the piece before it and a third decodes: more would
/// only wait.
constexpr std::size_t kThreadsOfPieces = 4;

std::optional<SFileMark> ReadMark(std::istream& stream) {
    SFileMark mark;
    std::array<std::byte, sizeof mark.version> version{};
    stream.read(reinterpret_cast<char*>(mark.format.data()), mark.format.size());
    if (!stream.read(reinterpret_cast<char*>(version.data()), version.size()))
        return std::nullopt;
    mark.version = LoadLittle<std::uint32_t>(version.data());
    return mark;
}

const SFileKind* FindKindByFormat(const std::array<std::uint8_t, 16>& format) {
    for (const SFileKind& kind : FileKinds()) {
        const SStoredKind& stored = StoredKindOf(kind);
        if (stored.opensWith != nullptr && stored.opensWith(format))
            return &kind;
    }
    return nullptr;
}

bool HasExtraWords(const SChunkHeader& header) {
    return std::any_of(kWordKinds.begin(), kWordKinds.end(), [&](const SListedWordKind& kind) {
        return kind.row->extraWordFormatId == header.formatId;
    });
}

std::optional<SOwnerFacts> OwnerOf(const SChunkHeader& header) {
    if (header.ownerFlag == 0 && header.ownerData == SChunkHeader{}.ownerData)
        return std::nullopt;
    return SOwnerFacts{header.ownerData, header.ownerFlag};
}

class CFactSearch {
  public:
    CFactSearch(const std::wstring& path, std::size_t threads) : m_path(path), m_threads(threads) {}

    SFileFacts Run() {
        m_facts.kind = FindLoadKind(m_path.substr(FolderPart(m_path).size()));
        if (m_facts.kind == nullptr) {
            Fail("is no coefficient file by its name");
            return std::move(m_facts);
        }
        m_source.Open(m_path);
        if (!m_source.IsOpen() || LookAtHeader())
            if (FindSize())
                LookAtPixels();
        if (m_source.HasOtherSize())
            Fail("its size changed while it was read");
        return std::move(m_facts);
    }

  private:
    /// False, with the problem told, where the system did not give what the file begins with.
    bool LookAtHeader() {
        const CTransferReport report;
        m_source.TakeOpen([&](std::istream& stream) {
            LookAtMark(stream);
            return m_facts.content;
        });
        if (report.HasReadFailed())
            m_facts.problems = DescribeReadProblems(S_OK, report);
        return !report.HasReadFailed();
    }

    void LookAtMark(std::istream& stream) {
        m_facts.storedBytes = BytesToEnd(stream);
        const auto mark = ReadMark(stream);
        NoteIfEndedBefore(kMarkBytes, mark.has_value());
        if (!mark)
            return;
        m_facts.content = FindKindByFormat(mark->format);
        if (m_facts.content == nullptr)
            return;
        m_facts.version = mark->version;
        if (m_facts.content != m_facts.kind)
            m_facts.notes.push_back(
                fmt::format("begins as a {} file", WideToShownUtf8(m_facts.content->extension)));
        if (FindWordKind(*m_facts.content))
            LookAtChunkHeader(stream.seekg(0));
    }

    /// A file that ends before what its size leaves room for was not read to its end.
    void NoteIfEndedBefore(std::uint64_t bytes, bool isRead) const {
        if (!isRead && m_facts.storedBytes.value_or(0) >= bytes)
            CTransferReport::NoteReadFailed();
    }

    void LookAtChunkHeader(std::istream& stream) {
        const auto header = ReadChunkHeader(stream);
        NoteIfEndedBefore(kChunkHeaderBytes, header.has_value());
        if (header)
            m_facts.words = SWordFileFacts{.originX = header->originX,
                                           .originY = header->originY,
                                           .chunks = header->recordCount,
                                           .hasExtraWords = HasExtraWords(*header),
                                           .owner = OwnerOf(*header),
                                           .storeDigest = std::nullopt};
    }

    bool FindSize() {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        const CTransferReport report;
        const Status status = m_source.Take([&](std::istream& stream) {
            return m_facts.kind->readStreamSize(stream, width, height);
        });
        if (Failed(status) || report.HasReadFailed()) {
            m_facts.problems = DescribeReadProblems(status, report);
            return false;
        }
        m_facts.size = SizeToldBy(*m_facts.kind, width, height);
        if (std::string problem = DescribeMapSize(*m_facts.kind, m_facts.size); !problem.empty())
            Fail(std::move(problem));
        else if (IsHeld() && !CMemoryBudget::Process().HasRoomFor(PixelBytes()))
            FailForMemory();
        return m_facts.problems.empty();
    }

    void LookAtPixels() {
        if (!IsHeld())
            LookAtPieces();
        else if (!LookAtStored())
            LookAtMap();
    }

    /// Looks at a file that is read piece by piece, whatever its size.
    void LookAtPieces() {
        m_facts.rawBytes = PixelBytes();
        const auto statistics = MakeStatisticsSink(FormOfKind(*m_facts.kind).Values());
        const CTransferReport report;
        const Status status = m_source.TakeOpen([&](std::istream& stream) {
            return Stored().readPixels(
                stream, std::min(kThreadsOfPieces, ThreadsToDecode(m_threads, PixelBytes())),
                *statistics);
        });
        Tell(status, report);
        m_facts.covered = Failed(status) ? 0 : Pixels();
        if (!Failed(status) && Pixels() != 0)
            m_facts.statistics = statistics->Statistics();
    }

    /// Looks at the file in its own elements; false where only a map can tell what it holds.
    bool LookAtStored() {
        if (Stored().load == nullptr)
            return false;
        m_facts.rawBytes = PixelBytes();
        const CTransferReport report;
        const SStoredLoad load = m_source.TakeOpen([&](std::istream& stream) {
            return Stored().load(stream, ThreadsToDecode(m_threads, *m_facts.rawBytes), {});
        });
        if (load.coef == nullptr && !report.WasMemoryRefused())
            return false;
        Tell(load.status, report);
        if (load.coef == nullptr)
            return true;
        m_facts.covered = Failed(load.status) ? 0 : Pixels() - MissingPixels(report);
        if (!Failed(load.status))
            LookAtValues(*load.coef);
        return true;
    }

    /// Two threads at least have something to do: the digest takes one for itself.
    void LookAtValues(const CStoredCoef& coef) {
        std::array<bool, 2> areMemoryRefused{}; // a thread has nobody to catch what it throws
        ShareOut(areMemoryRefused.size(), m_threads, [&](std::size_t part) noexcept {
            try {
                part == 0 ? TakeDigest(coef) : TakeStatistics(coef);
            } catch (const std::bad_alloc&) {
                areMemoryRefused[part] = true;
            }
        });
        if (areMemoryRefused[0] || areMemoryRefused[1])
            throw std::bad_alloc();
        if (m_facts.words && !m_facts.words->storeDigest)
            m_facts.notes.emplace_back("its digest is not told: the system computes none, or has "
                                       "no memory for it");
    }

    void TakeDigest(const CStoredCoef& coef) {
        if (m_facts.words)
            m_facts.words->storeDigest = coef.StoreDigest();
    }

    void TakeStatistics(const CStoredCoef& coef) {
        if (Pixels() != 0)
            m_facts.statistics = StatisticsOf(coef, FormOfKind(*m_facts.kind).Values(), m_threads);
    }

    void LookAtMap() {
        CChromaCorrectCoef map;
        map.Resize(static_cast<std::int32_t>(m_facts.size.width),
                   static_cast<std::int32_t>(m_facts.size.height));
        if (!map.IsEmpty() && !map.HasStorage()) {
            FailForMemory();
            return;
        }
        const CTransferReport report;
        const Status status = m_source.Take(
            [&](std::istream& stream) { return m_facts.kind->loadStream(map, stream); });
        Tell(status, report);
        const bool isRead = !Failed(status) && report.FailedRead() == S_OK;
        if (Stored().load != nullptr)
            m_facts.covered = isRead ? Pixels() - MissingPixels(report) : 0;
        if (isRead && Pixels() != 0)
            m_facts.statistics = StatisticsOf(map, FormOfKind(*m_facts.kind).Values(), m_threads);
    }

    void Tell(Status status, const CTransferReport& report) {
        for (std::string& problem : DescribeReadProblems(status, report))
            Fail(std::move(problem));
        if (m_facts.problems.empty() && Pixels() == 0)
            Fail(kNoPixels);
        for (std::string& note : DescribeReadNotes(report))
            m_facts.notes.push_back(std::move(note));
        for (std::string& note : DescribeExtraWordProblems(report))
            m_facts.notes.push_back(std::move(note));
    }

    std::uint64_t MissingPixels(const CTransferReport& report) const {
        return std::min(report.MissingPixels(), Pixels());
    }

    std::uint64_t Pixels() const {
        return static_cast<std::uint64_t>(m_facts.size.width) *
               static_cast<std::uint64_t>(m_facts.size.height);
    }

    std::uint64_t PixelBytes() const { return Pixels() * Stored().elementBytes; }

    /// Whether the file's pixels are held to be looked at.
    bool IsHeld() const { return Stored().readPixels == nullptr; }

    const SStoredKind& Stored() const { return StoredKindOf(*m_facts.kind); }

    void Fail(std::string problem) { m_facts.problems.push_back(std::move(problem)); }
    void FailForMemory() {
        for (std::string& problem : DescribeLackOfMemory(m_source, *m_facts.kind, m_facts.size))
            Fail(std::move(problem));
    }

    const std::wstring& m_path;
    const std::size_t m_threads;
    CSourceFile m_source;
    SFileFacts m_facts;
};

} // namespace

SFileFacts FindFileFacts(const std::wstring& path, std::size_t threads) {
    return CFactSearch(path, threads).Run();
}

} // namespace trevolt
