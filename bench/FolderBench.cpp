// What a small cabinet of each kind costs from folder to folder, beside the bare sum of what cannot
// be spared: reading its bytes, LZ4 in and out on as many raw bytes, writing as many bytes. Building
// the coefficient objects of the word kinds stands beside it on its own.
#include <array>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <lz4.h>

#include "app/rotation/DemoWall.h"
#include "bench/RatioReporter.h"
#include "coef/CNewBrightCorrectCoef.h"
#include "coef/CNewChromaCorrectCoef.h"
#include "coef/VirtualGreenBrightCorrectCoef.h"
#include "coef/VirtualGreenChromaCorrectCoef.h"
#include "trevolt/FileKinds.h"
#include "trevolt/RotationRun.h"

namespace trevolt {
namespace {

namespace fs = std::filesystem;

constexpr int kCabinets = 20;
constexpr int kRepetitions = 5;
constexpr std::size_t kDemoPixels = std::size_t{160} * 90;

/// Raw bytes a pixel that LZ4 sees in each kind, in the table's order; text is not compressed.
constexpr std::array<std::size_t, 9> kRawBytes{36, 9, 18, 6, 12, 3, 0, 8, 24};

/// One folder a kind, each with the same cabinet many times, and one for the outputs.
class CWalls {
  public:
    CWalls() {
        fs::remove_all(m_root);
        fs::create_directories(m_root / "demo");
        fs::create_directories(m_root / "out");
        if (!WriteDemoWall((m_root / "demo").wstring(), false, false).empty())
            throw std::runtime_error("the demo wall cannot be written");
        for (const auto& entry : fs::directory_iterator(m_root / "demo"))
            Multiply(entry.path());
    }
    ~CWalls() {
        std::error_code ignored;
        fs::remove_all(m_root, ignored);
    }
    CWalls(const CWalls&) = delete;
    CWalls& operator=(const CWalls&) = delete;

    fs::path Folder(std::size_t kind) const {
        return m_root / fs::path(FileKinds()[kind].extension.substr(1));
    }
    fs::path Output() const { return m_root / "out"; }

  private:
    void Multiply(const fs::path& file) const {
        const fs::path folder = m_root / file.extension().string().substr(1);
        fs::create_directories(folder);
        for (int i = 0; i < kCabinets; ++i)
            fs::copy_file(file, folder / (std::to_string(i) + file.extension().string()));
    }

    fs::path m_root = fs::temp_directory_path() / "trevolt-folder-bench";
};

const CWalls& Walls() {
    static const CWalls walls;
    return walls;
}

class CSilentListener : public CRotationListener {
  public:
    void OnFile(const SFileOutcome&, std::size_t, std::size_t) override {}
};

void Rotate(benchmark::State& state) {
    const std::atomic<bool> interrupted{false};
    SRotationRequest request;
    request.sources = {Walls().Folder(static_cast<std::size_t>(state.range(0))).wstring()};
    request.targetFolder = Walls().Output().wstring();
    request.sync = false;
    request.existing = EExistingOutput::Replace;
    for ([[maybe_unused]] auto _ : state) {
        CSilentListener listener;
        if (RunRotation(request, interrupted, listener).end != ERotationEnd::AllDone)
            state.SkipWithError("not all files were turned");
    }
    state.counters["a file"] = benchmark::Counter(
        kCabinets, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

std::vector<char> ReadAll(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// As many words with the noise of a calibration as the kind has raw bytes.
std::vector<char> NoisyBytes(std::size_t count) {
    std::vector<char> bytes(count);
    std::uint32_t state = 1;
    for (std::size_t i = 0; i < count; ++i) {
        state = state * 1664525U + 1013904223U;
        bytes[i] = static_cast<char>(i % 2 == 1 ? 0x5C : state >> 24);
    }
    return bytes;
}

void Bare(benchmark::State& state) {
    const auto kind = static_cast<std::size_t>(state.range(0));
    const std::vector<char> raw = NoisyBytes(kRawBytes[kind] * kDemoPixels);
    const int rawBytes = static_cast<int>(raw.size());
    std::vector<char> packed(static_cast<std::size_t>(LZ4_compressBound(rawBytes)));
    std::vector<char> again(raw.size());
    const fs::path output = Walls().Output() / "bare";
    for ([[maybe_unused]] auto _ : state) {
        for (const auto& entry : fs::directory_iterator(Walls().Folder(kind))) {
            const std::vector<char> bytes = ReadAll(entry.path());
            const int size = LZ4_compress_fast(raw.data(), packed.data(), rawBytes,
                                               static_cast<int>(packed.size()), 1);
            benchmark::DoNotOptimize(
                LZ4_decompress_safe(packed.data(), again.data(), size, rawBytes));
            std::ofstream(output, std::ios::binary)
                .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        }
    }
}

template <class Object>
void BuildObject(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        const Object object;
        benchmark::DoNotOptimize(&object);
    }
}

BENCHMARK(Rotate)
    ->DenseRange(0, 8)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(kRepetitions)
    ->MeasureProcessCPUTime(); // the work is done on a thread of its own
BENCHMARK(Bare)
    ->DenseRange(0, 8)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(kRepetitions)
    ->MeasureProcessCPUTime();
BENCHMARK_TEMPLATE(BuildObject, CCNewChromaCorrectCoef)->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(BuildObject, CCNewBrightCorrectCoef)->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(BuildObject, CVirtualGreenBrightCorrectCoef)->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(BuildObject, CVirtualGreenChromaCorrectCoef)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace trevolt

int main(int argc, char** argv) {
    return trevolt::RunWithRatios(argc, argv,
                                  {{".9fcoef to its bare sum", "Rotate/0", "Bare/0"},
                                   {".9bcoef to its bare sum", "Rotate/1", "Bare/1"},
                                   {".9wcoef to its bare sum", "Rotate/2", "Bare/2"},
                                   {".3wcoef to its bare sum", "Rotate/3", "Bare/3"},
                                   {".3fcoef to its bare sum", "Rotate/4", "Bare/4"},
                                   {".3bcoef to its bare sum", "Rotate/5", "Bare/5"},
                                   {".cccoef to its bare sum", "Rotate/6", "Bare/6"},
                                   {".4wcoef to its bare sum", "Rotate/7", "Bare/7"},
                                   {".12wcoef to its bare sum", "Rotate/8", "Bare/8"}});
}
