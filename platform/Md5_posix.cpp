#include "platform/Md5.h"

#include "platform/LibcryptoDigest.h"

namespace trevolt {

struct CMd5::SState : CLibcryptoDigest {};

CMd5::CMd5() : m_state(std::make_unique<SState>()) {
    if (!m_state->Start(EVP_md5()))
        m_state.reset();
}

CMd5::~CMd5() = default;

bool CMd5::Add(const std::byte* bytes, std::size_t count) {
    if (m_state && !m_state->Add(bytes, count))
        m_state.reset();
    return m_state != nullptr;
}

bool CMd5::Finish(std::array<std::uint8_t, 16>& digest) {
    const auto state = std::move(m_state);
    return state && state->Finish(digest);
}

} // namespace trevolt
