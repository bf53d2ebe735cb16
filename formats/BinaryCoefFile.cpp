#include "trevolt/BinaryCoefFile.h"

#include "formats/BinaryCoefTransfer.h"

namespace trevolt {

Status Read9fCoefFile(CChromaCorrectCoef& map, const wchar_t* path) {
    return ReadBinaryCoef<S9fCoefKind>(map, path);
}

Status Read9fCoefFile(CChromaCorrectCoef& map, std::istream& stream) {
    return ReadBinaryCoef<S9fCoefKind>(map, stream);
}

Status Read3fCoefFile(CChromaCorrectCoef& map, const wchar_t* path) {
    return ReadBinaryCoef<S3fCoefKind>(map, path);
}

Status Read3fCoefFile(CChromaCorrectCoef& map, std::istream& stream) {
    return ReadBinaryCoef<S3fCoefKind>(map, stream);
}

Status Read9bCoefFile(CChromaCorrectCoef& map, const wchar_t* path) {
    return ReadBinaryCoef<S9bCoefKind>(map, path);
}

Status Read9bCoefFile(CChromaCorrectCoef& map, std::istream& stream) {
    return ReadBinaryCoef<S9bCoefKind>(map, stream);
}

Status Read3bCoefFile(CChromaCorrectCoef& map, const wchar_t* path) {
    return ReadBinaryCoef<S3bCoefKind>(map, path);
}

Status Read3bCoefFile(CChromaCorrectCoef& map, std::istream& stream) {
    return ReadBinaryCoef<S3bCoefKind>(map, stream);
}

Status Write9fCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                       const CMassiveGrid* preparedGrid) {
    return WriteBinaryCoef<S9fCoefKind>(map, path, preparedGrid);
}

Status Write9fCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                       const CMassiveGrid* preparedGrid) {
    return WriteBinaryCoef<S9fCoefKind>(map, stream, preparedGrid);
}

Status Write3fCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                       const CMassiveGrid* preparedGrid) {
    return WriteBinaryCoef<S3fCoefKind>(map, path, preparedGrid);
}

Status Write3fCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                       const CMassiveGrid* preparedGrid) {
    return WriteBinaryCoef<S3fCoefKind>(map, stream, preparedGrid);
}

Status Write9bCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                       const CMassiveGrid* preparedGrid) {
    return WriteBinaryCoef<S9bCoefKind>(map, path, preparedGrid);
}

Status Write9bCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                       const CMassiveGrid* preparedGrid) {
    return WriteBinaryCoef<S9bCoefKind>(map, stream, preparedGrid);
}

Status Write3bCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                       const CMassiveGrid* preparedGrid) {
    return WriteBinaryCoef<S3bCoefKind>(map, path, preparedGrid);
}

Status Write3bCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                       const CMassiveGrid* preparedGrid) {
    return WriteBinaryCoef<S3bCoefKind>(map, stream, preparedGrid);
}

Status Read9fCoefSize(const wchar_t* path, std::uint32_t& width, std::uint32_t& height) {
    return ReadBinaryCoefSize<S9fCoefKind>(path, width, height);
}

Status Read9fCoefSize(std::istream& stream, std::uint32_t& width, std::uint32_t& height) {
    return ReadBinaryCoefSize<S9fCoefKind>(stream, width, height);
}

Status Read3fCoefSize(const wchar_t* path, std::uint32_t& width, std::uint32_t& height) {
    return ReadBinaryCoefSize<S3fCoefKind>(path, width, height);
}

Status Read3fCoefSize(std::istream& stream, std::uint32_t& width, std::uint32_t& height) {
    return ReadBinaryCoefSize<S3fCoefKind>(stream, width, height);
}

Status Read9bCoefSize(const wchar_t* path, std::uint32_t& width, std::uint32_t& height) {
    return ReadBinaryCoefSize<S9bCoefKind>(path, width, height);
}

Status Read9bCoefSize(std::istream& stream, std::uint32_t& width, std::uint32_t& height) {
    return ReadBinaryCoefSize<S9bCoefKind>(stream, width, height);
}

Status Read3bCoefSize(const wchar_t* path, std::uint32_t& width, std::uint32_t& height) {
    return ReadBinaryCoefSize<S3bCoefKind>(path, width, height);
}

Status Read3bCoefSize(std::istream& stream, std::uint32_t& width, std::uint32_t& height) {
    return ReadBinaryCoefSize<S3bCoefKind>(stream, width, height);
}

} // namespace trevolt
