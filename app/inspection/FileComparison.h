// Two coefficient files of any kinds, compared in maps.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/inspection/CoefDifference.h"
#include "app/inspection/ValuePicture.h"
#include "app/rotation/OutputFile.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt {

struct SComparedFiles {
    std::wstring a;
    std::wstring b;
    std::uint32_t turnOfA = 0; ///< a known code; 0 compares the file as it is
    double tolerance = 0;      ///< what is no further apart is the same
};

struct SFileComparison {
    std::optional<PixelSize> sizeOfA; ///< after its turn; nothing when it cannot be read
    std::optional<PixelSize> sizeOfB;
    std::optional<SCoefDifference> difference; ///< nothing when the sizes differ, or with problems
    std::vector<std::string> problems;         ///< why there is none, each behind its file's name
    std::vector<std::string> notes;            ///< what was not compared, or is unusual
    std::unique_ptr<CChromaCorrectCoef> a;     ///< that was compared; both null with problems
    std::unique_ptr<CChromaCorrectCoef> b;

    bool IsSame() const { return difference && difference->differing == 0; }
};

/// Reads both files whole; one that is damaged is a problem. Values that the kind of one file lacks
/// count as the map has them that loads it: 0 beside the diagonal. The virtual green's are compared
/// where both files have them. The work is shared among `threads` threads at most. Throws
/// std::bad_alloc.
SFileComparison CompareFiles(const SComparedFiles& files, std::size_t threads);

/// How many pixels differ, in plain words.
std::string DifferenceText(const SCoefDifference& difference, double tolerance);

/// A picture of how far the pixels of two maps are apart that were compared and are not empty, with
/// `range` at the scale's ends, else from 0 to the largest usual distance. Throws std::bad_alloc.
SValuePicture PaintDifference(const SFileComparison& comparison, const SComparedFiles& files,
                              const std::optional<SValueRange>& range, std::size_t threads);

/// Writes it. What went wrong, in plain words; nothing when the file stands. Throws std::bad_alloc.
std::string WriteDifferencePicture(const SFileComparison& comparison, const SComparedFiles& files,
                                   const SOutputFile& output,
                                   const std::optional<SValueRange>& range, std::size_t threads);

} // namespace trevolt
