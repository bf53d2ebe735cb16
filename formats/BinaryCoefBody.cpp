#include "formats/BinaryCoefBody.h"

#include <algorithm>
#include <array>
#include <limits>

#include "common/CheckedArithmetic.h"
#include "common/LittleEndian.h"

namespace trevolt {
namespace {

constexpr std::size_t kHeaderBytes = 24;
constexpr std::size_t kVersionOffset = 16;
constexpr std::size_t kWidthOffset = 20;
constexpr std::size_t kHeightOffset = 22;
constexpr std::uint32_t kVersion = 1;

using HeaderBytes = std::array<std::byte, kHeaderBytes>;

struct FileSize {
    std::uint16_t width = 0;
    std::uint16_t height = 0;
};

/// Takes the header; the stream then stands at the body.
Status ReadHeader(std::istream& stream, const CoefFileMagic& magic, FileSize& size) {
    HeaderBytes header{};
    if (!stream.read(reinterpret_cast<char*>(header.data()), header.size()) ||
        std::memcmp(header.data(), magic.data(), magic.size()) != 0 ||
        LoadLittle<std::uint32_t>(&header[kVersionOffset]) > kVersion)
        return E_COEF_BADFORMAT;
    size.width = LoadLittle<std::uint16_t>(&header[kWidthOffset]);
    size.height = LoadLittle<std::uint16_t>(&header[kHeightOffset]);
    return S_OK;
}

/// Reads header and body; the body is as long as what follows the header.
Status ReadHeaderAndBody(std::istream& stream, const CoefFileMagic& magic, CMassiveGrid& body,
                         std::size_t threads) {
    SStoredBody stored;
    if (const Status status = FindCoefBody(stream, magic, stored); Failed(status))
        return status;
    if (const Status status = body.UncompressFromFile(stream, stored.bytes, threads);
        Failed(status))
        return status;
    if (body.SetShape(stored.width, stored.height))
        return S_OK;
    body.Release();
    return E_FAIL;
}

} // namespace

Status ReadCoefBody(const CFileSource& source, const CoefFileMagic& magic, CMassiveGrid& body,
                    std::size_t threads) {
    body.Release();
    return source.Take(
        [&](std::istream& stream) { return ReadHeaderAndBody(stream, magic, body, threads); });
}

Status FindCoefBody(std::istream& stream, const CoefFileMagic& magic, SStoredBody& body) {
    FileSize size;
    if (const Status status = ReadHeader(stream, magic, size); Failed(status))
        return status;
    if (!CheckedProduct<std::int32_t>(size.width, size.height))
        return E_FAIL;
    const auto bytes = BytesToEnd(stream);
    if (!bytes)
        return E_FAIL;
    body = {size.width, size.height, *bytes};
    return S_OK;
}

Status ReadCoefFileSize(const CFileSource& source, const CoefFileMagic& magic, std::uint32_t& width,
                        std::uint32_t& height) {
    FileSize size;
    const Status status =
        source.Take([&](std::istream& stream) { return ReadHeader(stream, magic, size); });
    if (Failed(status))
        return status;
    width = size.width;
    height = size.height;
    return S_OK;
}

void WriteCoefHeader(std::ostream& stream, const CoefFileMagic& magic, std::uint32_t width,
                     std::uint32_t height) {
    HeaderBytes header{};
    std::memcpy(header.data(), magic.data(), magic.size());
    StoreLittle<std::uint32_t>(&header[kVersionOffset], kVersion);
    StoreLittle<std::uint16_t>(&header[kWidthOffset], static_cast<std::uint16_t>(width));
    StoreLittle<std::uint16_t>(&header[kHeightOffset], static_cast<std::uint16_t>(height));
    stream.write(reinterpret_cast<const char*>(header.data()), header.size());
}

Status WriteCoefBody(const CFileTarget& target, const CoefFileMagic& magic, std::uint32_t width,
                     std::uint32_t height, const CMassiveBuf& body) {
    return target.Put([&](std::ostream& stream) {
        WriteCoefHeader(stream, magic, width, height);
        return body.CompressToFile(stream);
    });
}

bool ResizeBody(CMassiveGrid& body, std::int64_t width, std::int64_t height) {
    constexpr std::int64_t kLargest = std::numeric_limits<std::int32_t>::max();
    if (width < 0 || height < 0 || width > kLargest || height > kLargest)
        return false;
    return body.Resize(static_cast<std::int32_t>(width), static_cast<std::int32_t>(height));
}

template <class Kind>
Status FillBodyFromMap(const CChromaCorrectCoef& map, const SPixelRect& rect, CMassiveGrid& body) {
    if (!ResizeBody(body, std::max<std::int64_t>(rect.Width(), 0),
                    std::max<std::int64_t>(rect.Height(), 0)))
        return E_FAIL;
    if (rect.Width() > map.Width() || rect.Height() > map.Height()) {
        body.Release();
        return E_COEF_INVALIDARG;
    }
    std::uint32_t index = 0;
    for (std::int64_t y = rect.top; y < rect.bottom; ++y)
        for (std::int64_t x = rect.left; x < rect.right; ++x, ++index)
            Kind::Put(body, index, Kind::SaveOrIdentity(map.FindElement(x, y)));
    return S_OK;
}

#define TREVOLT_FILL_BODY(Kind)                                                                    \
    template Status FillBodyFromMap<Kind>(const CChromaCorrectCoef&, const SPixelRect&,            \
                                          CMassiveGrid&);
TREVOLT_EACH_BINARY_COEF_KIND(TREVOLT_FILL_BODY)
#undef TREVOLT_FILL_BODY

} // namespace trevolt
