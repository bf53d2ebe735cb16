// Planes of one block: CCaliBuf's compression and decoding beside the bare LZ4 calls on planes that
// were gathered beforehand, and the codec with scratch memory that is kept, as chunk files use it.
#include <cmath>
#include <random>

#include <benchmark/benchmark.h>
#include <lz4.h>

#include "calibuf/CaliOperation.h"
#include "calibuf/PlaneCodec.h"
#include "calibuf/PlaneTranspose.h"

namespace trevolt {
namespace {

/// What the words of a block look like.
enum Content : std::int64_t {
    Noisy,  ///< gains with a slow drift and pixel noise: does not compress
    Coarse, ///< the same in steps of 1/256: compresses by matches
    Fresh   ///< the default element everywhere
};

std::uint16_t WordOf(Content content, std::uint32_t x, std::uint32_t y, std::mt19937& random) {
    const double drift = 0.86 + 0.03 * std::sin(x / 90.0) * std::cos(y / 70.0);
    const double noise = std::normal_distribution<double>(0.0, 0.008)(random);
    const auto word = static_cast<std::uint16_t>((drift + noise) * 65535);
    return content == Noisy ? word : static_cast<std::uint16_t>(word & 0xFF00);
}

/// One block of elements of T, its planes, and the planes compressed.
template <class T>
struct SBlock {
    static constexpr std::size_t kWords = sizeof(T) / sizeof(std::uint16_t);

    explicit SBlock(Content content) {
        owner.Buffer().Allocate(kBlockWidth, kBlockHeight);
        std::mt19937 random(4711);
        for (std::uint32_t y = 0; content != Fresh && y < kBlockHeight; ++y)
            for (std::uint32_t x = 0; x < kBlockWidth; ++x)
                for (std::uint16_t& word : owner.Find(x, y)->w)
                    word = WordOf(content, x, y, random);
        GatherPlanes(Elements(), kBlockElements, planes.data(), {kWords, kBlockElements});
        owner.Buffer().CompressPlanes(compressed.data(), record.totalSize, Elements(),
                                      record.planeSizes.data(), kBlockWidth, kBlockHeight);
    }

    const std::byte* Elements() { return owner.Buffer().Block(0)->pData; }

    CCaliOperation<T> owner;
    std::vector<std::uint16_t> planes = std::vector<std::uint16_t>(kWords * kBlockElements);
    std::vector<std::byte> compressed = std::vector<std::byte>(owner.Buffer().CompressedBound());
    SChunkRecord record{.width = kBlockWidth, .height = kBlockHeight};
};

void CountBytes(benchmark::State& state, std::size_t bytesAnIteration) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytesAnIteration));
}

constexpr int kPlaneBytes = kBlockElements * 2;

template <class T>
void BareCompress(benchmark::State& state) {
    SBlock<T> block(static_cast<Content>(state.range(0)));
    std::vector<char> out(block.compressed.size());
    for (auto _ : state) {
        int total = 0;
        for (std::size_t k = 0; k < block.kWords; ++k)
            total +=
                LZ4_compress_fast(reinterpret_cast<const char*>(&block.planes[k * kBlockElements]),
                                  out.data() + total, kPlaneBytes, 2 * kPlaneBytes, 1);
        benchmark::DoNotOptimize(total);
    }
    CountBytes(state, kPlaneBytes * block.kWords);
}

template <class T>
void BareDecompress(benchmark::State& state) {
    SBlock<T> block(static_cast<Content>(state.range(0)));
    std::vector<char> out((block.kWords + 1) * kPlaneBytes);
    for (auto _ : state) {
        const char* from = reinterpret_cast<const char*>(block.compressed.data());
        for (std::size_t k = 0; k < block.kWords; ++k) {
            const auto size = static_cast<int>(block.record.planeSizes[k]);
            benchmark::DoNotOptimize(
                LZ4_decompress_safe(from, &out[k * kPlaneBytes], size, 2 * kPlaneBytes));
            from += size;
        }
    }
    CountBytes(state, kPlaneBytes * block.kWords);
}

template <class T>
void CodecCompress(benchmark::State& state) {
    SBlock<T> block(static_cast<Content>(state.range(0)));
    CPlaneCodec codec(sizeof(T), kBlockElements);
    for (auto _ : state)
        benchmark::DoNotOptimize(codec.Compress(block.compressed.data(), block.record.totalSize,
                                                block.Elements(), block.record.planeSizes.data(),
                                                kBlockElements));
    CountBytes(state, kPlaneBytes * block.kWords);
}

template <class T>
void CodecDecompress(benchmark::State& state) {
    SBlock<T> block(static_cast<Content>(state.range(0)));
    CPlaneCodec codec(sizeof(T), kBlockElements);
    std::vector<std::byte> out(sizeof(T) * kBlockElements);
    std::uint32_t total = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(
            codec.Decompress(block.record, block.compressed.data(), out.data(), total));
    CountBytes(state, kPlaneBytes * block.kWords);
}

template <class T>
void StoreCompress(benchmark::State& state) {
    SBlock<T> block(static_cast<Content>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(block.owner.Buffer().CompressPlanes(
            block.compressed.data(), block.record.totalSize, block.Elements(),
            block.record.planeSizes.data(), kBlockWidth, kBlockHeight));
    CountBytes(state, kPlaneBytes * block.kWords);
}

template <class T>
void StoreDecompress(benchmark::State& state) {
    SBlock<T> block(static_cast<Content>(state.range(0)));
    std::vector<std::byte> out(sizeof(T) * kBlockElements);
    std::uint32_t total = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(block.owner.Buffer().DecompressPlanes(
            block.record, block.compressed.data(), out.data(), total));
    CountBytes(state, kPlaneBytes * block.kWords);
}

void CreateStore(benchmark::State& state) {
    for (auto _ : state) {
        CCaliOperation<S9WordCoef> owner;
        benchmark::DoNotOptimize(&owner.Buffer());
    }
}

#define PLANE_BENCHMARKS(T)                                                                        \
    BENCHMARK_TEMPLATE(BareCompress, T)->Arg(Noisy)->Arg(Coarse)->Arg(Fresh);                      \
    BENCHMARK_TEMPLATE(CodecCompress, T)->Arg(Noisy)->Arg(Coarse)->Arg(Fresh);                     \
    BENCHMARK_TEMPLATE(StoreCompress, T)->Arg(Noisy)->Arg(Coarse)->Arg(Fresh);                     \
    BENCHMARK_TEMPLATE(BareDecompress, T)->Arg(Noisy)->Arg(Coarse)->Arg(Fresh);                    \
    BENCHMARK_TEMPLATE(CodecDecompress, T)->Arg(Noisy)->Arg(Coarse)->Arg(Fresh);                   \
    BENCHMARK_TEMPLATE(StoreDecompress, T)->Arg(Noisy)->Arg(Coarse)->Arg(Fresh)

PLANE_BENCHMARKS(S9WordCoef);
PLANE_BENCHMARKS(S12WordCoef);
PLANE_BENCHMARKS(S4WordCoef);
PLANE_BENCHMARKS(S3WordCoef);
PLANE_BENCHMARKS(SWordCoef);
BENCHMARK(CreateStore);

} // namespace
} // namespace trevolt
