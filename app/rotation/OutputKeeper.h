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
    /// The `errno` values of what did not reach the disk.
    std::vector<int> Sync(const std::vector<STurnedFile>& files) const;
    /// The files before this one have their names, whatever it lacks.
    bool KeepOrRefuse(STurnedFile& file, int error);
    bool Keep(STurnedFile& file, int error);

    COutputFolder& m_target;
    EExistingOutput m_existing;
    const std::atomic<bool>& m_interrupted;
};

} // namespace trevolt
