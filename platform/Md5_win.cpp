#include "platform/Md5.h"

#include <algorithm>

#include <windows.h>

#include <wincrypt.h>

#include "platform/DigestSteps.h"

namespace trevolt {
namespace {

constexpr std::size_t kPieceBytes = 1024;

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

template class CDigest<SMd5State, 16>;

} // namespace trevolt
