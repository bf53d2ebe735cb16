// How the outputs of turned files get their names: brought to the disk together, then named in order.
#pragma once

#include <atomic>
#include <cstddef>
#include <string>
#include <vector>

#include "app/rotation/FileRotation.h"
#include "app/rotation/OutputFolder.h"

namespace trevolt {

/// How many outputs are brought to the disk together, and told then.
inline constexpr std::size_t kFilesOfSync = 32;

/// Gives the outputs of turned files their names. What it has gone through is true on the disk, too.
class COutputKeeper {
  public:
    COutputKeeper(COutputFolder& target, EExistingOutput existing,
                  const std::atomic<bool>& interrupted)
        : m_target(target), m_existing(existing), m_interrupted(interrupted) {}

    /// In the order of the files, which decides where two have one name.
    void Keep(std::vector<STurnedFile>& files);

  private:
    /// Adds the `errno` values of what did not reach the disk to `errors`, a value a file; what has one
    /// is left alone.
    void Sync(const std::vector<STurnedFile>& files, std::vector<int>& errors) const;
    /// Whether an output got the time of its source, which has yet to reach the disk. Its bytes are there:
    /// an old file under work waits only for its name.
    bool GiveTimes(std::vector<STurnedFile>& files, const std::vector<int>& errors) const;
    bool Keep(STurnedFile& file, int error);

    COutputFolder& m_target;
    EExistingOutput m_existing;
    const std::atomic<bool>& m_interrupted;
};

} // namespace trevolt
