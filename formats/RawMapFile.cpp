#include "trevolt/RawMapFile.h"

#include "formats/BinaryCoefKind.h"
#include "formats/FileOrStream.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

constexpr std::streamsize kUnusedFields = 8; // a uint32, width and height

Status ReadGrids(CChromaCorrectCoef& map, std::istream& stream) {
    CoefFileMagic magic{};
    if (!stream.read(reinterpret_cast<char*>(magic.data()), magic.size()) || magic != kRawMapMagic)
        return E_COEF_BADFORMAT;
    // The stored size never outlives the reset that follows it, so it is not even looked at.
    stream.ignore(kUnusedFields);
    map.Reset();
    // A grid that cannot be read stays empty; the magic alone decides the result. Without the first
    // one nothing tells where the image of the second begins.
    Status status = map.ColourGrid().ReadFromFile(stream);
    if (!Failed(status))
        status = map.GainGrid().ReadFromFile(stream);
    if (Failed(status))
        CTransferReport::NoteFailedRead(status);
    return S_OK;
}

Status ReadRawMap(CChromaCorrectCoef& map, const CFileSource& source) {
    return source.Take([&](std::istream& stream) { return ReadGrids(map, stream); });
}

} // namespace

Status ReadRawMapFile(CChromaCorrectCoef& map, const wchar_t* path) {
    return ReadRawMap(map, path);
}

Status ReadRawMapFile(CChromaCorrectCoef& map, std::istream& stream) {
    return ReadRawMap(map, stream);
}

} // namespace trevolt
