// Turns one coefficient file of any kind, as trevolt-cli does it with a folder of them.
//
//   TurnFile FILE 90|180|270
//
// The turned file is written into the current folder, in its own kind, under a name that says the
// angle. Arguments are taken for UTF-8; a program for Windows alone has them wide from wmain.
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include <trevolt/ChromaCorrectCoef.h>
#include <trevolt/CoefRotation.h>
#include <trevolt/FileKinds.h>
#include <trevolt/StatusCodes.h>
#include <trevolt/TransferProblems.h>
#include <trevolt/TransferReport.h>
#include <trevolt/Utf8.h>

namespace {

/// Gives the map the file's size and its pixels. What went wrong is printed.
bool LoadMap(const trevolt::SFileKind& kind, const std::wstring& path,
             trevolt::CChromaCorrectCoef& map) {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    if (const trevolt::Status status = kind.readSize(path.c_str(), width, height);
        trevolt::Failed(status)) {
        std::cerr << "its size cannot be read: " << trevolt::DescribeStatus(status) << '\n';
        return false;
    }
    if (width > trevolt::kLargestMapSide || height > trevolt::kLargestMapSide) {
        std::cerr << width << " x " << height << " pixels are too many\n";
        return false;
    }
    map.Resize(static_cast<std::int32_t>(width), static_cast<std::int32_t>(height));

    // The status does not tell of a damaged chunk, or of memory that was refused: the report does.
    const trevolt::CTransferReport report;
    const trevolt::Status status = kind.load(map, path.c_str());
    const auto problems = trevolt::DescribeReadProblems(status, report);
    for (const std::string& problem : problems)
        std::cerr << "the file " << problem << '\n';
    return problems.empty();
}

bool SaveMap(const trevolt::SFileKind& kind, const std::wstring& path,
             const trevolt::CChromaCorrectCoef& map) {
    const trevolt::CTransferReport report;
    const std::string problem = trevolt::DescribeWriteProblem(kind.save(map, path.c_str()), report);
    if (!problem.empty())
        std::cerr << "the turned file " << problem << '\n';
    return problem.empty();
}

bool TurnFile(const std::wstring& path, const trevolt::SAngle& angle) {
    const std::wstring name = path.substr(path.find_last_of(L"/\\") + 1);
    const trevolt::SFileKind* loadKind = trevolt::FindLoadKind(name);
    const trevolt::SFileKind* exportKind = trevolt::FindExportKind(name);
    if (loadKind == nullptr || exportKind == nullptr) {
        std::cerr << "its name tells no kind of coefficient file\n";
        return false;
    }
    trevolt::CChromaCorrectCoef map;
    if (!LoadMap(*loadKind, path, map))
        return false;
    trevolt::CChromaCorrectCoef turned;
    trevolt::TurnMap(map, map.Width(), map.Height(), angle.code, turned);
    if (!turned.HasStorage()) {
        std::cerr << "there is not enough memory to turn it\n";
        return false;
    }
    const std::wstring output = trevolt::ExportName(name, angle.text);
    if (!SaveMap(*exportKind, output, turned))
        return false;
    std::cout << trevolt::WideToShownUtf8(output) << ": " << turned.Width() << " x "
              << turned.Height() << " pixels\n";
    return true;
}

/// An angle's code is its number of quarter turns clockwise.
const trevolt::SAngle* FindAngle(std::string_view degrees) {
    for (const trevolt::SAngle& angle : trevolt::kAngles)
        if (std::to_string(angle.code * 90) == degrees)
            return &angle;
    return nullptr;
}

} // namespace

int main(int argc, char** argv) {
    const auto path = argc == 3 ? trevolt::Utf8ToWide(argv[1]) : std::nullopt;
    const trevolt::SAngle* angle = argc == 3 ? FindAngle(argv[2]) : nullptr;
    if (!path || angle == nullptr) {
        std::cerr << "usage: TurnFile FILE 90|180|270\n";
        return EXIT_FAILURE;
    }
    return TurnFile(*path, *angle) ? EXIT_SUCCESS : EXIT_FAILURE;
}
