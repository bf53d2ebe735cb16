#include "platform/Md5.h"

#include <algorithm>

#include <windows.h>

#include <wincrypt.h>

#include "platform/DigestSteps.h"

namespace trevolt {
namespace {

constexpr std::size_t kPieceBytes = 1024;

/// Of a call that just ended.
EHashing AnswerOf(BOOL isDone) {
    if (isDone != 0)
        return EHashing::Done;
    const DWORD error = GetLastError();
    return error == ERROR_NOT_ENOUGH_MEMORY || error == static_cast<DWORD>(NTE_NO_MEMORY)
               ? EHashing::NoMemory
               : EHashing::Failed;
}

} // namespace

struct SMd5State {
    HCRYPTPROV context = 0;
    HCRYPTHASH hash = 0;

    SMd5State() = default;
    SMd5State(const SMd5State&) = delete;
    SMd5State& operator=(const SMd5State&) = delete;
    ~SMd5State() {
        if (hash != 0)
            CryptDestroyHash(hash);
        if (context != 0)
            CryptReleaseContext(context, 0);
    }

    EHashing Start() {
        const EHashing acquired = AnswerOf(
            CryptAcquireContextW(&context, nullptr, nullptr, PROV_RSA_FULL, CRYPT_VERIFYCONTEXT));
        return acquired == EHashing::Done
                   ? AnswerOf(CryptCreateHash(context, CALG_MD5, 0, 0, &hash))
                   : acquired;
    }

    EHashing Add(const std::byte* bytes, std::size_t count) const {
        for (std::size_t done = 0; done < count; done += kPieceBytes) {
            const auto piece = static_cast<DWORD>(std::min(kPieceBytes, count - done));
            const EHashing added = AnswerOf(
                CryptHashData(hash, reinterpret_cast<const BYTE*>(bytes + done), piece, 0));
            if (added != EHashing::Done)
                return added;
        }
        return EHashing::Done;
    }

    EHashing Finish(std::array<std::uint8_t, 16>& digest) const {
        std::array<BYTE, 16> value{};
        DWORD size = value.size();
        const EHashing given =
            AnswerOf(CryptGetHashParam(hash, HP_HASHVAL, value.data(), &size, 0));
        if (given != EHashing::Done)
            return given;
        if (size != value.size())
            return EHashing::Failed;
        std::copy(value.begin(), value.end(), digest.begin());
        return EHashing::Done;
    }
};

template class CDigest<SMd5State, 16>;

} // namespace trevolt
