// Text coefficient files: bytes a second of the reader and the writer, and how many times as long
// they take as splitting the same bytes in memory into lines by memchr (counter times_memchr). The
// file lies in the temporary folder.

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "formats/TextCoefFile.h"

namespace trevolt {
namespace {

constexpr std::int32_t kWidth = 1920;
constexpr std::int32_t kHeight = 540;

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
        m_map.Resize(kWidth, kHeight);
        for (std::int32_t y = 0; y < kHeight; ++y) {
            for (std::int32_t x = 0; x < kWidth; ++x) {
                SMatrixCoef element;
                for (std::size_t k = 0; k < 9; ++k)
                    element.m[k] = k % 4 == 0 ? gain(random) : cross(random);
                m_map.SetElement(x, y, element);
            }
        }
        WriteTextCoefFile(m_map, m_path.c_str(), nullptr);
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
        using Clock = std::chrono::steady_clock;
        const std::vector<char> bytes = CTextSample::Instance().Bytes();
        double best = 1e9;
        for (int run = 0; run < 10; ++run) {
            const Clock::time_point start = Clock::now();
            benchmark::DoNotOptimize(CountLinesByMemchr(bytes));
            best = std::min(best, std::chrono::duration<double>(Clock::now() - start).count());
        }
        return best;
    }();
    return seconds;
}

/// Reports bytes a second and the ratio to the splitting.
void CountBytes(benchmark::State& state) {
    const auto bytes = std::filesystem::file_size(CTextSample::Instance().Path());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
    state.counters["times_memchr"] =
        benchmark::Counter(SplitSeconds(), benchmark::Counter::kIsIterationInvariantRate |
                                               benchmark::Counter::kInvert);
}

void SplitIntoLinesByMemchr(benchmark::State& state) {
    const std::vector<char> bytes = CTextSample::Instance().Bytes();
    for (auto _ : state)
        benchmark::DoNotOptimize(CountLinesByMemchr(bytes));
    CountBytes(state);
}
BENCHMARK(SplitIntoLinesByMemchr)->Unit(benchmark::kMillisecond);

void ReadText(benchmark::State& state) {
    const CTextSample& sample = CTextSample::Instance();
    CChromaCorrectCoef map;
    map.Resize(kWidth, kHeight);
    for (auto _ : state) {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        if (ReadTextCoefFile(map, sample.Path().c_str(), 0, 0, width, height, false) != S_OK)
            state.SkipWithError("the file does not read");
    }
    CountBytes(state);
}
BENCHMARK(ReadText)->Unit(benchmark::kMillisecond);

void WriteText(benchmark::State& state) {
    const CTextSample& sample = CTextSample::Instance();
    for (auto _ : state)
        if (WriteTextCoefFile(sample.Map(), sample.Path().c_str(), nullptr) != S_OK)
            state.SkipWithError("the file does not open");
    CountBytes(state);
}
BENCHMARK(WriteText)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace trevolt
