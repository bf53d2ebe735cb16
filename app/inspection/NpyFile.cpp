#include "app/inspection/NpyFile.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include <fmt/format.h>

#include "app/inspection/NpyHeader.h"
#include "common/LittleEndian.h"
#include "common/TextConversion.h"
#include "platform/FileStream.h"
#include "platform/SystemError.h"
#include "trevolt/FixedPoint.h"

namespace trevolt {
namespace {

/// What a stored value is in an array.
struct SFloatItem {
    using Type = float;
    static float Load(float item) { return item; }
    static float Save(float value) { return value; }
};
struct SWordItem {
    using Type = std::uint16_t;
    static float Load(std::uint16_t item) { return WordToFloat(item); }
    static std::uint16_t Save(float value) { return RoundToWord(value); }
};
struct SByteItem {
    using Type = std::uint8_t;
    static float Load(std::uint8_t item) { return ByteToFloat(item); }
    static std::uint8_t Save(float value) { return RoundToByte(value); }
};

struct SArrayType {
    EStoredValue value;
    std::string_view name;
    std::string_view descr;
    std::uint32_t bytes;
};

constexpr std::array kArrayTypes{
    SArrayType{EStoredValue::Float, "float32", "<f4", 4},
    SArrayType{EStoredValue::Word, "uint16", "<u2", 2},
    SArrayType{EStoredValue::Byte, "uint8", "|u1", 1},
};

/// Of a value that stands in arrays.
const SArrayType& TypeOf(EStoredValue value) {
    return *std::ranges::find(kArrayTypes, value, &SArrayType::value);
}

/// What visit<Item>() makes of how the value stands in arrays.
template <class Visit>
auto VisitItem(EStoredValue value, const Visit& visit) {
    switch (value) {
    case EStoredValue::Word:
        return visit.template operator()<SWordItem>();
    case EStoredValue::Byte:
        return visit.template operator()<SByteItem>();
    case EStoredValue::Float:
    case EStoredValue::Text:
        break;
    }
    return visit.template operator()<SFloatItem>();
}

/// The form of arrays of `count` such values a pixel; nothing when none has them.
std::optional<SElementForm> FindForm(EStoredValue value, std::uint64_t count) {
    if (kMapForm.value == value && kMapForm.count == count)
        return kMapForm;
    for (const SFileKind& kind : FileKinds())
        if (const SElementForm& form = FormOfKind(kind); form.value == value && form.count == count)
            return form;
    return std::nullopt;
}

struct SArray {
    SElementForm form;
    std::int32_t width = 0;
    std::int32_t height = 0;

