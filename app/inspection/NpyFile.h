// Coefficient maps as NumPy's .npy files: one array of (height, width, values), row by row,
// little-endian. Its values are a map's, or those that a kind's files store (docs/formats/npy.md).
//
// May be used from any thread.
#pragma once

#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

#include "app/rotation/ElementForms.h"
#include "trevolt/ChromaCorrectCoef.h"

namespace trevolt {

/// Whether a name is that of a .npy file: by its end, A to Z and a to z being the same.
bool IsNpyName(std::wstring_view name);

/// How a form's values stand in an array: as they are stored, text as float32.
SElementForm ArrayForm(SElementForm form);

/// "float32", "uint16" or "uint8".
std::string_view ArrayTypeName(EStoredValue value);

struct SNpyLoad {
    /// Of the array's size; values that it does not hold are the default element's. Null when the file
    /// could not be read.
    std::unique_ptr<CChromaCorrectCoef> map;
    /// The array's: the map's own form, or that of a kind whose files store as many such values.
    SElementForm form;
    /// Why it could not be read, in plain words; empty when it was.
    std::string problem;
};

/// Reads the file whole or not at all. Refused are other types, shapes and orders than those of the
/// forms, sides above a map's, other bytes than the shape's behind the header, and memory for more
/// than a map.
SNpyLoad LoadNpyFile(const std::wstring& path);

/// As above from a binary stream that can be sought; the array lies from its position to its end.
SNpyLoad ReadNpy(std::istream& stream);

/// Writes the map's values of `form` as a file; text is written as float32. The map has storage and a
/// size. Why the file is not whole, in plain words; empty when it is. Nothing is synced.
std::string SaveNpyFile(const CChromaCorrectCoef& map, const SElementForm& form,
                        const std::wstring& path);

/// As above at a stream's position; false when the stream fails.
bool WriteNpy(const CChromaCorrectCoef& map, const SElementForm& form, std::ostream& stream);

} // namespace trevolt
