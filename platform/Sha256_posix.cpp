#include "platform/Sha256.h"

#include "platform/DigestSteps.h"
#include "platform/LibcryptoDigest.h"

namespace trevolt {

struct SSha256State : CLibcryptoDigest {
    bool Start() { return CLibcryptoDigest::Start(EVP_sha256()); }
};

template class CDigest<SSha256State, 32>;

} // namespace trevolt
