// Coefficient files of the nine kinds as the command turns them: sized, loaded, turned and saved, by
// a map and in their stored elements, and loaded again. An input is a file as it stands, under the
// name of every kind.
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "app/rotation/StoredKinds.h"
#include "fuzz/FuzzInput.h"
#include "trevolt/BinaryCoefFile.h"
#include "trevolt/CoefRotation.h"
#include "trevolt/FileKinds.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/TextCoefFile.h"
#include "trevolt/TransferProblems.h"
#include "trevolt/TransferReport.h"
#include "trevolt/WordCoefFile.h"

namespace trevolt::fuzz {
namespace {

/// So much that memory is never what decides.
constexpr std::uint64_t kTurnBudget = std::uint64_t{256} << 20;
constexpr std::uint32_t kMostTurnedPixels = 2048;

struct SWriter {
    const wchar_t* name;
    Status (*save)(const CChromaCorrectCoef& map, std::ostream& stream);
    bool keepsValues; ///< what was loaded is saved as the same bytes
};

template <EWordKind Kind>
Status SaveWords(const CChromaCorrectCoef& map, std::ostream& stream) {
    return SaveWordCoefFile(Kind, map, stream);
}

template <Status (*Write)(const CChromaCorrectCoef&, std::ostream&, const CMassiveGrid*)>
Status SaveBinary(const CChromaCorrectCoef& map, std::ostream& stream) {
    return Write(map, stream, nullptr);
}

constexpr std::array kWriters{
    SWriter{L"a.9fcoef", SaveBinary<Write9fCoefFile>, true},
    SWriter{L"a.3fcoef", SaveBinary<Write3fCoefFile>, true},
    SWriter{L"a.9bcoef", SaveBinary<Write9bCoefFile>, true},
    SWriter{L"a.3bcoef", SaveBinary<Write3bCoefFile>, true},
    SWriter{L"a.9wcoef", SaveWords<EWordKind::Chroma>, true},
    SWriter{L"a.3wcoef", SaveWords<EWordKind::Brightness>, true},
    SWriter{L"a.4wcoef", SaveWords<EWordKind::VirtualGreenBrightness>, true},
    SWriter{L"a.12wcoef", SaveWords<EWordKind::VirtualGreenChroma>, true},
    SWriter{L"a.cccoef",
            [](const CChromaCorrectCoef& map, std::ostream& stream) {
                return WriteTextCoefFile(map, stream, nullptr);
            },
            false}, // five decimals, cleaned
};

struct STurnedSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

/// The size that the input tells as a file of the kind, where a map can be made of it here.
std::optional<STurnedSize> SizeOf(std::span<const std::byte> input, const SFileKind& kind) {
    std::istringstream stream = StreamOf(input);
    STurnedSize size;
    if (Failed(kind.readStreamSize(stream, size.width, size.height)))
        return std::nullopt;
    const std::uint64_t pixels = std::uint64_t{size.width} * size.height;
    return pixels == 0 || pixels > kMostTurnedPixels ? std::nullopt : std::optional(size);
}

CChromaCorrectCoef MapOf(std::uint32_t width, std::uint32_t height) {
    CChromaCorrectCoef map;
    map.Resize(static_cast<std::int32_t>(width), static_cast<std::int32_t>(height));
    Check(map.HasStorage());
    return map;
}

/// What a way of turning makes of a file, and what it tells.
struct STurned {
    std::vector<std::string> problems;
    std::vector<std::string> notes;
    std::string file;

    bool operator==(const STurned&) const = default;
};

std::string Saved(const SWriter& writer, const CChromaCorrectCoef& map) {
    std::ostringstream written(std::ios::binary);
    Check(!Failed(writer.save(map, written)));
    return written.str();
}

STurned TurnByMap(std::span<const std::byte> input, const SFileKind& kind, const SWriter& writer,
                  const STurnedSize& size, std::uint32_t code) {
    CChromaCorrectCoef map = MapOf(size.width, size.height);
    std::istringstream stream = StreamOf(input);
    STurned made;
    {
        const CTransferReport report;
        const Status status = kind.loadStream(map, stream);
        made.problems = DescribeReadProblems(status, report);
        made.notes = DescribeReadNotes(report);
    }
    CChromaCorrectCoef turned;
    TurnMap(map, map.Width(), map.Height(), code, turned);
    made.file = Saved(writer, turned);
    return made;
}

/// Nothing where only a map can tell what the file holds.
std::optional<STurned> TurnStored(std::span<const std::byte> input, const SWriter& writer,
                                  const STurnedSize& size, std::uint32_t code,
                                  std::size_t threads) {
    const SStoredKind* const kind = FindStoredKind(writer.name);
    if (kind == nullptr)
        return std::nullopt;
    std::istringstream stream = StreamOf(input);
    const CTransferReport report;
    const SStoredLoad load = kind->load(stream, threads, {});
    if (load.coef == nullptr)
        return std::nullopt;
    std::ostringstream written(std::ios::binary);
    STurned made{DescribeReadProblems(load.status, report), DescribeReadNotes(report), {}};
    Check(!Failed(load.coef->WriteTurned(written, {size.width, size.height}, code, threads)));
    made.file = written.str();
    return made;
}

/// Checks that the turned file is whole, of the turned size, and saved again as it is.
void CheckReadAgain(const STurned& made, const SFileKind& kind, const SWriter& writer,
                    const STurnedSize& size, std::uint32_t code) {
    const auto bytes = std::as_bytes(std::span(made.file));
    const auto again = SizeOf(bytes, kind);
    const bool isUpright = code == 2;
    Check(again && again->width == (isUpright ? size.width : size.height) &&
          again->height == (isUpright ? size.height : size.width));
    CChromaCorrectCoef map = MapOf(again->width, again->height);
    std::istringstream stream = StreamOf(bytes);
    const CTransferReport report;
    const Status status = kind.loadStream(map, stream);
    Check(DescribeReadProblems(status, report).empty());
    if (writer.keepsValues)
        Check(Saved(writer, map) == made.file);
}

void CheckCoefFile(std::span<const std::byte> input) {
    const auto code = static_cast<std::uint32_t>(input.size() % 3 + 1);
    for (const SWriter& writer : kWriters) {
        const SFileKind& kind = *FindLoadKind(writer.name);
        const auto size = SizeOf(input, kind);
        if (!size)
            continue;
        const STurned made = TurnByMap(input, kind, writer, *size, code);
        CheckReadAgain(made, kind, writer, *size, code);
        for (const std::size_t threads : {1U, 2U})
            if (const auto stored = TurnStored(input, writer, *size, code, threads))
                Check(*stored == made);
    }
}

} // namespace
} // namespace trevolt::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace trevolt;
    CMemoryBudget::Process().SetLimit(fuzz::kTurnBudget);
    fuzz::CheckCoefFile(std::as_bytes(std::span(data, size)));
    fuzz::Check(CMemoryBudget::Process().Outstanding() == 0);
    return 0;
}
