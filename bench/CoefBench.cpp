// Coefficient objects at work on a screen of 3840 × 2160: loading and exporting a word file beside
// the bare LZ4 calls on the same planes, with and without the file, and what an object costs to build
// and destroy. Content that does not compress makes LZ4 a copy; then the file itself costs most.
#include <filesystem>
#include <memory>
#include <numeric>
#include <random>
#include <string>

#include <benchmark/benchmark.h>
#include <lz4.h>

#include "bench/RatioReporter.h"
#include "bench/WordContent.h"
#include "coef/CNewBrightCorrectCoef.h"
#include "coef/CNewChromaCorrectCoef.h"
#include "coef/VirtualGreenBrightCorrectCoef.h"
#include "coef/VirtualGreenChromaCorrectCoef.h"
#include "platform/FileStream.h"
#include "platform/Process.h"

namespace trevolt {
namespace {

constexpr std::uint16_t kWidth = 3840;
constexpr std::uint16_t kHeight = 2160;
constexpr SPixelRect kScreen{0, 0, kWidth, kHeight};

template <class Object>
using ElementOf = std::remove_pointer_t<decltype(std::declval<Object&>().FindPixel(0, 0))>;

template <class Object>
void Fill(Object& object, Content content) {
    std::minstd_rand random(4711);
    for (std::uint32_t y = 0; y < kHeight; ++y)
        for (std::uint32_t x = 0; x < kWidth; ++x) {
            const double drift = GainDrift(x, y);
            for (std::uint16_t& word : object.FindPixel(x, y)->w)
                word = GainWord(content, drift + static_cast<double>(random() % 2048) / kFullScale);
        }
}

/// A file that goes with its holder.
class CTemporaryFile {
  public:
    CTemporaryFile()
        : m_path(std::filesystem::temp_directory_path() /
                 ("trevolt-coef-bench-" + std::to_string(ProcessId()) + ".coef")) {}
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
        if (Failed(object.Create(kWidth, kHeight)))
            throw std::bad_alloc();
        Fill(object, content);
        if (Failed(object.ExportCoef(file.Path().c_str(), kScreen, nullptr, nullptr)))
            throw std::runtime_error("the screen cannot be written");
        GatherPlanes();
        Compress();
        fileBytes.resize(compressed.size());
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

