// Makes the word file of a cabinet pixel by pixel, and reads it back.
//
// A coefficient object holds the correction words of a cabinet, 65535 for 1.0. It is made by kind;
// its operations are told one by one in trevolt/ColorCorrectCoef.h.
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <utility>

#include <trevolt/CoefObjects.h>
#include <trevolt/ColorCorrectCoef.h>
#include <trevolt/PixelRect.h>
#include <trevolt/StatusCodes.h>
#include <trevolt/TransferProblems.h>
#include <trevolt/TransferReport.h>
#include <trevolt/WordElements.h>

namespace {

constexpr const wchar_t* kPath = L"Cabinet.3wcoef";
constexpr std::uint16_t kWidth = 320;
constexpr std::uint16_t kHeight = 180;

/// Red, green and blue gain of a cabinet that is too bright at its right and lower edges.
trevolt::S3WordCoef GainsAt(std::uint32_t x, std::uint32_t y) {
    const auto gain = static_cast<std::uint16_t>(65535 - 40 * x - 30 * y);
    return {{gain, gain, static_cast<std::uint16_t>(gain - 1000)}};
}

bool WriteCabinet() {
    const std::unique_ptr<trevolt::CColorCorrectCoef> cabinet =
        trevolt::CreateCoefObject(trevolt::EWordKind::Brightness);
    if (trevolt::Failed(cabinet->Create(kWidth, kHeight)))
        return false;
    for (std::uint32_t y = 0; y < kHeight; ++y)
        for (std::uint32_t x = 0; x < kWidth; ++x)
            if (trevolt::Failed(cabinet->SetPixel3Word(x, y, GainsAt(x, y))))
                return false;

    // The status does not tell that the disk was full: the report does.
    const trevolt::CTransferReport report;
    const trevolt::Status status =
        cabinet->ExportCoef(kPath, {0, 0, kWidth, kHeight}, nullptr, nullptr);
    const std::string problem = trevolt::DescribeWriteProblem(status, report);
    if (!problem.empty())
        std::cerr << "the cabinet " << problem << '\n';
    return problem.empty();
}

/// A load never sizes the object: its caller asks the file for its size and creates the store.
std::unique_ptr<trevolt::CColorCorrectCoef> ReadCabinet() {
    auto cabinet = trevolt::CreateCoefObject(trevolt::EWordKind::Brightness);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    if (trevolt::Failed(cabinet->GetBrightCoefSize(kPath, width, height)) || width > UINT16_MAX ||
        height > UINT16_MAX)
        return nullptr;
    if (trevolt::Failed(
            cabinet->Create(static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height))))
        return nullptr;
    const trevolt::CTransferReport report;
    const trevolt::Status status = cabinet->LoadCoef(kPath);
    return trevolt::DescribeReadProblems(status, report).empty() ? std::move(cabinet) : nullptr;
}

std::uint32_t CountOtherPixels(const trevolt::CColorCorrectCoef& cabinet) {
    std::uint32_t count = 0;
    for (std::uint32_t y = 0; y < cabinet.GetHeight(); ++y)
        for (std::uint32_t x = 0; x < cabinet.GetWidth(); ++x)
            count += cabinet.GetPixel3Word(x, y).w == GainsAt(x, y).w ? 0U : 1U;
    return count;
}

} // namespace

int main() {
    if (!WriteCabinet())
        return EXIT_FAILURE;
    const std::unique_ptr<trevolt::CColorCorrectCoef> cabinet = ReadCabinet();
    if (cabinet == nullptr) {
        std::cerr << "the cabinet cannot be read back\n";
        return EXIT_FAILURE;
    }
    const trevolt::S3WordCoef corner = cabinet->GetPixel3Word(kWidth - 1, kHeight - 1);
    std::cout << cabinet->GetWidth() << " x " << cabinet->GetHeight() << " pixels in "
              << cabinet->GetBlockListSize() << " blocks\n"
              << "lower right corner: " << corner.w[0] << ' ' << corner.w[1] << ' ' << corner.w[2]
              << '\n'
              << "pixels that came back as others: " << CountOtherPixels(*cabinet) << '\n';
    return EXIT_SUCCESS;
}
