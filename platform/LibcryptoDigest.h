// A digest of libcrypto in the making, of whichever algorithm it is started with.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include "platform/Digest.h"

namespace trevolt {

class CLibcryptoDigest {
  public:
    /// libcrypto itself does not check that it has got memory for what it works with, and where it gives
    /// up later does not tell whether it was for that.
    EHashing Start(const EVP_MD* algorithm) {
        if (OSSL_LIB_CTX_get0_global_default() == nullptr || m_context == nullptr)
            return EHashing::NoMemory;
        return AnswerOf(EVP_DigestInit_ex(m_context.get(), algorithm, nullptr));
    }
    EHashing Add(const std::byte* bytes, std::size_t count) {
        return AnswerOf(EVP_DigestUpdate(m_context.get(), bytes, count));
    }
    /// Of a digest that has as many bytes as the algorithm's.
    template <std::size_t bytes>
    EHashing Finish(std::array<std::uint8_t, bytes>& digest) {
        return AnswerOf(EVP_DigestFinal_ex(m_context.get(), digest.data(), nullptr));
    }

  private:
    static EHashing AnswerOf(int isDone) { return isDone == 1 ? EHashing::Done : EHashing::Failed; }

    struct SFree {
        void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
    };
    std::unique_ptr<EVP_MD_CTX, SFree> m_context{EVP_MD_CTX_new()};
};

} // namespace trevolt
