// Composes the map of a screen from the files of its cabinets, and writes it as one file.
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

#include <trevolt/BinaryCoefFile.h>
#include <trevolt/ChromaCorrectCoef.h>
#include <trevolt/PixelRect.h>
#include <trevolt/PlacedCoefFile.h>
#include <trevolt/StatusCodes.h>
#include <trevolt/TransferProblems.h>
#include <trevolt/TransferReport.h>

namespace {

constexpr std::int32_t kCabinetWidth = 32;
constexpr std::int32_t kCabinetHeight = 18;
constexpr std::int32_t kColumns = 3;
constexpr std::int32_t kRows = 2;

std::wstring CabinetPath(std::int32_t column, std::int32_t row) {
    return L"Cab_" + std::to_wstring(row) + std::to_wstring(column) + L".9fcoef";
}

/// What a calibration run would have left: here every cabinet has one red gain of its own.
float RedGain(std::int32_t column, std::int32_t row) {
    return 1.0F - 0.125F * static_cast<float>(row * kColumns + column);
}

bool Check(trevolt::Status status, const trevolt::CTransferReport& report) {
    const std::string problem = trevolt::DescribeWriteProblem(status, report);
    if (!problem.empty())
        std::cerr << "the file " << problem << '\n';
    return problem.empty();
}

bool WriteCabinet(std::int32_t column, std::int32_t row) {
    trevolt::CChromaCorrectCoef cabinet;
    cabinet.Resize(kCabinetWidth, kCabinetHeight);
    trevolt::SMatrixCoef pixel;
    pixel.m[0] = RedGain(column, row);
    for (std::int32_t y = 0; y < kCabinetHeight; ++y)
        for (std::int32_t x = 0; x < kCabinetWidth; ++x)
            cabinet.SetElement(x, y, pixel);
    const trevolt::CTransferReport report;
    return Check(trevolt::Write9fCoefFile(cabinet, CabinetPath(column, row).c_str(), nullptr),
                 report);
}

/// Puts a cabinet's file at its place of the screen, no larger than the place is.
bool PlaceCabinet(trevolt::CChromaCorrectCoef& screen, std::int32_t column, std::int32_t row) {
    constexpr trevolt::MatrixEntryMask kWholeMatrix{true, true, true, true, true,
                                                    true, true, true, true};
    const std::int32_t left = column * kCabinetWidth;
    const std::int32_t top = row * kCabinetHeight;
    trevolt::SPixelRect place{left, top, left + kCabinetWidth, top + kCabinetHeight};
    const trevolt::Status status = trevolt::Place9fCoefFile(
        screen, CabinetPath(column, row).c_str(), place, true, kWholeMatrix);
    if (trevolt::Failed(status)) {
        std::cerr << "a cabinet cannot be placed: " << trevolt::DescribeStatus(status) << '\n';
        return false;
    }
    std::cout << "column " << column << ", row " << row << ": " << place.Width() << " x "
              << place.Height() << " pixels at (" << place.left << ", " << place.top << ")\n";
    return true;
}

bool WriteScreen(const trevolt::CChromaCorrectCoef& screen) {
    const trevolt::CTransferReport report;
    return Check(trevolt::Write9fCoefFile(screen, L"Screen.9fcoef", nullptr), report);
}

} // namespace

int main() {
    trevolt::CChromaCorrectCoef screen;
    screen.Resize(kColumns * kCabinetWidth, kRows * kCabinetHeight);
    if (!screen.HasStorage())
        return EXIT_FAILURE;
    for (std::int32_t row = 0; row < kRows; ++row)
        for (std::int32_t column = 0; column < kColumns; ++column)
            if (!WriteCabinet(column, row) || !PlaceCabinet(screen, column, row))
                return EXIT_FAILURE;
    if (!WriteScreen(screen))
        return EXIT_FAILURE;
    std::cout << "red gains along the screen's last line:";
    for (std::int32_t x = 0; x < screen.Width(); x += kCabinetWidth)
        std::cout << ' ' << screen.ElementOrDefault(x, screen.Height() - 1).m[0];
    std::cout << '\n';
    return EXIT_SUCCESS;
}
