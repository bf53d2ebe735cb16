// MD5 of bytes that come in pieces, by the system's own hashing: CryptoAPI on Windows, libcrypto
// elsewhere.
#pragma once

#include "platform/Digest.h"

namespace trevolt {

struct SMd5State;
extern template class CDigest<SMd5State, 16>;

/// One digest in the making.
using CMd5 = CDigest<SMd5State, 16>;

} // namespace trevolt
