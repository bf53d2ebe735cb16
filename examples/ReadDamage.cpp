// Reads a file that may be damaged, and tells what was lost.
//
//   ReadDamage FILE
//
// The status of the call alone does not: a word file is read chunk by chunk, and its reader goes on
// behind a damaged one. A transfer report that lives while the call runs collects what happened.
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>

#include <trevolt/ChromaCorrectCoef.h>
#include <trevolt/FileKinds.h>
#include <trevolt/StatusCodes.h>
#include <trevolt/TransferProblems.h>
#include <trevolt/TransferReport.h>
#include <trevolt/Utf8.h>

namespace {

/// A map of the file's size; one without pixels when the file does not tell its size.
trevolt::CChromaCorrectCoef MapFor(const trevolt::SFileKind& kind, const wchar_t* path) {
    trevolt::CChromaCorrectCoef map;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    const trevolt::Status status = kind.readSize(path, width, height);
    if (!trevolt::Failed(status) && width <= trevolt::kLargestMapSide &&
        height <= trevolt::kLargestMapSide)
        map.Resize(static_cast<std::int32_t>(width), static_cast<std::int32_t>(height));
    return map;
}

void PrintWhatIsLost(const trevolt::SFileKind& kind, const wchar_t* path) {
    trevolt::CChromaCorrectCoef map = MapFor(kind, path);

    const trevolt::CTransferReport report;
    const trevolt::Status status = kind.load(map, path);

    std::cout << "size: " << map.Width() << " x " << map.Height() << " pixels\n"
              << "status: " << trevolt::DescribeStatus(status) << '\n'
              << "chunks that could not be read: " << report.FailedChunks() << '\n'
              << "pixels that no chunk holds: " << report.MissingPixels() << '\n';
    const auto problems = trevolt::DescribeReadProblems(status, report);
    for (const std::string& problem : problems)
        std::cout << "the file " << problem << '\n';
    if (problems.empty())
        std::cout << "the file is whole\n";
}

} // namespace

int main(int argc, char** argv) {
    const auto path = argc == 2 ? trevolt::Utf8ToWide(argv[1]) : std::nullopt;
    const trevolt::SFileKind* kind = path ? trevolt::FindLoadKind(*path) : nullptr;
    if (kind == nullptr) {
        std::cerr << "usage: ReadDamage FILE\n";
        return EXIT_FAILURE;
    }
    PrintWhatIsLost(*kind, path->c_str());
    return EXIT_SUCCESS;
}