    Object object;
    CTemporaryFile file;
    std::vector<std::uint16_t> planes;
    std::vector<std::size_t> planeEnds;
    std::vector<char> compressed;
    std::vector<int> compressedSizes;
    std::vector<char> fileBytes;
};

/// The screen that was made last, of whatever kind.
std::shared_ptr<void>& LastScreen() {
    static std::shared_ptr<void> screen;
    return screen;
}

/// The screen of a kind and a content. The last one is kept, for the runs of one benchmark follow
/// each other, and making a screen takes longer than they do.
template <class Object>
SScreen<Object>& ScreenOf(const benchmark::State& state) {
    static std::int64_t content = -1;
    std::shared_ptr<void>& last = LastScreen();
    static std::weak_ptr<void> own;
    if (own.expired() || content != state.range(0)) {
        content = state.range(0);
        last.reset(); // before the next one takes memory
        last = std::make_shared<SScreen<Object>>(static_cast<Content>(content));
        own = last;
    }
    return *static_cast<SScreen<Object>*>(last.get());
}

template <class Object>
void CountBytes(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() *
                            static_cast<std::int64_t>(sizeof(ElementOf<Object>)) * kWidth *
                            kHeight);
}

template <class Object>
void BareCompress(benchmark::State& state) {
    SScreen<Object>& screen = ScreenOf<Object>(state);
    for ([[maybe_unused]] auto _ : state)
        screen.Compress();
    CountBytes<Object>(state);
}

template <class Object>
void ExportCoef(benchmark::State& state) {
    SScreen<Object>& screen = ScreenOf<Object>(state);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(
            screen.object.ExportCoef(screen.file.Path().c_str(), kScreen, nullptr, nullptr));
    CountBytes<Object>(state);
}

/// The bare calls, and their bytes written to a file.
template <class Object>
void BareCompressAndWrite(benchmark::State& state) {
    SScreen<Object>& screen = ScreenOf<Object>(state);
    for ([[maybe_unused]] auto _ : state) {
        screen.Compress();
        std::fstream stream;
        OpenFileStream(stream, screen.file.Path().c_str(), std::ios::out | std::ios::trunc);
        stream.write(screen.compressed.data(),
                     std::accumulate(screen.compressedSizes.begin(), screen.compressedSizes.end(),
                                     std::streamsize{0}));
    }
    CountBytes<Object>(state);
}

template <class Object>
void BareDecompress(benchmark::State& state) {
    const SScreen<Object>& screen = ScreenOf<Object>(state);
    std::vector<char> out(std::size_t{kBlockElements} * 2);
    for ([[maybe_unused]] auto _ : state)
        screen.Decompress(out);
    CountBytes<Object>(state);
}

/// A file as large as the compressed planes read into memory that is touched already, and the bare
/// calls.
template <class Object>
void BareReadAndDecompress(benchmark::State& state) {
    SScreen<Object>& screen = ScreenOf<Object>(state);
    std::vector<char> out(std::size_t{kBlockElements} * 2);
    for ([[maybe_unused]] auto _ : state) {
        std::fstream stream;
        OpenFileStream(stream, screen.file.Path().c_str(), std::ios::in);
        const auto bytes = static_cast<std::streamsize>(BytesToEnd(stream).value_or(0));
        stream.read(screen.fileBytes.data(), bytes);
        screen.Decompress(out);
    }
    CountBytes<Object>(state);
}

template <class Object>
void LoadCoef(benchmark::State& state) {
    SScreen<Object>& screen = ScreenOf<Object>(state);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(screen.object.LoadCoef(screen.file.Path().c_str()));
    CountBytes<Object>(state);
}

template <class Object>
void BuildAndDestroy(benchmark::State& state) {
    benchmark::DoNotOptimize(std::make_unique<Object>()); // the first one computes the tables
    for ([[maybe_unused]] auto _ : state) {
        Object object;
        benchmark::DoNotOptimize(&object);
    }
}

void EveryContentOfScreen(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(kNoisy)->Arg(kCoarse)->Unit(benchmark::kMillisecond)->Repetitions(3);
}

void MedianOfMany(benchmark::internal::Benchmark* benchmark) {
    benchmark->Repetitions(9)->ReportAggregatesOnly()->Unit(benchmark::kMicrosecond);
}

#define WORK_BENCHMARKS(Object)                                                                    \
    BENCHMARK_TEMPLATE(BareCompress, Object)->Apply(EveryContentOfScreen);                         \
    BENCHMARK_TEMPLATE(BareCompressAndWrite, Object)->Apply(EveryContentOfScreen);                 \
    BENCHMARK_TEMPLATE(ExportCoef, Object)->Apply(EveryContentOfScreen);                           \
    BENCHMARK_TEMPLATE(BareDecompress, Object)->Apply(EveryContentOfScreen);                       \
    BENCHMARK_TEMPLATE(BareReadAndDecompress, Object)->Apply(EveryContentOfScreen);                \
    BENCHMARK_TEMPLATE(LoadCoef, Object)->Apply(EveryContentOfScreen)

WORK_BENCHMARKS(CCNewChromaCorrectCoef);
WORK_BENCHMARKS(CCNewBrightCorrectCoef);
WORK_BENCHMARKS(CVirtualGreenBrightCorrectCoef);
WORK_BENCHMARKS(CVirtualGreenChromaCorrectCoef);
BENCHMARK_TEMPLATE(BuildAndDestroy, CCNewBrightCorrectCoef)->Apply(MedianOfMany);
BENCHMARK_TEMPLATE(BuildAndDestroy, CCNewChromaCorrectCoef)->Apply(MedianOfMany);
BENCHMARK_TEMPLATE(BuildAndDestroy, CVirtualGreenBrightCorrectCoef)->Apply(MedianOfMany);
BENCHMARK_TEMPLATE(BuildAndDestroy, CVirtualGreenChromaCorrectCoef)->Apply(MedianOfMany);

/// The work of each kind and content to the bare calls, without and with the file.
std::vector<SRatio> WorkRatios() {
    std::vector<SRatio> ratios;
    for (const std::string kind :
         {"CCNewChromaCorrectCoef", "CCNewBrightCorrectCoef", "CVirtualGreenBrightCorrectCoef",
          "CVirtualGreenChromaCorrectCoef"}) {
        for (const Content content : {kCoarse, kNoisy}) {
            const std::string run = "<" + kind + ">/" + std::to_string(content);
            const std::string what =
                kind + (content == kCoarse ? ", content that compresses: " : ", noise: ");
            ratios.insert(ratios.end(),
                          {{what + "export to LZ4", "ExportCoef" + run, "BareCompress" + run},
                           {what + "export to LZ4 and the file", "ExportCoef" + run,
                            "BareCompressAndWrite" + run},
                           {what + "load to LZ4", "LoadCoef" + run, "BareDecompress" + run},
                           {what + "load to LZ4 and the file", "LoadCoef" + run,
                            "BareReadAndDecompress" + run}});
        }
    }
    return ratios;
}

} // namespace
} // namespace trevolt

int main(int argc, char** argv) {
    return trevolt::RunWithRatios(argc, argv, trevolt::WorkRatios());
}
