// What word files hold beside the coefficients of their pixels, on the way through a map.
#pragma once

#include <cstdint>
#include <istream>
#include <optional>
#include <string>
#include <vector>

#include "coef/TurnedExtras.h"
#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/QuarterTurn.h"
#include "trevolt/StatusCodes.h"
#include "trevolt/WordElements.h"

namespace trevolt {

/// As the form without `extras`, which become those of the file; of extra words that are damaged what
/// could be read, and 0 for the others. A file that is none of the kind's own word files has none.
Status LoadWordCoefFile(EWordKind kind, CChromaCorrectCoef& map, std::istream& stream,
                        SWordExtras& extras);

/// Writes a map that was turned by a known code as a word file with the extras of the file that it was
/// loaded from, extra words and origin turned with it, or the origin as it was where there is no wall.
/// A kind without extra words leaves them out. E_COEF_INVALIDARG also for extras without a header and
/// an origin without a place; statuses of the form without `extras`, but E_FAIL or E_COEF_NOBUFFER
/// when a store gets no memory.
Status SaveWordCoefFile(EWordKind kind, const CChromaCorrectCoef& turned, const wchar_t* path,
                        const SWordExtras& extras, std::uint32_t code,
                        const std::optional<PixelSize>& wall);

/// Why the file that begins at the stream's position cannot keep its origin when its first `size`
/// pixels are turned by a known code, in plain words; empty when it can, or has none to keep.
std::string DescribeOriginProblem(EWordKind kind, std::istream& stream, const PixelSize& size,
                                  std::uint32_t code, const std::optional<PixelSize>& wall);

/// What a file of the kind loses though its extras are kept: none of its own, all of those of another.
std::vector<std::string> DescribeUnkeptExtras(EWordKind kind, std::istream& stream);

} // namespace trevolt
