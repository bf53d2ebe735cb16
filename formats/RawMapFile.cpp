#include "trevolt/RawMapFile.h"

#include "formats/BinaryCoefKind.h"
#include "platform/FileStream.h"

namespace trevolt {
namespace {

constexpr std::streamsize kUnusedFields = 8; // a uint32, width and height

} // namespace

Status ReadRawMapFile(CChromaCorrectCoef& map, const wchar_t* path) {
    if (path == nullptr)
        return E_COEF_INVALIDARG;
    std::fstream stream;
    if (!OpenFileStream(stream, path, std::ios::in))
        return E_COEF_OPENFAILED;
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

} // namespace trevolt
