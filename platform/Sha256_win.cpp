#include "platform/Sha256.h"

#include <algorithm>
#include <limits>

#include <windows.h>

#include <bcrypt.h>

#include "platform/DigestSteps.h"

namespace trevolt {
namespace {

constexpr bool IsDone(NTSTATUS status) { return status >= 0; }

} // namespace

struct SSha256State {
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    BCRYPT_HASH_HANDLE hash = nullptr;

    SSha256State() = default;
    SSha256State(const SSha256State&) = delete;
    SSha256State& operator=(const SSha256State&) = delete;
    ~SSha256State() {
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

template class CDigest<SSha256State, 32>;

} // namespace trevolt
