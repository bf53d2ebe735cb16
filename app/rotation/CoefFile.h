// A coefficient file of any kind in a map, with what is to be told of it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/rotation/SourceFile.h"
#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/FileKinds.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt {

struct SCoefLoad {
    const SFileKind* kind = nullptr; ///< null when the name tells none
    PixelSize size;                  ///< that the file tells, 0 × 0 when it tells none
    /// Of that size, with what could be read on defaults; null when nothing could.
    std::unique_ptr<CChromaCorrectCoef> map;
    bool isRead = false;               ///< the map has pixels, and some of them are the file's
    std::vector<std::string> problems; ///< what is damaged or went wrong; none: the map is whole
    std::vector<std::string> notes;    ///< what is unusual and no problem
    std::vector<std::string> losses;   ///< what the file holds and a map cannot
};

/// The kind as which files of this name, without folders, are both read and written; null where the
/// name tells none, or two.
const SFileKind* FindOwnKind(std::wstring_view name);

/// Why there is no memory for as many pixels as an open file states: the file is damaged and does not hold
/// them, or they are too many. Takes no more memory than the file's bytes justify.
std::vector<std::string> DescribeLackOfMemory(CSourceFile& source, const SFileKind& kind,
                                              const PixelSize& size);

/// Why no output can have this path: its name tells no kind, or is read as another kind than it is
/// written. Else nothing.
std::string DescribeOutputName(const std::wstring& path);

/// Why there is no coefficient file at this path to be read: its name tells no kind, nothing stands
/// there, or something that is no file. Nothing is opened: a pipe would not come back. Else nothing.
std::string DescribeInputObstacle(const std::wstring& path);

/// The size that a file of a kind told by `readStreamSize`: that of text is signed.
PixelSize SizeToldBy(const SFileKind& kind, std::uint32_t width, std::uint32_t height);

/// What is wrong with a file that is read whole and has not one pixel.
inline constexpr const char* kNoPixels = "has no pixels";

/// Why no file of the kind that tells such a size is read into a map, in plain words; empty when one
/// can be.
std::string DescribeMapSize(const SFileKind& kind, const PixelSize& size);

/// That the size has more pixels than a map or a binary file's body, which are counted in signed 32-bit
/// numbers, without what has that size; empty when it has not.
std::string DescribePixelCount(const PixelSize& size);

/// Reads a file of the kind that its name tells into a map of the file's own size. What the file does not
/// hold of a pixel is the default element's, beside the matrix of `.9fcoef`, too. Throws std::bad_alloc;
/// memory refused for the map, or for reading into it, is a problem, and there is no map then.
SCoefLoad LoadCoefFile(const std::wstring& path);

/// The same of a kind that the name does not tell, as that of a file under work.
SCoefLoad LoadCoefFile(const std::wstring& path, const SFileKind& kind);

} // namespace trevolt
