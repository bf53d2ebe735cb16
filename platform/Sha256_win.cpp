#include "platform/Sha256.h"

#include <algorithm>
#include <limits>

#include <windows.h>

#include <bcrypt.h>

#include "platform/DigestSteps.h"

namespace trevolt {
namespace {

// Of the system's status codes, whose own header does not go with <windows.h>.
constexpr NTSTATUS kNoMemory = static_cast<NTSTATUS>(0xC0000017);
constexpr NTSTATUS kInsufficientResources = static_cast<NTSTATUS>(0xC000009A);

constexpr EHashing AnswerOf(NTSTATUS status) {
    if (status >= 0)
        return EHashing::Done;
    return status == kNoMemory || status == kInsufficientResources ? EHashing::NoMemory
                                                                   : EHashing::Failed;
}

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

    EHashing Start() {
        const EHashing opened =
            AnswerOf(BCryptOpenAlgorithmProvider(&algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, 0));
        return opened == EHashing::Done
                   ? AnswerOf(BCryptCreateHash(algorithm, &hash, nullptr, 0, nullptr, 0, 0))
                   : opened;
    }

    EHashing Add(const std::byte* bytes, std::size_t count) const {
        constexpr std::size_t kLargestPiece = std::numeric_limits<ULONG>::max();
        for (std::size_t done = 0; done < count;) {
            const std::size_t piece = std::min(kLargestPiece, count - done);
            // The call takes what it only reads as writable.
            auto* at = reinterpret_cast<UCHAR*>(const_cast<std::byte*>(bytes + done));
            const NTSTATUS status = BCryptHashData(hash, at, static_cast<ULONG>(piece), 0);
            if (AnswerOf(status) != EHashing::Done)
                return AnswerOf(status);
            done += piece;
        }
        return EHashing::Done;
    }

    EHashing Finish(std::array<std::uint8_t, 32>& digest) const {
        std::array<UCHAR, 32> value{};
        const EHashing ended = AnswerOf(BCryptFinishHash(hash, value.data(), value.size(), 0));
        if (ended == EHashing::Done)
            std::copy(value.begin(), value.end(), digest.begin());
        return ended;
    }
};

template class CDigest<SSha256State, 32>;

} // namespace trevolt
