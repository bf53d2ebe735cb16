// What is to be told of a coefficient file without turning it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/inspection/CoefStatistics.h"
#include "trevolt/FileKinds.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt {

struct SOwnerFacts {
    std::array<std::uint8_t, 16> name{};
    std::uint8_t flag = 0;
};

/// By the header of a word file, and the digest by its pixels.
struct SWordFileFacts {
    std::uint32_t originX = 0;
    std::uint32_t originY = 0;
    std::uint32_t chunks = 0; ///< records of its directory, that for extra words apart
    bool hasExtraWords = false;
    std::optional<SOwnerFacts> owner; ///< nothing where all its bytes are 0
    /// That a coefficient object tells of its store, which has loaded the file; nothing when none can,
    /// and where the system computes none, which a note tells.
    std::optional<std::wstring> storeDigest;
};

struct SFileFacts {
    const SFileKind* kind = nullptr; ///< by the name; null when that tells none
    /// By the first bytes; null for text, and for what no kind's files begin with.
    const SFileKind* content = nullptr;
    std::optional<std::uint32_t> version; ///< of a file with a `content`
    std::optional<std::uint64_t> storedBytes;
    std::optional<std::uint64_t> rawBytes; ///< of its pixels in memory; text has no such form
    PixelSize size;                        ///< that the file tells, 0 × 0 when it tells none
    /// Pixels that its chunks hold, chunks that could not be read among them; of a binary file, and of
    /// one that could not be read as a whole, all or none. Nothing for text, which leaves out pixels
    /// on purpose.
    std::optional<std::uint64_t> covered;
    std::optional<SWordFileFacts> words; ///< of a word file
    std::optional<SCoefStatistics>
        statistics;                    ///< of what could be read; nothing when that has no pixel
    std::vector<std::string> problems; ///< what is damaged or went wrong, in plain words
    std::vector<std::string> notes;    ///< what is unusual and no problem
};

/// Opens the file once and reads it whole; its work is shared among `threads` threads at most. The pixels
/// of a binary file are looked at as they come, those of others when they are all there. Memory
/// refused for them is a problem. Throws std::bad_alloc.
SFileFacts FindFileFacts(const std::wstring& path, std::size_t threads);

} // namespace trevolt
