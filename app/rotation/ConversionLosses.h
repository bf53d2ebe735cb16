// What a file of some form does not get of a map, counted before it is written.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/rotation/ElementForms.h"
#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/FileKinds.h"
#include "trevolt/PixelRect.h"

namespace trevolt {

/// Each value is counted once at most.
struct SConversionLosses {
    /// With an entry off the diagonal that is not 0, where the form holds none.
    std::uint64_t offDiagonalPixels = 0;
    /// With values beside the matrix that the form does not hold and that are not 0, 1, 0.
    std::uint64_t besideMatrixPixels = 0;
    /// Below 0 or above 1 once rounded: the low bits are stored.
    std::uint64_t wrappedValues = 0;
    /// Without an integer, as NaN, the infinities and what is past 64 bits: 0 is stored.
    std::uint64_t zeroedValues = 0;
    /// Changed by the cleaning when the text is read.
    std::uint64_t cleanedValues = 0;
    /// Stored, but not exactly.
    std::uint64_t roundedValues = 0;
    /// Without a line in a text, since they are the default: nothing is lost.
    std::uint64_t defaultPixels = 0;

    friend bool operator==(const SConversionLosses&, const SConversionLosses&) = default;
};

/// Whether `form` holds whatever the files of `source` can, so that nothing needs to be counted of a map
/// which was loaded from them. Of a text that is never known: its reader may change every value.
bool HoldsAllOf(const SElementForm& source, const SElementForm& form);

/// That a file of the kind holds values beside the matrix of which the files of `source` have none; else
/// nothing.
std::string DescribeDefaultsBeside(const SElementForm& source, const SFileKind& kind);

/// What `form` loses of the pixels of `rect`, which lies in the map.
SConversionLosses CountLosses(const CChromaCorrectCoef& map, const SPixelRect& rect,
                              const SElementForm& form);

/// The same of all of the map's pixels.
SConversionLosses CountLosses(const CChromaCorrectCoef& map, const SElementForm& form);

/// The same in plain words, one entry a loss, for a file that is called `target`.
std::vector<std::string> DescribeLosses(const SConversionLosses& losses, const SElementForm& form,
                                        const std::string& target);

/// What a file of the kind loses of the pixels of `rect`, in the same words.
std::vector<std::string> DescribeLosses(const CChromaCorrectCoef& map, const SPixelRect& rect,
                                        const SFileKind& kind);

} // namespace trevolt
