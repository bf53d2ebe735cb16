// The one table of coefficient file kinds: how a file's kind is told from its name, and what reads,
// writes and sizes it. Two search orders exist, one for loading and one for exporting; a name that
// holds several extensions may therefore be read as one kind and written as another. The command
// line asks with a file's name alone. So does the dialog for an export, but what it loads it tells by
// the whole path, in which a folder's name counts too.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

struct SFileKind {
    /// Lower case, with its dot.
    std::wstring_view extension;
    /// Place in the export's search; the table itself stands in the load's order.
    int exportOrder;
    /// Reads a file into a map that has its size; a negative status is failure.
    Status (*load)(CChromaCorrectCoef& map, const wchar_t* path);
    /// Writes a map as a file of the kind; a negative status is failure.
    Status (*save)(const CChromaCorrectCoef& map, const wchar_t* path);
    /// A file's size in pixels; a negative status is failure.
    Status (*readSize)(const wchar_t* path, std::uint32_t& width, std::uint32_t& height);
    /// What a file holds and a map cannot, in plain words; null where a map holds everything.
    std::vector<std::string> (*describeLosses)(const wchar_t* path);

    // The same of a stream in binary mode that can be sought and stands at the file's first byte; it
    // stays the caller's, and afterwards stands anywhere.
    Status (*loadStream)(CChromaCorrectCoef& map, std::istream& stream);
    Status (*readStreamSize)(std::istream& stream, std::uint32_t& width, std::uint32_t& height);
    std::vector<std::string> (*describeStreamLosses)(std::istream& stream);
};

/// All nine kinds, in the load's order.
std::span<const SFileKind> FileKinds();

/// The first kind in the load's order whose extension occurs anywhere in a name or path, A to Z and
/// a to z being the same; null when none does.
const SFileKind* FindLoadKind(std::wstring_view name);

/// The same in the export's order.
const SFileKind* FindExportKind(std::wstring_view name);

/// `name` with "-" and `angle` put before its first dot: Cab_01.9fcoef becomes Cab_01-90°.9fcoef.
/// A name without a dot gets them at its end.
std::wstring ExportName(std::wstring_view name, std::wstring_view angle);

} // namespace trevolt