    std::uint64_t RowBytes() const {
        return std::uint64_t{form.count} * TypeOf(form.value).bytes *
               static_cast<std::uint64_t>(width);
    }
    std::uint64_t Bytes() const { return RowBytes() * static_cast<std::uint64_t>(height); }
};

/// Why an array of this header is no map's; empty when it is, and `array` is its then.
std::string TakeArray(const SNpyHeader& header, SArray& array) {
    const auto type = std::ranges::find(kArrayTypes, header.descr, &SArrayType::descr);
    if (type == kArrayTypes.end())
        return fmt::format("its values are of type '{}': save them as numpy.float32 ('<f4'), or as "
                           "the words ('<u2') or bytes ('|u1') of a kind",
                           header.descr);
    if (header.isFortranOrder)
        return "its values are in Fortran order: save what numpy.ascontiguousarray makes of it";
    const std::string shape = FormatNpyShape(header.shape);
    if (header.shape.size() != 3)
        return fmt::format("its shape is {}: a map's is (height, width, values)", shape);
    for (const std::uint64_t side : {header.shape[0], header.shape[1]})
        if (side == 0 || side > kLargestMapSide)
            return fmt::format("its shape is {}: height and width are 1 to {}", shape,
                               kLargestMapSide);
    const auto form = FindForm(type->value, header.shape[2]);
    if (!form)
        return fmt::format("its shape is {} of {}: no kind has {} such values a pixel", shape,
                           type->name, header.shape[2]);
    array = {*form, static_cast<std::int32_t>(header.shape[1]),
             static_cast<std::int32_t>(header.shape[0])};
    return {};
}

std::string BytesBehind(std::uint64_t count) {
    return count == 1 ? "1 byte stands behind its values"
                      : fmt::format("{} bytes stand behind its values", count);
}

/// Why the stream does not hold the array and nothing behind it; empty when it does.
std::string CheckBytes(std::istream& stream, const SArray& array) {
    const std::optional<std::uint64_t> bytes = BytesToEnd(stream);
    if (!bytes)
        return "the system does not tell how long it is";
    if (*bytes < array.Bytes())
        return fmt::format("it is cut short: {} of the {} bytes of its values are there", *bytes,
                           array.Bytes());
    if (*bytes > array.Bytes())
        return BytesBehind(*bytes - array.Bytes());
    return {};
}

template <class Item>
void TakeRow(const std::vector<std::byte>& row, const SArray& array, CChromaCorrectCoef& map,
             std::int32_t y) {
    const std::byte* item = row.data();
    for (std::int32_t x = 0; x < array.width; ++x) {
        SMatrixCoef& element = *map.FindElement(x, y);
        for (const std::uint8_t place : array.form.Places()) {
            element.m[place] = Item::Load(LoadLittle<typename Item::Type>(item));
            item += sizeof(typename Item::Type);
        }
    }
}

template <class Item>
void PutRow(const CChromaCorrectCoef& map, std::int32_t y, const SArray& array,
            std::vector<std::byte>& row) {
    std::byte* item = row.data();
    for (std::int32_t x = 0; x < array.width; ++x) {
        const SMatrixCoef& element = map.ElementOrDefault(x, y);
        for (const std::uint8_t place : array.form.Places()) {
            StoreLittle<typename Item::Type>(item, Item::Save(element.m[place]));
            item += sizeof(typename Item::Type);
        }
    }
}

/// False when the stream ends or fails before the last row.
template <class Item>
bool TakeRows(std::istream& stream, const SArray& array, CChromaCorrectCoef& map) {
    std::vector<std::byte> row(static_cast<std::size_t>(array.RowBytes()));
    for (std::int32_t y = 0; y < array.height; ++y) {
        if (!stream.read(reinterpret_cast<char*>(row.data()),
                         static_cast<std::streamsize>(row.size())))
            return false;
        TakeRow<Item>(row, array, map, y);
    }
    return true;
}

template <class Item>
bool PutRows(const CChromaCorrectCoef& map, const SArray& array, std::ostream& stream) {
    std::vector<std::byte> row(static_cast<std::size_t>(array.RowBytes()));
    for (std::int32_t y = 0; y < array.height; ++y) {
        PutRow<Item>(map, y, array, row);
        if (!stream.write(reinterpret_cast<const char*>(row.data()),
                          static_cast<std::streamsize>(row.size())))
            return false;
    }
    return true;
}

/// Reads the values into a map of the array's size.
std::string ReadMap(std::istream& stream, const SArray& array,
                    std::unique_ptr<CChromaCorrectCoef>& taken) {
    auto map = std::make_unique<CChromaCorrectCoef>();
    map->Resize(array.width, array.height);
    if (!map->HasStorage())
        return fmt::format("there is not enough memory for {} x {} pixels", array.width,
                           array.height);
    if (!VisitItem(array.form.value,
                   [&]<class Item>() { return TakeRows<Item>(stream, array, *map); }))
        return "the system did not give all of its bytes";
    taken = std::move(map);
    return {};
}

} // namespace

bool IsNpyName(std::wstring_view name) { return ToLowerAscii(name).ends_with(L".npy"); }

SElementForm ArrayForm(SElementForm form) {
    if (form.value == EStoredValue::Text)
        form.value = EStoredValue::Float;
    return form;
}

std::string_view ArrayTypeName(EStoredValue value) { return TypeOf(ArrayForm({value}).value).name; }

SNpyLoad ReadNpy(std::istream& stream) {
    SNpyLoad load;
    SNpyHeader header;
    SArray array;
    load.problem = ReadNpyHeader(stream, header);
    if (load.problem.empty())
        load.problem = TakeArray(header, array);
    if (load.problem.empty())
        load.problem = CheckBytes(stream, array);
    if (load.problem.empty())
        load.problem = ReadMap(stream, array, load.map);
    load.form = array.form;
    return load;
}

SNpyLoad LoadNpyFile(const std::wstring& path) {
    CInputFile file;
    SNpyLoad load;
    if (file.Open(path.c_str()))
        load = ReadNpy(file);
    else
        load.problem = "it does not open";
    if (const int error = file.SystemError(); error != 0)
        load.problem = SystemErrorText(error);
    if (!load.problem.empty()) {
        load.map.reset();
        load.problem = "cannot be read: " + load.problem;
    }
    return load;
}

bool WriteNpy(const CChromaCorrectCoef& map, const SElementForm& form, std::ostream& stream) {
    const SArray array{ArrayForm(form), map.Width(), map.Height()};
    const std::string header = FormatNpyHeader({std::string(TypeOf(array.form.value).descr),
                                                false,
                                                {map.Height(), map.Width(), array.form.count}});
    if (!stream.write(header.data(), static_cast<std::streamsize>(header.size())))
        return false;
    return VisitItem(array.form.value,
                     [&]<class Item>() { return PutRows<Item>(map, array, stream); });
}

std::string SaveNpyFile(const CChromaCorrectCoef& map, const SElementForm& form,
                        const std::wstring& path) {
    COutputFile file;
    if (file.Open(path.c_str(), std::ios::out | std::ios::trunc)) {
        const bool isWritten = WriteNpy(map, form, file);
        if (file.Close() && isWritten)
            return {};
    }
    return WithSystemReason("cannot be written", file.SystemError());
}

} // namespace trevolt
