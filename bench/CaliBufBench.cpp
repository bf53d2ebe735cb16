// Planes of one block: compression and decoding by the store beside the bare LZ4 calls on planes
// that were gathered beforehand. "times_bare_lz4" is the ratio of the fastest of many calls, one and
// the other by turns, so that a busy machine disturbs it little.
#include <algorithm>
#include <random>

#include <benchmark/benchmark.h>
#include <lz4.h>

#include "bench/WallClock.h"
#include "bench/WordContent.h"
#include "calibuf/CaliOperation.h"
#include "calibuf/PlaneTranspose.h"

namespace trevolt {
namespace {

/// One block of elements of T, its planes, and the planes compressed.
template <class T>
class CBlock {
  public:
    explicit CBlock(Content content) {
        if (Failed(m_owner.Buffer().Allocate(kBlockWidth, kBlockHeight)))
            throw std::bad_alloc();
        std::mt19937 random(4711);
        const auto noise = [&] { return std::normal_distribution<double>(0.0, 0.008)(random); };
        for (std::uint32_t y = 0; content != kFresh && y < kBlockHeight; ++y)
            for (std::uint32_t x = 0; x < kBlockWidth; ++x)
                for (std::uint16_t& word : m_owner.Find(x, y)->w)
                    word = GainWord(content, GainDrift(x, y) + noise());
        GatherPlanes(Elements(), kBlockElements, m_planes.data(), {kWords, kBlockElements});
        Compress();
    }

    void Compress() {
        benchmark::DoNotOptimize(
            m_owner.Buffer().CompressPlanes(m_compressed.data(), m_record.totalSize, Elements(),
                                            m_record.planeSizes.data(), kBlockWidth, kBlockHeight));
    }

    void CompressBare() {
        char* to = m_bare.data();
        for (std::size_t k = 0; k < kWords; ++k)
            to += LZ4_compress_fast(reinterpret_cast<const char*>(&m_planes[k * kBlockElements]),
                                    to, kPlaneBytes, 2 * kPlaneBytes, 1);
        benchmark::DoNotOptimize(to);
    }

    void Decompress() {
        std::uint32_t total = 0;
        benchmark::DoNotOptimize(m_owner.Buffer().DecompressPlanes(m_record, m_compressed.data(),
                                                                   m_elements.data(), total));
    }

    void DecompressBare() {
        const char* from = reinterpret_cast<const char*>(m_compressed.data());
        for (std::size_t k = 0; k < kWords; ++k) {
            const auto size = static_cast<int>(m_record.planeSizes[k]);
            benchmark::DoNotOptimize(
                LZ4_decompress_safe(from, &m_bare[k * kPlaneBytes], size, 2 * kPlaneBytes));
            from += size;
        }
    }

    static constexpr std::size_t kWords = sizeof(T) / sizeof(std::uint16_t);
    static constexpr int kPlaneBytes = kBlockElements * 2;

  private:
    const std::byte* Elements() { return m_owner.Buffer().Block(0)->pData; }

    CCaliOperation<T> m_owner;
    std::vector<std::uint16_t> m_planes = std::vector<std::uint16_t>(kWords * kBlockElements);
    std::vector<std::byte> m_compressed =
        std::vector<std::byte>(m_owner.Buffer().CompressedBound());
    std::vector<std::byte> m_elements = std::vector<std::byte>(sizeof(T) * kBlockElements);
    std::vector<char> m_bare = std::vector<char>(m_owner.Buffer().CompressedBound());
    SChunkRecord m_record{.width = kBlockWidth, .height = kBlockHeight};
};

/// Runs `work` as the benchmark, then compares it with `bare`.
template <class Work, class Bare>
void Compare(benchmark::State& state, std::size_t bytes, const Work& work, const Bare& bare) {
    for ([[maybe_unused]] auto _ : state)
        work();
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
    double workSeconds = 1.0;
    double bareSeconds = 1.0;
    for (int i = 0; i < 200; ++i) {
        workSeconds = std::min(workSeconds, SecondsOf(work));
        bareSeconds = std::min(bareSeconds, SecondsOf(bare));
    }
    state.counters["times_bare_lz4"] = workSeconds / bareSeconds;
}

template <class T>
void CompressPlanes(benchmark::State& state) {
    CBlock<T> block(static_cast<Content>(state.range(0)));
    Compare(
        state, sizeof(T) * kBlockElements, [&] { block.Compress(); },
        [&] { block.CompressBare(); });
}

template <class T>
void DecompressPlanes(benchmark::State& state) {
    CBlock<T> block(static_cast<Content>(state.range(0)));
    Compare(
        state, sizeof(T) * kBlockElements, [&] { block.Decompress(); },
        [&] { block.DecompressBare(); });
}

void CreateStore(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        CCaliOperation<S9WordCoef> owner;
        benchmark::DoNotOptimize(&owner.Buffer());
    }
}

void EveryContentOfPlanes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgName("content")->Arg(kNoisy)->Arg(kCoarse)->Arg(kFresh);
}

BENCHMARK_TEMPLATE(CompressPlanes, S9WordCoef)->Apply(EveryContentOfPlanes);
BENCHMARK_TEMPLATE(CompressPlanes, S12WordCoef)->Apply(EveryContentOfPlanes);
BENCHMARK_TEMPLATE(CompressPlanes, S4WordCoef)->Apply(EveryContentOfPlanes);
BENCHMARK_TEMPLATE(CompressPlanes, S3WordCoef)->Apply(EveryContentOfPlanes);
BENCHMARK_TEMPLATE(CompressPlanes, SWordCoef)->Apply(EveryContentOfPlanes);
BENCHMARK_TEMPLATE(DecompressPlanes, S9WordCoef)->Apply(EveryContentOfPlanes);
BENCHMARK_TEMPLATE(DecompressPlanes, S12WordCoef)->Apply(EveryContentOfPlanes);
BENCHMARK_TEMPLATE(DecompressPlanes, S4WordCoef)->Apply(EveryContentOfPlanes);
BENCHMARK_TEMPLATE(DecompressPlanes, S3WordCoef)->Apply(EveryContentOfPlanes);
BENCHMARK_TEMPLATE(DecompressPlanes, SWordCoef)->Apply(EveryContentOfPlanes);
BENCHMARK(CreateStore);

} // namespace
} // namespace trevolt
