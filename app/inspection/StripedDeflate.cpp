#include "app/inspection/StripedDeflate.h"

#include <algorithm>
#include <array>
#include <new>

#include <zlib.h>

#include "common/OrderedJobs.h"

namespace trevolt {
namespace {

constexpr int kRawStream = -15; // no header, no sum; the largest window
constexpr int kUsualMemory = 8;
constexpr std::size_t kFlushBytes = 16; // what a flush may add to the bound of a whole stream
constexpr std::array<std::uint8_t, 2> kHeader{0x78, 0x01};

struct SStripe {
    std::span<const std::uint8_t> bytes;
    bool isLast = false;
    std::vector<std::uint8_t> packed; ///< empty where there is no room for it
    uLong sum = 0;
};

std::vector<SStripe> StripesOf(std::span<const std::uint8_t> bytes) {
    std::vector<SStripe> stripes;
    do {
        const std::size_t count = std::min(bytes.size(), kDeflateStripe);
        stripes.push_back({bytes.first(count), count == bytes.size(), {}, 0});
        bytes = bytes.subspan(count);
    } while (!bytes.empty());
    return stripes;
}

/// All but the last end at a whole byte, so that they can stand one behind the other.
void Deflate(SStripe& stripe, z_stream& stream) {
    stripe.packed.resize(deflateBound(&stream, static_cast<uLong>(stripe.bytes.size())) +
                         kFlushBytes);
    stream.next_in = const_cast<Bytef*>(stripe.bytes.data());
    stream.avail_in = static_cast<uInt>(stripe.bytes.size());
    stream.next_out = stripe.packed.data();
    stream.avail_out = static_cast<uInt>(stripe.packed.size());
    const int done = deflate(&stream, stripe.isLast ? Z_FINISH : Z_SYNC_FLUSH);
    const bool isWhole = done == (stripe.isLast ? Z_STREAM_END : Z_OK) && stream.avail_out > 0;
    stripe.packed.resize(isWhole ? stream.total_out : 0);
}

void Pack(SStripe& stripe, int effort) {
    z_stream stream{};
    if (deflateInit2(&stream, effort, Z_DEFLATED, kRawStream, kUsualMemory, Z_DEFAULT_STRATEGY) !=
        Z_OK)
        return;
    try {
        Deflate(stripe, stream);
    } catch (const std::bad_alloc&) { // told by what is missing
    }
    deflateEnd(&stream);
    stripe.sum = adler32_z(adler32(0, nullptr, 0), stripe.bytes.data(), stripe.bytes.size());
}

void AppendBigEndian(std::vector<std::uint8_t>& to, uLong value) {
    for (int shift = 24; shift >= 0; shift -= 8)
        to.push_back(static_cast<std::uint8_t>(value >> shift));
}

std::vector<std::uint8_t> Joined(const std::vector<SStripe>& stripes) {
    std::vector<std::uint8_t> joined(kHeader.begin(), kHeader.end());
    uLong sum = adler32(0, nullptr, 0);
    for (const SStripe& stripe : stripes) {
        if (stripe.packed.empty())
            throw std::bad_alloc();
        joined.insert(joined.end(), stripe.packed.begin(), stripe.packed.end());
        sum = adler32_combine(sum, stripe.sum, static_cast<z_off_t>(stripe.bytes.size()));
    }
    AppendBigEndian(joined, sum);
    return joined;
}

} // namespace

std::vector<std::uint8_t> DeflateInStripes(std::span<const std::uint8_t> bytes, int effort,
                                           std::size_t jobs) {
    std::vector<SStripe> stripes = StripesOf(bytes);
    ShareOut(stripes.size(), jobs, [&](std::size_t i) { Pack(stripes[i], effort); });
    return Joined(stripes);
}

} // namespace trevolt
