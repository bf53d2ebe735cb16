// What forbids a run, told so that a thousand causes of one sort stay readable.
#pragma once

#include <cstddef>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace trevolt {

/// So many of one sort are told, and how many more there are.
inline constexpr std::size_t kToldObstacles = 10;

/// Obstacles of one sort, in the order in which they were found.
class CObstacles {
  public:
    explicit CObstacles(std::vector<std::string>& told) : m_told(told) {}
    ~CObstacles() {
        try {
            if (m_count > kToldObstacles)
                m_told.push_back(fmt::format("and {} more like these", m_count - kToldObstacles));
        } catch (const std::bad_alloc&) { // the first ones stop the run by themselves
        }
    }
    CObstacles(const CObstacles&) = delete;
    CObstacles& operator=(const CObstacles&) = delete;

    void Add(std::string obstacle) {
        if (++m_count <= kToldObstacles)
            m_told.push_back(std::move(obstacle));
    }

  private:
    std::vector<std::string>& m_told;
    std::size_t m_count = 0;
};

} // namespace trevolt
