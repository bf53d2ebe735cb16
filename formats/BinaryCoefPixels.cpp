#include "formats/BinaryCoefPixels.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "common/FrameReader.h"
#include "formats/BinaryCoefBody.h"

namespace trevolt {
namespace {

/// Cuts a body into runs of pixels. A run that a piece of the body ends in waits for the next piece.
template <class Kind>
class CPixelRuns final : public CContentSink {
  public:
    CPixelRuns(std::uint32_t width, std::uint32_t height, CPixelSink& sink)
        : m_sink(sink), m_width(width), m_pixels(std::uint64_t{width} * height), m_left(m_pixels) {
        sink.TakeSize({width, height});
    }

    void Take(const std::byte* bytes, std::size_t count) noexcept override {
        m_taken += count;
        while (count > 0 && m_left > 0) {
            const std::size_t wanted = NextRun() * Kind::kStoredBytes;
            const std::size_t part = std::min(count, wanted - m_waiting);
            if (part == wanted) {
                Hand(bytes);
            } else {
                std::memcpy(m_run.data() + m_waiting, bytes, part);
                m_waiting += part;
                if (m_waiting == wanted)
                    Hand(m_run.data());
            }
            bytes += part;
            count -= part;
        }
    }

    /// Whether the body was that of a picture of the size.
    bool IsWhole() const { return m_taken == m_pixels * Kind::kStoredBytes; }

  private:
    std::uint32_t NextRun() const { return std::min(kPixelRun, m_width - m_column); }

    void Hand(const std::byte* run) {
        const std::uint32_t count = NextRun();
        for (std::uint32_t i = 0; i < count; ++i)
            Kind::LoadBytes(run + i * Kind::kStoredBytes, m_elements[i]);
        m_sink.TakeRun(m_elements.data(), count);
        m_waiting = 0;
        m_left -= count;
        m_column = m_column + count == m_width ? 0 : m_column + count;
    }

    CPixelSink& m_sink;
    const std::uint32_t m_width;
    const std::uint64_t m_pixels;
    std::uint64_t m_left;       ///< pixels that were not handed over
    std::uint32_t m_column = 0; ///< of the next run
    std::uint64_t m_taken = 0;  ///< bytes
    std::size_t m_waiting = 0;  ///< bytes of the next run
    std::array<std::byte, kPixelRun * Kind::kStoredBytes> m_run;
    std::array<SMatrixCoef, kPixelRun> m_elements; ///< what a kind does not set stays the default's
};

} // namespace

template <class Kind>
Status ReadBinaryCoefPixels(std::istream& stream, std::size_t threads, CPixelSink& sink) {
    return CFileSource(stream).Take([&](std::istream& file) {
        SStoredBody stored;
        if (const Status status = FindCoefBody(file, Kind::kMagic, stored); Failed(status))
            return status;
        CPixelRuns<Kind> runs(stored.width, stored.height, sink);
        if (const Status status = ReadFrame(file, stored.bytes, threads, runs); Failed(status))
            return status;
        return runs.IsWhole() ? S_OK : E_FAIL;
    });
}

#define TREVOLT_READ_PIXELS(Kind)                                                                  \
    template Status ReadBinaryCoefPixels<Kind>(std::istream&, std::size_t, CPixelSink&);
TREVOLT_EACH_BINARY_COEF_KIND(TREVOLT_READ_PIXELS)
#undef TREVOLT_READ_PIXELS

} // namespace trevolt
