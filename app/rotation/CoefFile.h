// A coefficient file of any kind in a map, with what is to be told of it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/FileKinds.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt {

struct SCoefLoad {
    const SFileKind* kind = nullptr; ///< null when the name tells none
    PixelSize size;                  ///< that the file tells, 0 × 0 when it tells none
    /// Of that size, with what could be read on defaults; null when nothing could.
    std::unique_ptr<CChromaCorrectCoef> map;
    std::vector<std::string> problems; ///< what is damaged or went wrong; none: the map is whole
    std::vector<std::string> notes;    ///< what is unusual and no problem
    std::vector<std::string> losses;   ///< what the file holds and a map cannot
};

/// Reads a file of the kind that its name tells into a map of the file's own size. Throws
/// std::bad_alloc; memory refused for the map is a problem.
SCoefLoad LoadCoefFile(const std::wstring& path);

/// The same of a kind that the name does not tell, as that of a file under work.
SCoefLoad LoadCoefFile(const std::wstring& path, const SFileKind& kind);

} // namespace trevolt
