#include "calibuf/PlaneTranspose.h"

#include <algorithm>
#include <numeric>
#include <random>

#include "calibuf/PlaneKernels.h"
#include "common/LittleEndian.h"
#include "tests/support/TestFiles.h"

namespace trevolt {
namespace {

using namespace test;

constexpr std::size_t kWordBytes = 2;
constexpr std::array<std::size_t, 7> kWordCounts{1, 2, 3, 4, 5, 9, 12};
constexpr std::byte kGuard{0x77}; // around and between what is written
constexpr std::uint16_t kGuardWord = 0x7777;
constexpr std::size_t kGuardBytes = 65; // odd: nothing written is aligned

/// Every way to fill groups of 8 and of 16 elements, and some counts beyond all hints to the cache.
std::vector<std::size_t> Counts() {
    std::vector<std::size_t> counts(71);
    std::iota(counts.begin(), counts.end(), 0);
    counts.insert(counts.end(), {255, 1000, 32768});
    return counts;
}

/// Elements of random words. What is read of them stands at odd addresses in memory of exactly its
/// size, so that the sanitizers see any byte behind it.
class RandomElements {
  public:
    RandomElements(std::size_t wordCount, std::size_t count)
        : m_wordCount(wordCount),
          m_count(count),
          m_packed(1 + count * wordCount * kWordBytes),
          m_planes(wordCount, Bytes(1 + count * kWordBytes)) {
        std::mt19937 random(static_cast<unsigned>(count));
        for (std::size_t e = 0; e < count; ++e)
            for (std::size_t k = 0; k < wordCount; ++k) {
                const auto word = static_cast<std::uint16_t>(random());
                StoreLittle<std::uint16_t>(&m_packed[1 + (e * wordCount + k) * kWordBytes], word);
                StoreLittle<std::uint16_t>(&m_planes[k][1 + e * kWordBytes], word);
            }
    }

    std::uint16_t Word(std::size_t e, std::size_t k) const {
        return LoadLittle<std::uint16_t>(&m_planes[k][1 + e * kWordBytes]);
    }

    const std::byte* Packed() const { return m_packed.data() + 1; }

    std::vector<const std::byte*> Planes() const {
        std::vector<const std::byte*> planes;
        for (const Bytes& plane : m_planes)
            planes.push_back(plane.data() + 1);
        return planes;
    }

    /// Guarded planes that hold elements `first` to `end`.
    std::vector<std::uint16_t> GuardedPlanes(std::size_t stride, std::size_t first,
                                             std::size_t end) const {
        std::vector<std::uint16_t> words(2 * kGuardBytes + m_wordCount * stride, kGuardWord);
        for (std::size_t k = 0; k < m_wordCount; ++k)
            for (std::size_t e = first; e < end; ++e)
                words[kGuardBytes + k * stride + e] = Word(e, k);
        return words;
    }

    /// Guarded elements of `elemSize` bytes, of which `first` to `end` hold their words.
    Bytes GuardedElements(std::size_t elemSize, std::size_t first, std::size_t end) const {
        Bytes bytes(2 * kGuardBytes + m_count * elemSize, kGuard);
        for (std::size_t e = first; e < end; ++e)
            for (std::size_t k = 0; k < m_wordCount; ++k)
                StoreLittle<std::uint16_t>(&bytes[kGuardBytes + e * elemSize + k * kWordBytes],
                                           Word(e, k));
        return bytes;
    }

