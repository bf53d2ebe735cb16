#include "platform/Sha256.h"

#include <algorithm>
#include <limits>

#include <windows.h>

#include <bcrypt.h>

namespace trevolt {
namespace {

constexpr bool IsDone(NTSTATUS status) { return status >= 0; }

} // namespace

struct CSha256::SState {
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    BCRYPT_HASH_HANDLE hash = nullptr;

    SState() = default;
    SState(const SState&) = delete;
    SState& operator=(const SState&) = delete;
    ~SState() {
        if (hash != nullptr)
            BCryptDestroyHash(hash);
        if (algorithm != nullptr)
            BCryptCloseAlgorithmProvider(algorithm, 0);
    }

    bool Start() {
        return IsDone(
                   BCryptOpenAlgorithmProvider(&algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, 0)) &&
               IsDone(BCryptCreateHash(algorithm, &hash, nullptr, 0, nullptr, 0, 0));
    }

    bool Add(const std::byte* bytes, std::size_t count) const {
        constexpr std::size_t kLargestPiece = std::numeric_limits<ULONG>::max();
        for (std::size_t done = 0; done < count;) {
            const std::size_t piece = std::min(kLargestPiece, count - done);
            // The call takes what it only reads as writable.
            auto* at = reinterpret_cast<UCHAR*>(const_cast<std::byte*>(bytes + done));
            if (!IsDone(BCryptHashData(hash, at, static_cast<ULONG>(piece), 0)))
                return false;
            done += piece;
        }
        return true;
    }

    bool Finish(std::array<std::uint8_t, 32>& digest) const {
        std::array<UCHAR, 32> value{};
        if (!IsDone(BCryptFinishHash(hash, value.data(), value.size(), 0)))
            return false;
        std::copy(value.begin(), value.end(), digest.begin());
        return true;
    }
};

CSha256::CSha256() : m_state(std::make_unique<SState>()) {
    if (!m_state->Start())
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
