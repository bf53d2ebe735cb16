// A question for a word file's size or losses makes no coefficient object: the gamma tables of one
// and the block table of its store are for loads and saves.
#include <new>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/rotation/AllocationLimit.h"
#include "tests/support/TestFiles.h"
#include "trevolt/CoefObjects.h"
#include "trevolt/FileKinds.h"
#include "trevolt/WordCoefFile.h"

namespace trevolt {
namespace {

/// Less than a gamma table takes.
constexpr std::size_t kLarge = std::size_t{100} * 1024;

TEST(WordQuestions, NeedNoneOfTheMemoryThatAnObjectNeeds) {
    struct SCase {
        EWordKind kind;
        const wchar_t* name;
    };
    for (const SCase& c : {SCase{EWordKind::Chroma, L"cabinet/Cab_06.9wcoef"},
                           SCase{EWordKind::Brightness, L"cabinet/Cab_07.3wcoef"},
                           SCase{EWordKind::VirtualGreenBrightness, L"cabinet/Cab_08.4wcoef"},
                           SCase{EWordKind::VirtualGreenChroma, L"cabinet/Cab_09.12wcoef"}}) {
        const std::wstring sample = test::Sample(c.name);
        std::istringstream stream(test::ReadText(sample));
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        std::uint32_t streamWidth = 0;
        std::uint32_t streamHeight = 0;
        {
            const test::CAllocationLimit limit(kLarge);
            EXPECT_THROW(CreateCoefObject(c.kind), std::bad_alloc);
            EXPECT_EQ(ReadWordCoefSize(c.kind, sample.c_str(), width, height), S_OK);
            EXPECT_EQ(ReadWordCoefSize(c.kind, stream, streamWidth, streamHeight), S_OK);
            EXPECT_TRUE(DescribeWordFileLosses(sample.c_str()).empty());
            EXPECT_TRUE(DescribeWordFileLosses(stream).empty());
        }
        EXPECT_EQ(width, 40U);
        EXPECT_EQ(height, 24U);
        EXPECT_EQ(streamWidth, 40U);
        EXPECT_EQ(streamHeight, 24U);
    }
}

} // namespace
} // namespace trevolt