  private:
    std::size_t m_wordCount;
    std::size_t m_count;
    Bytes m_packed;
    std::vector<Bytes> m_planes;
};

/// Runs `check(elements, wordCount, count)` for all word counts and counts.
template <class Check>
void ForAllElements(const Check& check) {
    for (const std::size_t wordCount : kWordCounts)
        for (const std::size_t count : Counts()) {
            SCOPED_TRACE(testing::Message() << wordCount << " words, " << count << " elements");
            check(RandomElements(wordCount, count), wordCount, count);
            if (testing::Test::HasFatalFailure())
                return;
        }
}

class PlaneTranspose : public ::testing::TestWithParam<EVectors> {};
INSTANTIATE_TEST_SUITE_P(Vectors, PlaneTranspose,
                         ::testing::Values(EVectors::Narrow, EVectors::Widest));

TEST_P(PlaneTranspose, GathersEveryWordAndWritesNothingElse) {
    ForAllElements([](const RandomElements& elements, std::size_t wordCount, std::size_t count) {
        const std::size_t stride = count + 3;
        auto planes = elements.GuardedPlanes(stride, 0, 0);
        GatherPlanes(elements.Packed(), count, planes.data() + kGuardBytes, {wordCount, stride},
                     GetParam());
        ASSERT_TRUE(planes == elements.GuardedPlanes(stride, 0, count));
    });
}

TEST_P(PlaneTranspose, ScattersEveryWordAndWritesNothingElse) {
    for (const std::size_t bytesBehind : {0U, 1U, 2U, 6U})
        ForAllElements(
            [=](const RandomElements& elements, std::size_t wordCount, std::size_t count) {
                const std::size_t elemSize = wordCount * kWordBytes + bytesBehind;
                Bytes bytes = elements.GuardedElements(elemSize, 0, 0);
                ScatterPlanes(elements.Planes(), bytes.data() + kGuardBytes, count, elemSize,
                              GetParam());
                ASSERT_TRUE(bytes == elements.GuardedElements(elemSize, 0, count))
                    << bytesBehind << " bytes behind an element's words";
            });
}

TEST(PlaneTranspose, TakesTheWordsInTheirOrder) {
    const Bytes elements = MakeBytes({1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0});
    std::vector<std::uint16_t> planes(6);
    GatherPlanes(elements.data(), 2, planes.data(), {3, 2});
    EXPECT_EQ(planes, (std::vector<std::uint16_t>{1, 4, 2, 5, 3, 6}));
}

/// Kernels of one width, and how many elements they move at a time.
struct Width {
    const SPlaneKernels* kernels;
    std::size_t group;
};

std::vector<Width> WidthsOfThisProcessor() {
    std::vector<Width> widths{{&kNarrowPlaneKernels, 8}};
#ifdef __x86_64__
    if (__builtin_cpu_supports("avx2") != 0)
        widths.push_back({&kWidePlaneKernels, 16});
#endif
    return widths;
}

TEST(PlaneKernels, AreTheProcessorsWidestUnlessNarrowOnesAreAskedFor) {
    std::vector<const SPlaneKernels*> widestFirst;
    for (const Width& width : WidthsOfThisProcessor())
        widestFirst.insert(widestFirst.begin(), width.kernels);
    const auto listed = [](EVectors vectors) {
        const auto kernels = PlaneKernelsFor(vectors);
        return std::vector<const SPlaneKernels*>(kernels.begin(), kernels.end());
    };
    EXPECT_EQ(listed(EVectors::Widest), widestFirst);
    EXPECT_EQ(listed(EVectors::Narrow), std::vector<const SPlaneKernels*>{&kNarrowPlaneKernels});
}

/// Where kernels end that begin with element `first`.
std::size_t EndOfGroups(std::size_t wordCount, std::size_t group, std::size_t first,
                        std::size_t count) {
    if (wordCount != 3 && wordCount != 4 && wordCount != 9 && wordCount != 12)
        return first;
    const std::size_t reach = wordCount == 3 ? 1 : 0; // into the element behind
    return count < first + reach ? first : first + (count - first - reach) / group * group;
}

TEST(PlaneKernels, MoveWholeGroupsAndTellWhereTheyEnd) {
    for (const auto& [kernels, group] : WidthsOfThisProcessor())
        for (const std::size_t first : {0U, 3U, 16U})
            ForAllElements([&, kernels = kernels, group = group](const RandomElements& elements,
                                                                 std::size_t wordCount,
                                                                 std::size_t count) {
                if (first > count)
                    return;
                const std::size_t end = EndOfGroups(wordCount, group, first, count);
                const std::size_t stride = count + 3;
                auto planes = elements.GuardedPlanes(stride, 0, 0);
                ASSERT_EQ(kernels->gather(elements.Packed(), first, count,
                                          planes.data() + kGuardBytes, {wordCount, stride}),
                          end);
                ASSERT_TRUE(planes == elements.GuardedPlanes(stride, first, end));
                const std::size_t elemSize = wordCount * kWordBytes;
                Bytes bytes = elements.GuardedElements(elemSize, 0, 0);
                ASSERT_EQ(kernels->scatter(elements.Planes().data(), wordCount,
                                           bytes.data() + kGuardBytes, first, count),
                          end);
                // What is left to the caller may have been written too.
                std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(kGuardBytes + end * elemSize),
                          bytes.end() - kGuardBytes, kGuard);
                ASSERT_TRUE(bytes == elements.GuardedElements(elemSize, first, end));
            });
}

} // namespace
} // namespace trevolt
