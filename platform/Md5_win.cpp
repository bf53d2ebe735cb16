#include "platform/Md5.h"

#include <algorithm>

#include <windows.h>

#include <wincrypt.h>

namespace trevolt {
namespace {

constexpr std::size_t kPieceBytes = 1024;

} // namespace

struct CMd5::SState {
    HCRYPTPROV context = 0;
    HCRYPTHASH hash = 0;

    SState() = default;
    SState(const SState&) = delete;
    SState& operator=(const SState&) = delete;
    ~SState() {
        if (hash != 0)
            CryptDestroyHash(hash);
        if (context != 0)
            CryptReleaseContext(context, 0);
    }

    bool Start() {
        return CryptAcquireContextW(&context, nullptr, nullptr, PROV_RSA_FULL,
                                    CRYPT_VERIFYCONTEXT) != 0 &&
               CryptCreateHash(context, CALG_MD5, 0, 0, &hash) != 0;
    }

    bool Add(const std::byte* bytes, std::size_t count) const {
        for (std::size_t done = 0; done < count; done += kPieceBytes) {
            const auto piece = static_cast<DWORD>(std::min(kPieceBytes, count - done));
            if (CryptHashData(hash, reinterpret_cast<const BYTE*>(bytes + done), piece, 0) == 0)
                return false;
        }
        return true;
    }

    bool Finish(std::array<std::uint8_t, 16>& digest) const {
        std::array<BYTE, 16> value{};
        DWORD size = value.size();
        if (CryptGetHashParam(hash, HP_HASHVAL, value.data(), &size, 0) == 0 ||
            size != value.size())
            return false;
        std::copy(value.begin(), value.end(), digest.begin());
        return true;
    }
};

CMd5::CMd5() : m_state(std::make_unique<SState>()) {
    if (!m_state->Start())
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
