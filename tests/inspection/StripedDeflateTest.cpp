#include "app/inspection/StripedDeflate.h"

#include <random>

#include <gtest/gtest.h>
#include <zlib.h>

namespace trevolt {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes Noise(std::size_t count, unsigned values) {
    std::mt19937 random(7);
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(random() % values);
    return bytes;
}

/// What zlib makes of a whole stream that holds `count` bytes; empty when it does not take it.
Bytes Inflated(const Bytes& packed, std::size_t count) {
    Bytes bytes(count + 1); // one more would be seen
    uLongf made = static_cast<uLongf>(bytes.size());
    uLong taken = static_cast<uLong>(packed.size());
    if (uncompress2(bytes.data(), &made, packed.data(), &taken) != Z_OK || taken != packed.size())
        return {};
    bytes.resize(made);
    return bytes;
}

TEST(StripedDeflate, ZlibTakesWhatIsPackedAtEverySize) {
    for (const std::size_t count : {std::size_t{1}, kDeflateStripe - 1, kDeflateStripe,
                                    kDeflateStripe + 1, 3 * kDeflateStripe + 5})
        for (const unsigned values : {1U, 7U, 256U}) {
            const Bytes bytes = Noise(count, values);
            EXPECT_TRUE(Inflated(DeflateInStripes(bytes, 2, 3), count) == bytes)
                << count << " bytes of " << values;
        }
    const Bytes nothing{0x78, 0x01, 0x03, 0x00, 0x00, 0x00, 0x00, 0x01};
    EXPECT_EQ(DeflateInStripes({}, 2, 2), nothing);
}

TEST(StripedDeflate, IsTheSameForEveryNumberOfThreads) {
    const Bytes bytes = Noise(3 * kDeflateStripe + 5, 7);
    const Bytes packed = DeflateInStripes(bytes, 2, 1);
    EXPECT_LT(packed.size(), bytes.size() / 2);
    for (const std::size_t jobs : {0U, 2U, 9U})
        EXPECT_TRUE(DeflateInStripes(bytes, 2, jobs) == packed) << jobs;
}

TEST(StripedDeflate, TakesTheEffort) {
    const Bytes bytes = Noise(100000, 7);
    EXPECT_LT(DeflateInStripes(bytes, 9, 1).size(), DeflateInStripes(bytes, 1, 1).size());
}

} // namespace
} // namespace trevolt
