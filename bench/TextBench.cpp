// Text coefficient files: bytes a second of the reader and the writer, and how many times as long
// they take as splitting the same bytes in memory into lines by memchr (counter times_memchr). The
// file lies in the temporary folder.

#include <algorithm>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "trevolt/TextCoefFile.h"

namespace trevolt {
namespace {

/// Seconds of processor time, which a busy machine does not stretch.
double ProcessorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

constexpr std::int32_t kTextWidth = 1920;
constexpr std::int32_t kTextHeight = 540;

/// A file of 1920 × 540 pixels, none of them default, as a calibration leaves them.
class CTextSample {
  public:
    static CTextSample& Instance() {
        static CTextSample sample;
        return sample;
    }

    const std::wstring& Path() const { return m_path; }
    const CChromaCorrectCoef& Map() const { return m_map; }

    /// The file's bytes.
    std::vector<char> Bytes() const {
        std::vector<char> bytes(std::filesystem::file_size(m_path));
        std::ifstream(std::filesystem::path(m_path), std::ios::binary)
            .read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return bytes;
    }

  private:
    CTextSample()
        : m_path((std::filesystem::temp_directory_path() / "trevolt-bench.cccoef").wstring()) {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> gain(0.8F, 0.95F);
        std::uniform_real_distribution<float> cross(0.01F, 0.03F);
        m_map.Resize(kTextWidth, kTextHeight);
        for (std::int32_t y = 0; y < kTextHeight; ++y) {
            for (std::int32_t x = 0; x < kTextWidth; ++x) {
                SMatrixCoef element;
                for (std::size_t k = 0; k < 9; ++k)
                    element.m[k] = k % 4 == 0 ? gain(random) : cross(random);
                m_map.SetElement(x, y, element);
            }
        }
        if (Failed(WriteTextCoefFile(m_map, m_path.c_str(), nullptr)))
            throw std::runtime_error("the text file cannot be written");
    }
    ~CTextSample() { std::filesystem::remove(m_path); }

    std::wstring m_path;
    CChromaCorrectCoef m_map;
};

std::size_t CountLinesByMemchr(const std::vector<char>& bytes) {
    const char* at = bytes.data();
    const char* const end = at + bytes.size();
    std::size_t lines = 0;
    for (; at != end; ++lines) {
        const void* feed = std::memchr(at, '\n', static_cast<std::size_t>(end - at));
        if (feed == nullptr)
            break;
        at = static_cast<const char*>(feed) + 1;
    }
    return lines;
}

/// Seconds that splitting the file's bytes takes, the best of some runs.
double SplitSeconds() {
    static const double seconds = [] {
        const std::vector<char> bytes = CTextSample::Instance().Bytes();
        double best = 1e9;
        for (int run = 0; run < 10; ++run) {
            const double start = ProcessorSeconds();
            benchmark::DoNotOptimize(CountLinesByMemchr(bytes));
            best = std::min(best, ProcessorSeconds() - start);
        }
        return best;
    }();
    return seconds;
}

/// Reports, when it goes, bytes a second and the ratio to the splitting.
class CThroughput {
  public:
    explicit CThroughput(benchmark::State& state) : m_state(state) {
        SplitSeconds();
        m_start = ProcessorSeconds();
    }
    ~CThroughput() {
        const double seconds = ProcessorSeconds() - m_start;
        const auto iterations = m_state.iterations();
        const auto bytes = std::filesystem::file_size(CTextSample::Instance().Path());
        m_state.SetBytesProcessed(iterations * static_cast<std::int64_t>(bytes));
        m_state.counters["times_memchr"] =
            seconds / static_cast<double>(iterations) / SplitSeconds();
    }
    CThroughput(const CThroughput&) = delete;
    CThroughput& operator=(const CThroughput&) = delete;

  private:
    benchmark::State& m_state;
    double m_start = 0.0;
};

void SplitIntoLinesByMemchr(benchmark::State& state) {
    const std::vector<char> bytes = CTextSample::Instance().Bytes();
    const CThroughput throughput(state);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(CountLinesByMemchr(bytes));
}
BENCHMARK(SplitIntoLinesByMemchr)->Unit(benchmark::kMillisecond);

void ReadText(benchmark::State& state) {
    const CTextSample& sample = CTextSample::Instance();
    CChromaCorrectCoef map;
    map.Resize(kTextWidth, kTextHeight);
    const CThroughput throughput(state);
    for ([[maybe_unused]] auto _ : state) {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        if (ReadTextCoefFile(map, sample.Path().c_str(), 0, 0, width, height, false) != S_OK)
            state.SkipWithError("the file does not read");
    }
}
BENCHMARK(ReadText)->Unit(benchmark::kMillisecond);

void WriteText(benchmark::State& state) {
    const CTextSample& sample = CTextSample::Instance();
    const CThroughput throughput(state);
    for ([[maybe_unused]] auto _ : state)
        if (WriteTextCoefFile(sample.Map(), sample.Path().c_str(), nullptr) != S_OK)
            state.SkipWithError("the file does not open");
}
BENCHMARK(WriteText)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace trevolt
