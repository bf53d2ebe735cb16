// Coefficient objects at work on a screen of 3840 × 2160: loading and exporting a word file beside
// the bare LZ4 calls on the same planes, and what an object costs to build and destroy. Content that
// does not compress makes LZ4 a copy, and then the file itself (BareWrite, BareRead) costs most.
#include <cmath>
#include <filesystem>
#include <memory>
#include <random>
#include <string>

#include <benchmark/benchmark.h>
#include <lz4.h>

#include "coef/CNewBrightCorrectCoef.h"
#include "coef/CNewChromaCorrectCoef.h"
#include "coef/VirtualGreenBrightCorrectCoef.h"
#include "coef/VirtualGreenChromaCorrectCoef.h"
#include "platform/FileStream.h"

namespace trevolt {
namespace {

constexpr std::uint16_t kWidth = 3840;
constexpr std::uint16_t kHeight = 2160;
constexpr SPixelRect kScreen{0, 0, kWidth, kHeight};

/// What the words of the screen look like.
enum Content : std::int64_t {
    Noisy,  ///< gains with a slow drift and pixel noise: does not compress
    Coarse, ///< the same in steps of 1/256: compresses by matches
};

template <class Object>
using ElementOf = std::remove_pointer_t<decltype(std::declval<Object&>().FindPixel(0, 0))>;

template <class Object>
void Fill(Object& object, Content content) {
    std::minstd_rand random(4711);
    for (std::uint32_t y = 0; y < kHeight; ++y)
        for (std::uint32_t x = 0; x < kWidth; ++x) {
            const double drift = 0.86 + 0.03 * std::sin(x / 90.0) * std::cos(y / 70.0);
            for (std::uint16_t& word : object.FindPixel(x, y)->w) {
                const double noise = static_cast<double>(random() % 2048) / 65535.0;
                word = static_cast<std::uint16_t>((drift + noise) * 65535);
                if (content == Coarse)
                    word &= 0xFF00;
            }
        }
}

/// A file that goes with its holder.
class CTemporaryFile {
  public:
    CTemporaryFile() : m_path(std::filesystem::temp_directory_path() / "trevolt-coef-bench.coef") {}
    ~CTemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    std::wstring Path() const { return m_path.wstring(); }

  private:
    std::filesystem::path m_path;
};

/// A screen of the kind with its file, and its planes, piece by piece, raw and compressed.
template <class Object>
struct SScreen {
    static constexpr std::size_t kWords = ElementOf<Object>{}.w.size();

    explicit SScreen(Content content) {
        object.Create(kWidth, kHeight);
        Fill(object, content);
        object.ExportCoef(file.Path().c_str(), kScreen, nullptr, nullptr);
        GatherPlanes();
        Compress();
    }

    void GatherPlanes() {
        ForEachBlockPiece({0, 0, kWidth, kHeight}, [&](const SBlockPiece& piece) {
            const auto* elements = BlockElements<ElementOf<Object>>(*object.Store(), piece.block);
            for (std::size_t k = 0; k < kWords; ++k) {
                planeEnds.push_back(planes.size() + std::size_t{piece.width} * piece.height);
                for (std::uint32_t y = 0; y < piece.height; ++y)
                    for (std::uint32_t x = 0; x < piece.width; ++x)
                        planes.push_back(elements[y * kBlockWidth + x].w[k]);
            }
        });
    }

    /// The bare calls; the compressed bytes and sizes are kept.
    void Compress() {
        compressed.resize(planes.size() * 2 + planes.size() / 64 + 4096);
        compressedSizes.clear();
        std::size_t start = 0;
        char* to = compressed.data();
        for (const std::size_t end : planeEnds) {
            const auto bytes = static_cast<int>((end - start) * 2);
            const int size = LZ4_compress_fast(reinterpret_cast<const char*>(&planes[start]), to,
                                               bytes, LZ4_compressBound(bytes), 1);
            compressedSizes.push_back(size);
            to += size;
            start = end;
        }
    }

    void Decompress(std::vector<char>& out) const {
        const char* from = compressed.data();
        for (const int size : compressedSizes) {
            benchmark::DoNotOptimize(
                LZ4_decompress_safe(from, out.data(), size, static_cast<int>(out.size())));
            from += size;
        }
    }

