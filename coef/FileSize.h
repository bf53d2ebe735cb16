// A file's size as the coefficient objects tell it, without an object.
#pragma once

#include <cstdint>

#include "coef/BinaryFileKind.h"
#include "coef/WordFileSource.h"
#include "coef/WordKind.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// The size in the header of a word file of the kind. A kind that carries file-kind values takes
/// those with `fileKind` alone. One that sizes float files replaces the low 16 bits of the outputs
/// by the size of such a file, and looks at the first bytes before it reads the header.
/// E_COEF_INVALIDARG for a null path, E_COEF_OPENFAILED, E_COEF_BADFORMAT for any other file
/// and for one shorter than its header.
Status QueryWordFileSize(const SWordKind& kind, std::uint32_t fileKind, CWordFileSource& file,
                         std::uint32_t& width, std::uint32_t& height);

/// The size of a file of one binary kind: it replaces the low 16 bits of the outputs. Statuses of the
/// kind's own query.
Status QueryBinarySize(const SBinaryFileKind& kind, CWordFileSource& file, std::uint32_t& width,
                       std::uint32_t& height);

} // namespace trevolt
