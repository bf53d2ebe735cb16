#include "common/HeldExceptions.h"

#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

constexpr std::ios::iostate kThrown = std::ios::badbit | std::ios::failbit;

TEST(HeldExceptions, AreThrownWhenTheWorkHasEnded) {
    std::stringstream stream;
    stream.exceptions(kThrown);
    bool hasEnded = false;
    EXPECT_THROW(static_cast<void>(HoldingExceptions(stream,
                                                     [&] {
                                                         stream.setstate(std::ios::failbit);
                                                         hasEnded = true;
                                                         return 1;
                                                     })),
                 std::ios::failure);
    EXPECT_TRUE(hasEnded);
    EXPECT_EQ(stream.exceptions(), kThrown);

    std::stringstream good;
    good.exceptions(kThrown);
    EXPECT_EQ(HoldingExceptions(good, [] { return 7; }), 7);
    EXPECT_EQ(good.exceptions(), kThrown);
}

TEST(HeldExceptions, AreNotForgottenWhenTheWorkThrows) {
    for (const std::ios::iostate state : {std::ios::goodbit, std::ios::failbit}) {
        std::stringstream stream;
        stream.exceptions(kThrown);
        const auto work = [&]() -> int {
            stream.setstate(state);
            throw std::out_of_range("the work's own");
        };
        EXPECT_THROW(static_cast<void>(HoldingExceptions(stream, work)), std::out_of_range);
        EXPECT_EQ(stream.exceptions(), kThrown);
    }
}

} // namespace
} // namespace trevolt
