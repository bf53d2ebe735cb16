#include "app/rotation/CoefFile.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

#include <fmt/format.h>

#include "app/rotation/CoefFileSearch.h"
#include "app/rotation/StoredKinds.h"
#include "common/CheckedArithmetic.h"
#include "platform/FileSystem.h"
#include "trevolt/TransferProblems.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

class CCoefFileLoad {
  public:
    CCoefFileLoad(const std::wstring& path, const SFileKind* kind) : m_path(path) {
        m_load.kind = kind;
    }

    SCoefLoad Run() {
        if (m_load.kind == nullptr) {
            m_load.problems.emplace_back("is no coefficient file by its name");
            return std::move(m_load);
        }
        m_source.Open(m_path);
        if (FindSize() && SizeMap() && LoadMap()) {
            SetDefaultTrails();
            FindLosses();
        }
        return std::move(m_load);
    }

  private:
    bool FindSize() {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        const CTransferReport report;
        const Status status = m_source.Take([&](std::istream& stream) {
            return m_load.kind->readStreamSize(stream, width, height);
        });
        if (Failed(status) || report.HasReadFailed()) {
            m_load.problems = DescribeReadProblems(status, report);
            return false;
        }
        m_load.size = SizeToldBy(*m_load.kind, width, height);
        if (std::string problem = DescribeMapSize(*m_load.kind, m_load.size); !problem.empty())
            m_load.problems.push_back(std::move(problem));
        return m_load.problems.empty();
    }

    bool SizeMap() {
        m_load.map = std::make_unique<CChromaCorrectCoef>();
        m_load.map->Resize(static_cast<std::int32_t>(m_load.size.width),
                           static_cast<std::int32_t>(m_load.size.height));
        if (m_load.map->IsEmpty() || m_load.map->HasStorage())
            return true;
        m_load.map.reset();
        m_load.problems = DescribeLackOfMemory(m_source, *m_load.kind, m_load.size);
        return false;
    }

    /// False where the memory for it is refused: that says nothing of what could be read.
    bool LoadMap() {
        const CTransferReport report;
        const Status status = m_source.Take(
            [&](std::istream& stream) { return m_load.kind->loadStream(*m_load.map, stream); });
        const auto pixels = static_cast<std::uint64_t>(m_load.size.width * m_load.size.height);
        m_load.isRead =
            !Failed(status) && report.FailedRead() == S_OK && report.MissingPixels() < pixels;
        m_load.problems = DescribeReadProblems(status, report);
        m_load.notes = DescribeReadNotes(report);
        NameOtherSize();
        if (report.WasMemoryRefused()) {
            m_load.map.reset();
            m_load.isRead = false;
            return false;
        }
        if (m_load.problems.empty() && m_load.map->IsEmpty())
            m_load.problems.emplace_back(kNoPixels);
        return true;
    }

    /// The reader of `.9fcoef` puts the first three values of the next pixel beside the matrix.
    void SetDefaultTrails() {
        if (m_load.kind->extension != L".9fcoef")
            return;
        constexpr std::size_t kMatrixCount = 9;
        const SMatrixCoef defaults;
        for (std::int32_t y = 0; y < m_load.map->Height(); ++y)
            for (std::int32_t x = 0; x < m_load.map->Width(); ++x)
                std::copy(defaults.m.begin() + kMatrixCount, defaults.m.end(),
                          m_load.map->FindElement(x, y)->m.begin() + kMatrixCount);
    }

    void FindLosses() {
        if (m_load.kind->describeStreamLosses == nullptr)
            return;
        const CTransferReport report;
        m_load.losses = m_source.TakeOpen(m_load.kind->describeStreamLosses);
        if (!m_load.problems.empty()) // of which the losses tell no more
            return;
        if (report.HasReadFailed())
            m_load.problems = DescribeReadProblems(S_OK, report);
        NameOtherSize();
    }

    void NameOtherSize() {
        if (m_source.HasOtherSize())
            m_load.problems.emplace_back("its size changed while it was read");
    }