    std::vector<char> FileBytes() const {
        std::fstream stream;
        OpenFileStream(stream, file.Path().c_str(), std::ios::in);
        std::vector<char> bytes(BytesToEnd(stream).value_or(0));
        stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return bytes;
    }

    Object object;
    CTemporaryFile file;
    std::vector<std::uint16_t> planes;
    std::vector<std::size_t> planeEnds;
    std::vector<char> compressed;
    std::vector<int> compressedSizes;
};

template <class Object>
void CountBytes(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() *
                            static_cast<std::int64_t>(sizeof(ElementOf<Object>)) * kWidth *
                            kHeight);
}

template <class Object>
void BareCompress(benchmark::State& state) {
    SScreen<Object> screen(static_cast<Content>(state.range(0)));
    for (auto _ : state)
        screen.Compress();
    CountBytes<Object>(state);
}

template <class Object>
void ExportCoef(benchmark::State& state) {
    SScreen<Object> screen(static_cast<Content>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(
            screen.object.ExportCoef(screen.file.Path().c_str(), kScreen, nullptr, nullptr));
    CountBytes<Object>(state);
}

/// What the file alone costs: the same bytes written from memory, and read into it.
template <class Object>
void BareWrite(benchmark::State& state) {
    SScreen<Object> screen(static_cast<Content>(state.range(0)));
    const std::vector<char> bytes = screen.FileBytes();
    for (auto _ : state) {
        std::fstream stream;
        OpenFileStream(stream, screen.file.Path().c_str(), std::ios::out | std::ios::trunc);
        stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    CountBytes<Object>(state);
}

template <class Object>
void BareRead(benchmark::State& state) {
    SScreen<Object> screen(static_cast<Content>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(screen.FileBytes());
    CountBytes<Object>(state);
}

template <class Object>
void BareDecompress(benchmark::State& state) {
    const SScreen<Object> screen(static_cast<Content>(state.range(0)));
    std::vector<char> out(std::size_t{kBlockElements} * 2);
    for (auto _ : state)
        screen.Decompress(out);
    CountBytes<Object>(state);
}

template <class Object>
void LoadCoef(benchmark::State& state) {
    SScreen<Object> screen(static_cast<Content>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(screen.object.LoadCoef(screen.file.Path().c_str()));
    CountBytes<Object>(state);
}

template <class Object>
void BuildAndDestroy(benchmark::State& state) {
    benchmark::DoNotOptimize(std::make_unique<Object>()); // the first one computes the tables
    for (auto _ : state) {
        Object object;
        benchmark::DoNotOptimize(&object);
    }
}

#define WORK_BENCHMARKS(Object)                                                                    \
    BENCHMARK_TEMPLATE(BareCompress, Object)->Arg(Noisy)->Arg(Coarse);                             \
    BENCHMARK_TEMPLATE(ExportCoef, Object)->Arg(Noisy)->Arg(Coarse);                               \
    BENCHMARK_TEMPLATE(BareWrite, Object)->Arg(Noisy)->Arg(Coarse);                                \
    BENCHMARK_TEMPLATE(BareRead, Object)->Arg(Noisy)->Arg(Coarse);                                 \
    BENCHMARK_TEMPLATE(BareDecompress, Object)->Arg(Noisy)->Arg(Coarse);                           \
    BENCHMARK_TEMPLATE(LoadCoef, Object)->Arg(Noisy)->Arg(Coarse)

WORK_BENCHMARKS(CCNewChromaCorrectCoef);
WORK_BENCHMARKS(CCNewBrightCorrectCoef);
BENCHMARK_TEMPLATE(BuildAndDestroy, CCNewBrightCorrectCoef);
BENCHMARK_TEMPLATE(BuildAndDestroy, CCNewChromaCorrectCoef);
BENCHMARK_TEMPLATE(BuildAndDestroy, CVirtualGreenBrightCorrectCoef);
BENCHMARK_TEMPLATE(BuildAndDestroy, CVirtualGreenChromaCorrectCoef);

} // namespace
} // namespace trevolt
