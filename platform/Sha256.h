// SHA-256 of bytes that come in pieces, by the system's own hashing: CNG on Windows, libcrypto
// elsewhere.
#pragma once

#include "platform/Digest.h"

namespace trevolt {

struct SSha256State;
extern template class CDigest<SSha256State, 32>;

/// One digest in the making.
using CSha256 = CDigest<SSha256State, 32>;

} // namespace trevolt
