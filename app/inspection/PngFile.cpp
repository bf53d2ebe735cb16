#include "app/inspection/PngFile.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

#include <stb/stb_image_write.h>

#include "app/inspection/StripedDeflate.h"
#include "platform/FileStream.h"
#include "platform/SystemError.h"

extern "C" void SetPictureRowPacker(std::uint8_t* (*packer)(std::uint8_t* rows, int count,
                                                            int* packedCount, int effort));

namespace trevolt {
namespace {

/// What the library hands over; it is C and bears no exception.
struct SHandedOver {
    std::vector<std::uint8_t> bytes;
    bool isWhole = true;
};

void TakeBytes(void* context, void* data, int size) noexcept {
    const auto* const first = static_cast<const std::uint8_t*>(data);
    auto& handed = *static_cast<SHandedOver*>(context);
    try {
        handed.bytes.insert(handed.bytes.end(), first, first + size);
    } catch (const std::bad_alloc&) {
        handed.isWhole = false;
    }
}

/// Of the picture that this thread writes: the library passes nothing on.
thread_local std::size_t t_jobs = 1;

std::uint8_t* PackRows(std::uint8_t* rows, int count, int* packedCount, int effort) noexcept {
    try {
        const std::vector<std::uint8_t> packed =
            DeflateInStripes({rows, static_cast<std::size_t>(count)}, effort, t_jobs);
        auto* const kept = static_cast<std::uint8_t*>(std::malloc(packed.size()));
        if (kept != nullptr)
            std::copy(packed.begin(), packed.end(), kept);
        *packedCount = static_cast<int>(packed.size());
        return kept;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

/// Quickest for few colours in flat areas and noise: no filter, and nearly the least effort. Settings of
/// the library's own, set once.
void SetUpLibrary() {
    [[maybe_unused]] static const bool isSetUp = [] {
        SetPictureRowPacker(PackRows);
        stbi_write_force_png_filter = 0;
        stbi_write_png_compression_level = 2;
        return true;
    }();
}

} // namespace

std::vector<std::uint8_t> PngBytes(const CPicture& picture, std::size_t jobs) {
    SetUpLibrary();
    t_jobs = jobs;
    SHandedOver handed;
    constexpr int kColours = 3;
    const int done =
        stbi_write_png_to_func(TakeBytes, &handed, picture.Width(), picture.Height(), kColours,
                               picture.Bytes().data(), kColours * picture.Width());
    if (done == 0 || !handed.isWhole)
        throw std::bad_alloc();
    return std::move(handed.bytes);
}

std::string WritePngFile(const CPicture& picture, const std::wstring& path, std::size_t jobs) {
    const std::vector<std::uint8_t> bytes = PngBytes(picture, jobs);
    COutputFile file;
    bool isWritten = file.Open(path.c_str(), std::ios::out | std::ios::trunc);
    if (isWritten) {
        file.write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        isWritten = file.Close();
    }
    if (isWritten)
        return {};
    return WithSystemReason("the picture could not be written", file.SystemError());
}

} // namespace trevolt
