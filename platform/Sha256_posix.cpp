#include "platform/Sha256.h"

#include "platform/LibcryptoDigest.h"

namespace trevolt {

struct CSha256::SState : CLibcryptoDigest {};

CSha256::CSha256() : m_state(std::make_unique<SState>()) {
    if (!m_state->Start(EVP_sha256()))
        m_state.reset();
}

CSha256::~CSha256() = default;

bool CSha256::Add(const std::byte* bytes, std::size_t count) {
    if (m_state && !m_state->Add(bytes, count))
        m_state.reset();
    return m_state != nullptr;
}

bool CSha256::Finish(std::array<std::uint8_t, 32>& digest) {
    const auto state = std::move(m_state);
    return state && state->Finish(digest);
}

} // namespace trevolt
