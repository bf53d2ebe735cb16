// The options of the command rotate, each checked by itself where it is read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "trevolt/RotationRun.h"

namespace CLI {
class App;
} // namespace CLI

namespace trevolt {

struct SRotateOptions {
    std::vector<std::string> sources;
    std::wstring target;
    bool recursive = false;
    bool wholeScreen = false;
    std::optional<std::uint32_t> angle; ///< code
    std::optional<std::wstring> angleTable;
    std::optional<PixelSize> size;
    bool lenient = false;
    bool keepExtras = false;
    std::optional<PixelSize> wall;
    std::optional<std::wstring> suffix;
    bool overwrite = false;
    bool skipExisting = false;
    bool keepTimes = false;
    bool verify = false;
    bool noSync = false;
    std::wstring manifest;
    std::wstring report;
    std::size_t jobs = 1;
    SShard shard;
    SRotationLimits limits;
    std::optional<std::uint64_t> maxMemory;
    bool dryRun = false;
    bool list = false;
    bool nullEnds = false;
    bool json = false;
    bool quiet = false;
    bool verbose = false;
};

/// Adds them to the command, which then leaves them in `options`; these must outlive it.
void AddRotateOptions(CLI::App& command, SRotateOptions& options);

/// The run that they ask for. Throws CUsageError when they do not go together, or when a
/// table of angles cannot be read; what is wrong in it is told before.
SRotationRequest MakeRotationRequest(const SRotateOptions& options);

} // namespace trevolt
