#include "trevolt/RawMapFile.h"

#include "formats/BinaryCoefKind.h"
#include "formats/FileOrStream.h"

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
    // A grid that cannot be read stays empty; the magic alone decides the result.
    if (Failed(map.ColourGrid().ReadFromFile(stream)))
        return S_OK; // nothing tells where the gain grid's image begins
    DropStatus(map.GainGrid().ReadFromFile(stream));
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
