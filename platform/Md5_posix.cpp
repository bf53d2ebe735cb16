#include "platform/Md5.h"

#include "platform/DigestSteps.h"
#include "platform/LibcryptoDigest.h"

namespace trevolt {

struct SMd5State : CLibcryptoDigest {
    EHashing Start() { return CLibcryptoDigest::Start(EVP_md5()); }
};

template class CDigest<SMd5State, 16>;

} // namespace trevolt
