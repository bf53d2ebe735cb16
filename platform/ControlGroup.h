// The memory limit that Linux sets to the program's control group.
#pragma once

#include <cstdint>
#include <istream>
#include <string>

namespace trevolt {

/// The smallest memory limit in bytes of the groups that `membership` (the lines of
/// /proc/self/cgroup) names and of all groups above them; the largest number when none is limited.
/// `root` is the folder that the group file systems are mounted in. Both versions are understood:
/// version 2 keeps the limit below `root` itself, version 1 below its folder "memory".
std::uint64_t ControlGroupLimit(std::istream& membership, const std::string& root);

} // namespace trevolt
