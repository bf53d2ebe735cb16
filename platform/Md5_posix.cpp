#include "platform/Md5.h"

#include <openssl/evp.h>

namespace trevolt {

struct CMd5::SState {
    struct Free {
        void operator()(EVP_MD_CTX* md) const { EVP_MD_CTX_free(md); }
    };
    std::unique_ptr<EVP_MD_CTX, Free> context{EVP_MD_CTX_new()};
};

CMd5::CMd5() : m_state(std::make_unique<SState>()) {
    EVP_MD_CTX* context = m_state->context.get();
    if (context == nullptr || EVP_DigestInit_ex(context, EVP_md5(), nullptr) != 1)
        m_state.reset();
}

CMd5::~CMd5() = default;

bool CMd5::Add(const std::byte* bytes, std::size_t count) {
    if (m_state && EVP_DigestUpdate(m_state->context.get(), bytes, count) != 1)
        m_state.reset();
    return m_state != nullptr;
}

bool CMd5::Finish(std::array<std::uint8_t, 16>& digest) {
    const auto state = std::move(m_state);
    return state && EVP_DigestFinal_ex(state->context.get(), digest.data(), nullptr) == 1;
}

} // namespace trevolt
