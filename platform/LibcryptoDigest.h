// A digest of libcrypto in the making, of whichever algorithm it is started with.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include <openssl/crypto.h>
#include <openssl/evp.h>

namespace trevolt {

class CLibcryptoDigest {
  public:
    /// False when libcrypto does not offer the algorithm, or has got no memory for what it works with,
    /// which it does not check itself.
    bool Start(const EVP_MD* algorithm) {
        return OSSL_LIB_CTX_get0_global_default() != nullptr && m_context != nullptr &&
               EVP_DigestInit_ex(m_context.get(), algorithm, nullptr) == 1;
    }
    bool Add(const std::byte* bytes, std::size_t count) {
        return EVP_DigestUpdate(m_context.get(), bytes, count) == 1;
    }
    /// Of a digest that has as many bytes as the algorithm's.
    template <std::size_t bytes>
    bool Finish(std::array<std::uint8_t, bytes>& digest) {
        return EVP_DigestFinal_ex(m_context.get(), digest.data(), nullptr) == 1;
    }

  private:
    struct SFree {
        void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
    };
    std::unique_ptr<EVP_MD_CTX, SFree> m_context{EVP_MD_CTX_new()};
};

} // namespace trevolt
