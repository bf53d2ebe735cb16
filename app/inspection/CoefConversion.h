// One coefficient file or array made into another form, by way of a map.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "app/rotation/ConversionLosses.h"
#include "app/rotation/ElementForms.h"
#include "app/rotation/OutputFile.h"
#include "trevolt/FileKinds.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt {

struct SConversionTarget {
    /// Null for a .npy file.
    const SFileKind* kind = nullptr;
    /// A .npy file of the values that the source stores, and not of a map's.
    bool ownElements = false;
};

struct SConversion {
    PixelSize size;    ///< 0 × 0 when it is not known
    SElementForm form; ///< of what was to be written
    SConversionLosses lost;
    std::vector<std::string> problems; ///< why nothing was written, in plain words; none: it was
    std::vector<std::string> losses; ///< what the output lacks of its source, or holds not exactly
    std::vector<std::string> notes;  ///< what is unusual about the source, or was added
};

/// Writes one output, which the given function makes at a path; what went wrong, in plain words.
using OutputWay = std::function<std::string(const OutputWriter&)>;

/// Reads the file, .npy or of a kind by its name, and has it written as the target by `output`. A file
/// that does not load whole is not written. What the source does not hold is the default element's:
/// of a .9fcoef file, too, a map gets no values beside the matrix. Words and bytes of an array go to
/// the kind whose own they are, and to arrays. Throws std::bad_alloc.
SConversion ConvertFile(const std::wstring& source, const SConversionTarget& target,
                        const OutputWay& output);

} // namespace trevolt
