// How far the main job is from the least that it could cost, on a 3840 × 2160 screen: a turn beside
// a memcpy of the same bytes into equally fresh memory; read, turn and write of a .9fcoef beside
// LZ4's own decompression and compression of the same body. The ratios of one run, in processor time,
// stand at the end.
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <lz4frame.h>

#include "bench/MeasuredPixel.h"
#include "bench/RatioReporter.h"
#include "trevolt/BinaryCoefFile.h"
#include "trevolt/CoefRotation.h"
#include "trevolt/MemoryBudget.h"

namespace trevolt {
namespace {

constexpr std::int32_t kMapWidth = 3840;
constexpr std::int32_t kMapHeight = 2160;
constexpr std::size_t kPixels = std::size_t{kMapWidth} * kMapHeight;
constexpr std::size_t kStoredBytes = 36;
constexpr int kTurnRepetitions = 5; // of each, of which the shortest counts

const CChromaCorrectCoef& Screen() {
    static const CChromaCorrectCoef map = MeasuredMap(kMapWidth, kMapHeight, 0);
    return map;
}

/// A folder for the files, removed when the program ends.
class CBenchFolder {
  public:
    CBenchFolder() : m_path(std::filesystem::temp_directory_path() / "trevolt-bench") {
        std::filesystem::create_directories(m_path);
    }
    ~CBenchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    CBenchFolder(const CBenchFolder&) = delete;
    CBenchFolder& operator=(const CBenchFolder&) = delete;
    std::wstring File(const char* name) const { return (m_path / name).wstring(); }

  private:
    std::filesystem::path m_path;
};

/// The screen as a file, and the raw elements of its body.
struct ScreenFile {
    CBenchFolder folder;
    std::wstring path = folder.File("screen.9fcoef");
    std::vector<char> raw = std::vector<char>(kPixels * kStoredBytes);

    ScreenFile() {
        const CMassiveGrid& grid = Screen().ColourGrid();
        for (std::uint32_t i = 0; i < kPixels; ++i)
            std::memcpy(&raw[i * kStoredBytes], grid.Element(i), kStoredBytes);
        if (Failed(Write9fCoefFile(Screen(), path.c_str(), nullptr)))
            throw std::runtime_error("the screen file cannot be written");
    }
};

const ScreenFile& File() {
    static const ScreenFile file;
    return file;
}

/// The least that a turn could cost: both grids' memory, fresh, and the colour grid's bytes copied.
void CopyIntoFreshMemory(benchmark::State& state) {
    const CMassiveGrid& from = Screen().ColourGrid();
    for ([[maybe_unused]] auto _ : state) {
        CChromaCorrectCoef target;
        target.ResizeForOverwrite(kMapWidth, kMapHeight);
        for (std::size_t i = 0; i < from.BlockCount(); ++i)
            std::memcpy(target.ColourGrid().Block(i), from.Block(i), from.BlockSize(i));
        benchmark::ClobberMemory();
    }
}

void Turn(benchmark::State& state) {
    const auto code = static_cast<std::uint32_t>(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        CChromaCorrectCoef target;
        TurnMap(Screen(), kMapWidth, kMapHeight, code, target);
        benchmark::ClobberMemory();
    }
}

/// What LZ4 alone takes for the same body, in memory: out of a frame and into one.
void Lz4BothWays(benchmark::State& state) {
    const std::vector<char>& raw = File().raw;
    LZ4F_preferences_t preferences{};
    preferences.frameInfo.blockSizeID = LZ4F_max4MB;
    preferences.frameInfo.blockMode = LZ4F_blockIndependent;
    preferences.frameInfo.contentChecksumFlag = LZ4F_contentChecksumEnabled;
    std::vector<char> packed(LZ4F_compressFrameBound(raw.size(), &preferences));
    packed.resize(
        LZ4F_compressFrame(packed.data(), packed.size(), raw.data(), raw.size(), &preferences));
    for ([[maybe_unused]] auto _ : state) {
        const auto unpacked = std::make_unique_for_overwrite<char[]>(raw.size());
        LZ4F_dctx* context = nullptr;
        LZ4F_createDecompressionContext(&context, LZ4F_VERSION);
        std::size_t made = raw.size();
        std::size_t taken = packed.size();
        LZ4F_decompress(context, unpacked.get(), &made, packed.data(), &taken, nullptr);
        LZ4F_freeDecompressionContext(context);
        const std::size_t bound = LZ4F_compressFrameBound(made, &preferences);
        const auto again = std::make_unique_for_overwrite<char[]>(bound);
        benchmark::DoNotOptimize(
            LZ4F_compressFrame(again.get(), bound, unpacked.get(), made, &preferences));
    }
}

void ReadTurnWrite(benchmark::State& state) {
    const ScreenFile& file = File();
    const std::wstring output = file.folder.File("turned.9fcoef");
    for ([[maybe_unused]] auto _ : state) {
        CChromaCorrectCoef source;
        CChromaCorrectCoef target;
        source.Resize(kMapWidth, kMapHeight);
        const Status read = Read9fCoefFile(source, file.path.c_str());
        TurnMap(source, kMapWidth, kMapHeight, 1, target);
        source.Reset();
        const Status written = Write9fCoefFile(target, output.c_str(), nullptr);
        if (Failed(read) || Failed(written))
            state.SkipWithError("the file was not turned");
    }
}

BENCHMARK(CopyIntoFreshMemory)->Unit(benchmark::kMillisecond)->Repetitions(kTurnRepetitions);
BENCHMARK(Turn)
    ->Arg(1)
    ->Arg(2)
    ->Arg(3)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(kTurnRepetitions);
BENCHMARK(Lz4BothWays)->Unit(benchmark::kMillisecond)->Repetitions(kTurnRepetitions);
BENCHMARK(ReadTurnWrite)->Unit(benchmark::kMillisecond)->Repetitions(kTurnRepetitions);

} // namespace
} // namespace trevolt

int main(int argc, char** argv) {
    return trevolt::RunWithRatios(
        argc, argv,
        {{"turn by 90 to copy", "Turn/1", "CopyIntoFreshMemory"},
         {"turn by 180 to copy", "Turn/2", "CopyIntoFreshMemory"},
         {"turn by 270 to copy", "Turn/3", "CopyIntoFreshMemory"},
         {"read, turn and write to LZ4 both ways", "ReadTurnWrite", "Lz4BothWays"}});
}
