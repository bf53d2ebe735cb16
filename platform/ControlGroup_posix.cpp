#include "platform/ControlGroup.h"

#include <algorithm>
#include <fstream>
#include <limits>
#include <string_view>

namespace trevolt {
namespace {

constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();

/// The number in a file; unlimited when there is none ("max", no file).
std::uint64_t NumberIn(const std::string& path) {
    std::ifstream file(path);
    std::uint64_t bytes = 0;
    return file >> bytes ? bytes : kUnlimited;
}

/// The smallest limit of a group and of those above it. In a container the group's path may be that
/// outside of it: the groups that are not to be seen are passed over, the root is the container's.
std::uint64_t LimitUpwards(const std::string& mount, std::string group, const char* file) {
    std::uint64_t limit = kUnlimited;
    while (true) {
        const bool isRoot = group.find_first_not_of('/') == std::string::npos;
        limit = std::min(limit, NumberIn(mount + group + '/' + file));
        if (isRoot)
            return limit;
        group.erase(group.rfind('/'));
    }
}

bool HoldsMemory(std::string_view controllers) {
    constexpr std::string_view kMemory = "memory";
    while (!controllers.empty()) {
        const std::size_t comma = std::min(controllers.find(','), controllers.size());
        if (controllers.substr(0, comma) == kMemory)
            return true;
        controllers.remove_prefix(std::min(comma + 1, controllers.size()));
    }
    return false;
}

} // namespace

std::uint64_t ControlGroupLimit(std::istream& membership, const std::string& root) {
    std::uint64_t limit = kUnlimited;
    // A line is "number:controllers:/group"; version 2 has no controllers in it.
    for (std::string line; std::getline(membership, line);) {
        const std::size_t first = line.find(':');
        const std::size_t second = first == std::string::npos ? first : line.find(':', first + 1);
        if (second == std::string::npos || line.compare(second + 1, 1, "/") != 0)
            continue;
        const std::string controllers = line.substr(first + 1, second - first - 1);
        const std::string group = line.substr(second + 1);
        if (controllers.empty())
            limit = std::min(limit, LimitUpwards(root, group, "memory.max"));
        else if (HoldsMemory(controllers))
            limit = std::min(limit, LimitUpwards(root + "/memory", group, "memory.limit_in_bytes"));
    }
    return limit;
}

} // namespace trevolt
