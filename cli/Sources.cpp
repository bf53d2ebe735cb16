#include "cli/Sources.h"

#include <algorithm>
#include <thread>

#include <fmt/format.h>

#include "cli/OptionGroup.h"
#include "cli/OptionValues.h"
#include "cli/Wildcards.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

std::string NamesOf(const std::vector<std::wstring>& sources) {
    std::vector<std::string> names;
    names.reserve(sources.size());
    for (const std::wstring& source : sources)
        names.push_back(WideToShownUtf8(source));
    return fmt::format("{}", fmt::join(names, ", "));
}

} // namespace

std::vector<std::wstring> ParseSources(const std::string& place,
                                       const std::vector<std::string>& words) {
    std::vector<std::wstring> paths;
    for (const std::string& word : words) {
        const std::wstring path = ParseFor(place, "a file or folder", word, ParsePath);
        const auto found =
            kProgramsExpandWildcards ? ExpandWildcards(path) : std::vector<std::wstring>{path};
        if (found.empty())
            throw CUsageError(place,
                              fmt::format("{} stands for no file or folder: check it", word));
        paths.insert(paths.end(), found.begin(), found.end());
    }
    return paths;
}

SCommandFiles FindCommandFiles(const std::vector<std::wstring>& sources, bool recursive) {
    SCoefFiles found = FindCoefFiles({sources, recursive, {}});
    if (found.obstacles.empty() && found.files.empty() && found.unnamable.empty())
        found.obstacles.push_back(fmt::format(
            "there is no coefficient file in {}: give a folder that holds some", NamesOf(sources)));
    if (!found.obstacles.empty())
        return {{},
                {},
                std::move(found.obstacles),
                found.isListingBroken ? ERotationEnd::SomeFailed : ERotationEnd::NothingToDo};
    const auto end = found.unnamable.empty() ? ERotationEnd::AllDone : ERotationEnd::SomeFailed;
    return {std::move(found.files), std::move(found.unnamable), {}, end};
}

std::size_t DefaultThreads() {
    return std::max<std::size_t>(std::thread::hardware_concurrency(), 1);
}

} // namespace trevolt
