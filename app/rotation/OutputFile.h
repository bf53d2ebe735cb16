// One output of a command, by the way of all outputs: written under a name that no kind matches, brought
// to the disk, and only then given its own.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "app/rotation/OutputFolder.h"
#include "trevolt/ChromaCorrectCoef.h"

namespace trevolt {

/// Writes the file at `path`; what went wrong, in plain words, or nothing.
using OutputWriter = std::function<std::string(const std::wstring& path)>;

/// Why an output was not written where something stands already, to be told behind its name. Behind its
/// source's name `DescribeExistingOutput` tells it.
inline constexpr const char* kExistingOutput =
    "exists already: overwrite it, or choose another target";

/// Writes the output `name` of a folder that was made. What went wrong, in plain words, which are `taken`
/// where something came to stand there meanwhile; nothing when the output has its name, which
/// `COutputFolder::SyncNames` brings to the disk.
std::string WriteOutput(COutputFolder& target, const std::wstring& name, bool replaces,
                        const OutputWriter& write, const std::string& taken = kExistingOutput);

struct SOutputFile {
    std::wstring path;
    bool replaces = false; ///< a file that stands there; else it is an obstacle
    bool sync = true;      ///< what is told as written has reached the disk
};

/// Why what stands at `path` is never replaced, to be told with the `name` of the output that was to
/// stand there; nothing where it is a file or a link, or nothing stands.
std::string DescribeIrreplaceable(const std::wstring& path, const std::string& name);

/// Why no file can come to stand at a path, whatever may be replaced there, to be told behind its name, as
/// far as that is seen without writing: its folder is missing or takes no file, what stands there is
/// none, or the system does not take the name. Else nothing.
std::string DescribePlaceObstacle(const std::wstring& path);

/// The same of a path whose folder is yet to be made.
std::string DescribeNameObstacle(const std::wstring& path);

/// The same of a folder that takes no file, by the `errno` value of the reason.
std::string DescribeRefusingFolder(const std::wstring& path, int error);

/// Whether anything has the name, were it a link that leads nowhere.
bool IsNameTaken(const std::wstring& path);

/// Why the output could not be written, to be told behind its name, as far as that is seen before
/// anything is done: nothing can come to stand there, something does that is not to be replaced, or it
/// is one of `inputs` by any name. Else nothing.
std::string DescribeOutputObstacle(const SOutputFile& output,
                                   const std::vector<std::wstring>& inputs);

/// Writes an output of its own. What went wrong, in plain words, with `taken` as above; nothing when it
/// stands.
std::string WriteOutputFile(const SOutputFile& output, const OutputWriter& write,
                            const std::string& taken = kExistingOutput);

/// Writes a map as the kind that the output's name tells. What went wrong, in plain words.
std::string SaveCoefFile(const CChromaCorrectCoef& map, const SOutputFile& output);

} // namespace trevolt
