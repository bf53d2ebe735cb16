// The way of one file from the source folder to its output, which has yet to get its name.
#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "app/rotation/OutputFolder.h"
#include "app/rotation/WorkShare.h"
#include "trevolt/RotationRun.h"

namespace trevolt {

/// A file that went as far as a thread of its own can take it.
struct STurnedFile {
    SFileOutcome outcome;
    std::unique_ptr<CTemporaryOutput> output; ///< null when there is nothing to keep
    bool isMemoryRefused = false;             ///< then the outcome tells nothing
    /// The file whose time the output gets just before its name, empty for none. Not sooner: another run
    /// would take an old file under work for an abandoned one.
    std::wstring timeOf;
};

/// Turns a file as planned into a file under work of `target`, with memory and threads of `share`,
/// which takes it for finished then. Gives it up once `interrupted`. Throws nothing: on a thread of
/// its own there is nobody to catch it.
STurnedFile TurnFile(const SRotationRequest& request, const std::atomic<bool>& interrupted,
                     CWorkShare& share, COutputFolder& target,
                     const SPlannedTurn& planned) noexcept;

} // namespace trevolt
