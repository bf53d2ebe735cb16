#include "platform/Sha256.h"

#include <openssl/sha.h>

#include "platform/DigestSteps.h"

namespace trevolt {

// libcrypto advises its functions for any digest. Those take memory when they are first used and do not
// tell when they get none, while a sum that cannot be computed is to be told with its cause. These work
// in their state alone.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

struct SSha256State {
    SHA256_CTX context{};

    EHashing Start() { return AnswerOf(SHA256_Init(&context)); }
    EHashing Add(const std::byte* bytes, std::size_t count) {
        return AnswerOf(SHA256_Update(&context, bytes, count));
    }
    EHashing Finish(std::array<std::uint8_t, 32>& digest) {
        return AnswerOf(SHA256_Final(digest.data(), &context));
    }

  private:
    static EHashing AnswerOf(int isDone) { return isDone == 1 ? EHashing::Done : EHashing::Failed; }
};

#pragma GCC diagnostic pop

template class CDigest<SSha256State, 32>;

} // namespace trevolt
