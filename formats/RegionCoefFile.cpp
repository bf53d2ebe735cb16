#include "trevolt/RegionCoefFile.h"

#include "formats/BinaryCoefBody.h"

namespace trevolt {

Status WriteRegion9fCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                             const SPixelRect& rect) {
    return WriteMapRegion<S9fCoefKind>(map, path, rect);
}

Status WriteRegion9fCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                             const SPixelRect& rect) {
    return WriteMapRegion<S9fCoefKind>(map, stream, rect);
}

Status WriteRegion3fCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                             const SPixelRect& rect) {
    return WriteMapRegion<S3fCoefKind>(map, path, rect);
}

Status WriteRegion3fCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                             const SPixelRect& rect) {
    return WriteMapRegion<S3fCoefKind>(map, stream, rect);
}

Status WriteRegion9bCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                             const SPixelRect& rect) {
    return WriteMapRegion<S9bCoefKind>(map, path, rect);
}

Status WriteRegion9bCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                             const SPixelRect& rect) {
    return WriteMapRegion<S9bCoefKind>(map, stream, rect);
}

Status WriteRegion3bCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                             const SPixelRect& rect) {
    return WriteMapRegion<S3bCoefKind>(map, path, rect);
}

Status WriteRegion3bCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                             const SPixelRect& rect) {
    return WriteMapRegion<S3bCoefKind>(map, stream, rect);
}

} // namespace trevolt
