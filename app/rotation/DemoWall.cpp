#include "app/rotation/DemoWall.h"

#include <array>
#include <new>
#include <utility>

#include <fmt/xchar.h>

#include "app/rotation/OutputFile.h"
#include "platform/FileSystem.h"
#include "trevolt/FileKinds.h"
#include "trevolt/FixedPoint.h"
#include "trevolt/TransferProblems.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

constexpr std::int32_t kCabinetWidth = 160;
constexpr std::int32_t kCabinetHeight = 90;

/// Noise in 0..1 that depends on the pixel, the value and the cabinet only.
float Noise(std::uint32_t x, std::uint32_t y, std::uint32_t value, std::uint32_t cabinet) {
    std::uint32_t hash = x * 73856093U ^ y * 19349663U ^ value * 83492791U ^ cabinet * 2654435761U;
    hash = (hash ^ (hash >> 15)) * 2246822519U;
    return WordToFloat(static_cast<std::uint16_t>(hash >> 8));
}

SMatrixCoef DemoPixel(std::int32_t x, std::int32_t y, std::uint32_t cabinet) {
    SMatrixCoef pixel;
    for (std::uint32_t k = 0; k < 9; ++k) {
        const float noise =
            Noise(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y), k, cabinet);
        const float drift = 0.1F * static_cast<float>(x) / kCabinetWidth;
        pixel.m[k] = k % 4 == 0 ? 0.8F + drift + 0.05F * noise : 0.01F + 0.01F * noise;
    }
    return pixel;
}

void PaintCabinet(CChromaCorrectCoef& map, std::uint32_t cabinet) {
    map.Resize(kCabinetWidth, kCabinetHeight);
    for (std::int32_t y = 0; y < kCabinetHeight; ++y)
        for (std::int32_t x = 0; x < kCabinetWidth; ++x)
            map.SetElement(x, y, DemoPixel(x, y, cabinet));
}

std::wstring NameOf(std::uint32_t index) {
    return fmt::format(L"Cab_{:02}{}", index + 1, FileKinds()[index].extension);
}

/// What stands before what is told of a cabinet.
std::string OutputText(std::uint32_t index) {
    return fmt::format("its output {} ", WideToShownUtf8(NameOf(index)));
}

/// Why a cabinet cannot come to stand, as far as that is seen before anything is written.
std::string DescribeObstacle(const std::wstring& folder, std::uint32_t index, bool replaces) {
    const std::wstring path = WithSeparator(folder) + NameOf(index);
    const std::string name = WideToShownUtf8(NameOf(index));
    if (std::string obstacle = DescribeIrreplaceable(path, name); !obstacle.empty())
        return obstacle;
    return !replaces && IsNameTaken(path) ? DescribeExistingOutput(name) : std::string();
}

/// What went wrong, in plain words; nothing when the cabinet has its name.
std::string WriteCabinet(COutputFolder& target, std::uint32_t index, bool replaces) {
    const SFileKind& kind = FileKinds()[index];
    CChromaCorrectCoef map;
    PaintCabinet(map, index + 1);
    const auto write = [&](const std::wstring& path) {
        const CTransferReport report;
        const Status status = kind.save(map, path.c_str());
        return DescribeWriteProblem(status, report);
    };
    const std::string problem = WriteOutput(target, NameOf(index), replaces, write);
    return problem.empty() ? problem : OutputText(index) + problem;
}

/// Behind why there are no more: how many have their names.
std::string WithCount(const std::string& why, std::uint32_t written) {
    return fmt::format("{}: {} of {} cabinets {} written", why, written, FileKinds().size(),
                       written == 1 ? "is" : "are");
}

/// Writes the cabinets until one fails. Why not all have their names, or nothing.
std::string WriteCabinets(COutputFolder& target, bool replaces,
                          const std::atomic<bool>& interrupted) {
    constexpr const char* kNoMemory = "not enough memory";
    std::string refused = WithCount(kNoMemory, 0);
    try {
        for (std::uint32_t i = 0; i < FileKinds().size(); ++i) {
            if (interrupted)
                return WithCount("interrupted", i);
            // Made while there is memory: what has its name is told.
            std::string refusedNext = WithCount(kNoMemory, i + 1);
            if (std::string problem = WriteCabinet(target, i, replaces); !problem.empty())
                return i == 0 ? problem : WithCount(problem, i);
            refused = std::move(refusedNext);
        }
    } catch (const std::bad_alloc&) {
        return refused;
    }
    return {};
}

} // namespace

std::string WriteDemoWall(const std::wstring& folder, bool replaces, bool sync,
                          const std::atomic<bool>& interrupted) {
    COutputFolder target(folder, sync);
    for (std::uint32_t i = 0; i < FileKinds().size(); ++i)
        if (std::string obstacle = DescribeObstacle(folder, i, replaces); !obstacle.empty())
            return obstacle;
    target.RemoveAbandoned();
    if (const int error = target.Make(); error != 0)
        return "the folder " + DescribeRefusedFolder(error);
    std::string problem = WriteCabinets(target, replaces, interrupted);
    const int error = target.SyncNames();
    if (error == 0)
        return problem;
    const std::string lost = DescribeFolderSyncProblem(error);
    return problem.empty() ? lost : fmt::format("{}; {}", problem, lost);
}

} // namespace trevolt
