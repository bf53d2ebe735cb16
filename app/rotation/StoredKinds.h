// Which files are turned in the elements that they store, and how those are loaded.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <string_view>

#include "common/PixelSink.h"
#include "common/StoredCoef.h"
#include "trevolt/FileKinds.h"
#include "trevolt/StatusCodes.h"
#include "trevolt/WordElements.h"

namespace trevolt {

/// The part of a kind's row that other programs have no use for.
struct SStoredKind {
    /// Bytes that a pixel takes in memory; 0 for a kind that stores no elements.
    std::uint32_t elementBytes;
    /// Whether files of the kind may begin so; null for a kind that no first bytes tell.
    bool (*opensWith)(const std::array<std::uint8_t, 16>& bytes);
    /// The answer of the kind's writer when the file to write does not open.
    Status openFailed;
    /// Loads the file at whose first byte the stream stands, on up to `threads` threads, and the extras
    /// that are to be kept. The function is null for a kind that stores no elements.
    SStoredLoad (*load)(std::istream& stream, std::size_t threads, const SExtrasOfTurn& extras);
    /// Hands the pixels of such a file to a sink and holds no more than a few pieces of it; answers as
    /// the load. Null for a kind whose files must be held: of one that stores no elements, since its
    /// pixels come in any order, and of word files, since one chunk may lie over another and the digest
    /// of their store takes them in another order than they stand in.
    Status (*readPixels)(std::istream& stream, std::size_t threads, CPixelSink& sink);
};

/// The kind by which a file of this name can be turned in its own elements: one that stores elements
/// and is read and written by the same kind. Null for every other name, also for one that ends in
/// "9wPCoef": its writer decides by that what the file holds besides.
const SStoredKind* FindStoredKind(std::wstring_view name);

/// The kind's own, also one that stores no elements.
const SStoredKind& StoredKindOf(const SFileKind& kind);

/// The word kind that a row of the table stands for; nothing for other kinds.
std::optional<EWordKind> FindWordKind(const SFileKind& kind);

} // namespace trevolt
