// LZ4 frames as LZ4 itself makes and reads them, whatever their form.
#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <random>

#include <lz4frame.h>

#include "tests/support/TestFiles.h"

namespace trevolt::test {

/// `size` bytes that LZ4 finds no match in.
inline Bytes Noise(std::size_t size, unsigned seed = 1) {
    std::mt19937_64 random(seed);
    Bytes bytes(size + 8);
    for (std::size_t i = 0; i < size; i += 8) {
        const std::uint64_t number = random();
        std::memcpy(&bytes[i], &number, 8);
    }
    bytes.resize(size);
    return bytes;
}

/// `size` bytes of stretches of noise, each followed by as much of what LZ4 shrinks.
inline Bytes MixedBytes(std::size_t size, std::size_t stretch) {
    Bytes bytes = Noise(size);
    for (std::size_t at = stretch; at < size; at += 2 * stretch)
        for (std::size_t i = at; i < std::min(at + stretch, size); ++i)
            bytes[i] = static_cast<std::byte>(i / 100);
    return bytes;
}

struct SFrameForm {
    LZ4F_blockSizeID_t largestBlock = LZ4F_max4MB;
    LZ4F_blockMode_t mode = LZ4F_blockIndependent;
    bool hasBlockChecksums = false;
    bool hasContentChecksum = true;
    bool hasSize = true;
    std::size_t blockBytes = std::size_t{4} << 20; ///< of the content, at most
};

/// The content as a frame.
inline Bytes FrameOf(const Bytes& content, const SFrameForm& form) {
    LZ4F_preferences_t preferences{};
    preferences.frameInfo.blockSizeID = form.largestBlock;
    preferences.frameInfo.blockMode = form.mode;
    preferences.frameInfo.blockChecksumFlag =
        form.hasBlockChecksums ? LZ4F_blockChecksumEnabled : LZ4F_noBlockChecksum;
    preferences.frameInfo.contentChecksumFlag =
        form.hasContentChecksum ? LZ4F_contentChecksumEnabled : LZ4F_noContentChecksum;
    preferences.frameInfo.contentSize = form.hasSize ? content.size() : 0;
    preferences.autoFlush = 1;
    LZ4F_cctx* context = nullptr;
    EXPECT_EQ(LZ4F_createCompressionContext(&context, LZ4F_VERSION), 0U);
    const std::size_t room = LZ4F_compressBound(form.blockBytes, &preferences) + 64;
    Bytes frame;
    const auto put = [&](auto make) {
        const std::size_t before = frame.size();
        frame.resize(before + room);
        const std::size_t made = make(&frame[before]);
        EXPECT_EQ(LZ4F_isError(made), 0U);
        frame.resize(before + made);
    };
    put([&](void* to) { return LZ4F_compressBegin(context, to, room, &preferences); });
    for (std::size_t at = 0; at < content.size(); at += form.blockBytes)
        put([&](void* to) {
            return LZ4F_compressUpdate(context, to, room, &content[at],
                                       std::min(form.blockBytes, content.size() - at), nullptr);
        });
    put([&](void* to) { return LZ4F_compressEnd(context, to, room, nullptr); });
    LZ4F_freeCompressionContext(context);
    return frame;
}

/// What LZ4 makes of bytes that should be one frame of at most `most` bytes; nothing when they are
/// not.
inline std::optional<Bytes> ContentOfFrame(const Bytes& frame, std::size_t most) {
    LZ4F_dctx* created = nullptr;
    EXPECT_EQ(LZ4F_createDecompressionContext(&created, LZ4F_VERSION), 0U);
    const std::unique_ptr<LZ4F_dctx, LZ4F_errorCode_t (*)(LZ4F_dctx*)> context(
        created, LZ4F_freeDecompressionContext);
    Bytes content(most + 1);
    std::size_t made = content.size();
    std::size_t taken = frame.size();
    const std::size_t hint =
        LZ4F_decompress(context.get(), content.data(), &made, frame.data(), &taken, nullptr);
    if (hint != 0 || taken != frame.size() || made > most)
        return std::nullopt;
    content.resize(made);
    return content;
}

} // namespace trevolt::test