    const std::wstring& m_path;
    CSourceFile m_source;
    SCoefLoad m_load;
};

} // namespace

const SFileKind* FindOwnKind(std::wstring_view name) {
    const SFileKind* const kind = FindLoadKind(name);
    return kind == FindExportKind(name) ? kind : nullptr;
}

std::string DescribeOutputName(const std::wstring& path) {
    const std::wstring name = path.substr(FolderPart(path).size());
    const char* const advice = "give one of the nine extensions";
    const SFileKind* const kind = FindExportKind(name);
    if (kind == nullptr)
        return fmt::format("the output {} is no coefficient file by its name: {}",
                           WideToShownUtf8(path), advice);
    if (kind != FindLoadKind(name))
        return fmt::format("the output {} would be read as another kind than it is written: {}",
                           WideToShownUtf8(path), advice);
    return {};
}

std::string DescribeInputObstacle(const std::wstring& path) {
    const std::string shown = WideToShownUtf8(path);
    if (FindLoadKind(path.substr(FolderPart(path).size())) == nullptr)
        return fmt::format("{} {}", shown, kForeignSource);
    const auto kind = KindOfEntry(path);
    const int error = errno;
    if (!kind && error != 0 && error != ENOENT && error != ENOTDIR && error != EINVAL)
        return DescribeHiddenSource(path, error);
    if (!kind)
        return fmt::format("the source {} does not exist: check its path", shown);
    if (*kind == EntryKind::Folder)
        return fmt::format("{} is a folder: give a file", shown);
    return *kind == EntryKind::Other
               ? fmt::format("{} is neither a file nor a folder: give a file", shown)
               : std::string();
}

std::vector<std::string> DescribeLackOfMemory(CSourceFile& source, const SFileKind& kind,
                                              const PixelSize& size) {
    if (const auto load = StoredKindOf(kind).load; load != nullptr && source.IsOpen()) {
        const CTransferReport report;
        const SStoredLoad stored =
            source.TakeOpen([&](std::istream& stream) { return load(stream, 1, {}); });
        if (auto problems = DescribeReadProblems(stored.status, report);
            !report.WasMemoryRefused() && !problems.empty())
            return problems;
    }
    return {fmt::format("not enough memory for {} x {} pixels", size.width, size.height)};
}

PixelSize SizeToldBy(const SFileKind& kind, std::uint32_t width, std::uint32_t height) {
    const bool isText = StoredKindOf(kind).elementBytes == 0;
    return isText ? PixelSize{static_cast<std::int32_t>(width), static_cast<std::int32_t>(height)}
                  : PixelSize{width, height};
}

std::string DescribeMapSize(const SFileKind& kind, const PixelSize& size) {
    if (std::min(size.width, size.height) < 0)
        return fmt::format("its size {} x {} is below 0 in one direction", size.width, size.height);
    if (std::max(size.width, size.height) > kLargestMapSide)
        return fmt::format("its size {} x {} is above {} in one direction", size.width, size.height,
                           kLargestMapSide);
    // The bytes of a text or word file tell more: damage, or that they are too many for the memory.
    const bool isBinary = StoredKindOf(kind).readPixels != nullptr;
    const std::string tooMany = isBinary ? DescribePixelCount(size) : std::string();
    return tooMany.empty() ? tooMany : "its size " + tooMany;
}

std::string DescribePixelCount(const PixelSize& size) {
    if (CheckedProduct<std::int32_t>(size.width, size.height))
        return {};
    return fmt::format("{} x {} has more than {} pixels", size.width, size.height,
                       std::numeric_limits<std::int32_t>::max());
}

SCoefLoad LoadCoefFile(const std::wstring& path) {
    return CCoefFileLoad(path, FindLoadKind(path.substr(FolderPart(path).size()))).Run();
}

SCoefLoad LoadCoefFile(const std::wstring& path, const SFileKind& kind) {
    return CCoefFileLoad(path, &kind).Run();
}

} // namespace trevolt
