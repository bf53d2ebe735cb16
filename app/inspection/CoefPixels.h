// The pixels of a coefficient file for those that only look at them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "common/StoredCoef.h"
#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/FileKinds.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt {

/// What a map holds, or a file in the elements that it stores, which must outlive this. Any thread may
/// look.
class CCoefPixels {
  public:
    // Whoever looks at pixels is handed either of the two as it is.
    CCoefPixels(const CChromaCorrectCoef& map) : m_map(&map) {}   // NOLINT(*-explicit-*)
    CCoefPixels(const CStoredCoef& stored) : m_stored(&stored) {} // NOLINT(*-explicit-*)

    PixelSize Size() const;

    /// `count` pixels from (x, y) on to the right, which lie inside: where they lie in the map, or in
    /// `scratch`, which has room for them. Of a map without storage they are the default.
    const SMatrixCoef* Run(std::uint32_t x, std::uint32_t y, std::uint32_t count,
                           SMatrixCoef* scratch) const;

  private:
    const CChromaCorrectCoef* m_map = nullptr;
    const CStoredCoef* m_stored = nullptr;
};

struct SCoefPixelLoad {
    const SFileKind* kind = nullptr;   ///< null when the name tells none
    PixelSize size;                    ///< that the file tells, 0 × 0 when it tells none
    std::vector<std::string> problems; ///< what is damaged or went wrong; none: it is read whole
    std::vector<std::string> notes;    ///< what is unusual and no problem
    /// One of both, or none where there is a problem.
    std::unique_ptr<CStoredCoef> stored;
    std::unique_ptr<CChromaCorrectCoef> map;

    bool HasPixels() const { return stored != nullptr || (map != nullptr && !map->IsEmpty()); }
    /// Of a file that has some.
    CCoefPixels Pixels() const { return stored != nullptr ? CCoefPixels(*stored) : *map; }
};

/// How many of `threads` threads decode `bytes` bytes of pixels: so many that what they have on their way
/// stays below those.
std::size_t ThreadsToDecode(std::size_t threads, std::uint64_t bytes);

/// Reads a file of the kind that its name tells: in its own elements where they tell what a map would
/// hold, since they take less memory, else into a map. It answers the same either way. Up to `threads`
/// threads decode it. Throws std::bad_alloc; memory refused for the pixels is a problem.
SCoefPixelLoad LoadCoefPixels(const std::wstring& path, std::size_t threads);

} // namespace trevolt
