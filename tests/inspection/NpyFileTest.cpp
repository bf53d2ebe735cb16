#include "app/inspection/NpyFile.h"

#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <limits>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "platform/FileSystem.h"
#include "platform/SystemError.h"
#include "tests/support/CoefMaps.h"
#include "tests/support/Streams.h"
#include "trevolt/FixedPoint.h"

#ifndef _WIN32
#include "tests/support/FileSizeLimit.h"
#endif

namespace trevolt {
namespace {

using namespace test;

std::string NpyHeaderText(std::string_view descr, std::string_view shape,
                          std::string_view order = "False") {
    std::string dict =
        fmt::format("{{'descr': '{}', 'fortran_order': {}, 'shape': {}, }}", descr, order, shape);
    dict.resize(117, ' ');
    return std::string("\x93NUMPY\1\0\x76\0", 10) + dict + "\n";
}

SNpyLoad ReadArray(const std::string& bytes) {
    std::istringstream stream(bytes);
    return ReadNpy(stream);
}

std::string WrittenArray(const CChromaCorrectCoef& map, const SElementForm& form) {
    std::ostringstream stream;
    EXPECT_TRUE(WriteNpy(map, form, stream));
    return stream.str();
}

const SElementForm& FormNamed(std::wstring_view name) { return FormOfKind(*FindLoadKind(name)); }

CChromaCorrectCoef PatternMap(std::int32_t width, std::int32_t height) {
    CChromaCorrectCoef map;
    map.Resize(width, height);
    PaintMap(map, PatternPixel);
    return map;
}

/// The values of `form` of a pixel, the others the default's.
template <class Convert>
SMatrixCoef OnDefault(const SMatrixCoef& pixel, const SElementForm& form, Convert convert) {
    SMatrixCoef held;
    for (const std::uint8_t place : form.Places())
        held.m[place] = convert(pixel.m[place]);
    return held;
}

TEST(NpyFile, AMapIsWrittenToTheByte) {
    CChromaCorrectCoef map;
    map.Resize(2, 1);
    SMatrixCoef second;
    second.m = {0.5F, 0, 0, 0, 2, 0, 0, 0, -1, 0, 0, 0};
    map.SetElement(1, 0, second);
    std::string values;
    for (const char* value :
         {"\0\0\x80\x3F", "\0\0\0\0", "\0\0\0\0",     "\0\0\0\0", "\0\0\x80\x3F", "\0\0\0\0",
          "\0\0\0\0",     "\0\0\0\0", "\0\0\x80\x3F", "\0\0\0\0", "\0\0\x80\x3F", "\0\0\0\0",
          "\0\0\0\x3F",   "\0\0\0\0", "\0\0\0\0",     "\0\0\0\0", "\0\0\0\x40",   "\0\0\0\0",
          "\0\0\0\0",     "\0\0\0\0", "\0\0\x80\xBF", "\0\0\0\0", "\0\0\0\0",     "\0\0\0\0"})
        values.append(value, 4);
    EXPECT_EQ(WrittenArray(map, kMapForm), NpyHeaderText("<f4", "(1, 2, 12)") + values);
}

TEST(NpyFile, WordsAndBytesAreWrittenInTheirKindsOrder) {
    CChromaCorrectCoef map;
    map.Resize(1, 1);
    SMatrixCoef pixel;
    for (std::size_t k = 0; k < 12; ++k)
        pixel.m[k] = WordToFloat(static_cast<std::uint16_t>(0x101 * (k + 1)));
    map.SetElement(0, 0, pixel);
    const auto values = [&](std::wstring_view kind) {
        return WrittenArray(map, FormNamed(kind)).substr(128);
    };
    EXPECT_EQ(values(L".3wcoef"), "\x01\x01\x05\x05\x09\x09");
    EXPECT_EQ(values(L".4wcoef"), "\x01\x01\x05\x05\x0B\x0B\x09\x09");
    EXPECT_EQ(values(L".9wcoef"), "\x01\x01\x02\x02\x03\x03\x04\x04\x05\x05\x06\x06\x07\x07\x08\x08"
                                  "\x09\x09");
    EXPECT_EQ(values(L".12wcoef"),
              "\x01\x01\x02\x02\x0A\x0A\x03\x03\x04\x04\x05\x05\x0B\x0B\x06\x06"
              "\x07\x07\x08\x08\x0C\x0C\x09\x09");
    EXPECT_EQ(values(L".9bcoef"), "\x01\x02\x03\x04\x05\x06\x07\x08\x09");
    EXPECT_EQ(values(L".3bcoef"), "\x01\x05\x09");
    EXPECT_EQ(WrittenArray(map, FormNamed(L".12wcoef")).substr(0, 128),
              NpyHeaderText("<u2", "(1, 1, 12)"));
    EXPECT_EQ(WrittenArray(map, FormNamed(L".3bcoef")).substr(0, 128),
              NpyHeaderText("|u1", "(1, 1, 3)"));
    EXPECT_EQ(WrittenArray(map, FormNamed(L".3fcoef")).substr(0, 128),
              NpyHeaderText("<f4", "(1, 1, 3)"));
    EXPECT_EQ(WrittenArray(map, FormNamed(L".cccoef")).substr(0, 128),
              NpyHeaderText("<f4", "(1, 1, 9)"));
}

TEST(NpyFile, EveryFormComesBack) {
    const CChromaCorrectCoef map = PatternMap(7, 5);
    const auto same = [](float value) { return value; };
    const auto back = [&](const SElementForm& form) { return ReadArray(WrittenArray(map, form)); };
    const SNpyLoad whole = back(kMapForm);
    ASSERT_NE(whole.map, nullptr) << whole.problem;
    EXPECT_EQ(whole.form, kMapForm);
    EXPECT_EQ(whole.map->Width(), 7);
    EXPECT_EQ(whole.map->Height(), 5);
    ExpectPixels(*whole.map, PatternPixel);
    ExpectGainsOne(*whole.map);
    for (const SFileKind& kind : FileKinds()) {
        const SElementForm form = ArrayForm(FormOfKind(kind));
        SCOPED_TRACE(testing::PrintToString(std::wstring(kind.extension)));
        const SNpyLoad load = back(form);
        ASSERT_NE(load.map, nullptr) << load.problem;
        EXPECT_EQ(load.form, form);
        ExpectPixels(*load.map, [&](std::int32_t x, std::int32_t y) {
            const SMatrixCoef pixel = PatternPixel(x, y);
            if (form.value == EStoredValue::Word)
                return OnDefault(pixel, form, [](float v) { return WordToFloat(RoundToWord(v)); });
            if (form.value == EStoredValue::Byte)
                return OnDefault(pixel, form, [](float v) { return ByteToFloat(RoundToByte(v)); });
            return OnDefault(pixel, form, same);
        });
    }
}

TEST(NpyFile, EveryWordAndByteComesBack) {
    std::string words = NpyHeaderText("<u2", "(64, 256, 4)");
    for (std::uint32_t word = 0; word < 0x10000; ++word)
        words.append({static_cast<char>(word & 0xFF), static_cast<char>(word >> 8)});
    const SNpyLoad load = ReadArray(words);
    ASSERT_NE(load.map, nullptr) << load.problem;
    EXPECT_EQ(WrittenArray(*load.map, load.form), words);
    std::string bytes = NpyHeaderText("|u1", "(16, 16, 3)");
    for (std::uint32_t byte = 0; byte < 256; ++byte)
        bytes.append(3, static_cast<char>(byte));
    const SNpyLoad byteLoad = ReadArray(bytes);
    ASSERT_NE(byteLoad.map, nullptr) << byteLoad.problem;
    EXPECT_EQ(WrittenArray(*byteLoad.map, byteLoad.form), bytes);
}

TEST(NpyFile, FloatsKeepTheirBits) {
    CChromaCorrectCoef map;
    map.Resize(1, 1);
    SMatrixCoef pixel;
    for (std::size_t k = 0; k < 12; ++k)
        pixel.m[k] = std::bit_cast<float>(std::array{
            0x80000000U, 0x7FC00001U, 0xFFC12345U, 0x7F800000U, 0xFF800000U, 1U, 0x807FFFFFU,
            0x7F7FFFFFU, 0xFF7FFFFFU, 0x3F800001U, 0x7FFFFFFFU, 0x00800000U}[k]);
    map.SetElement(0, 0, pixel);
    const SNpyLoad load = ReadArray(WrittenArray(map, kMapForm));
    ASSERT_NE(load.map, nullptr);
    EXPECT_TRUE(SamePixel(*load.map->FindElement(0, 0), pixel));
}

TEST(NpyFile, CutAnywhereItIsNotRead) {
    const std::string whole = WrittenArray(PatternMap(3, 2), FormNamed(L".3fcoef"));
    ASSERT_EQ(whole.size(), 128U + 72);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const SNpyLoad load = ReadArray(whole.substr(0, size));
        EXPECT_EQ(load.map, nullptr) << size;
        const std::string wanted =
            size < 8 ? "it does not begin as a .npy file does"
            : size < 128
                ? "its header is cut short"
                : fmt::format("it is cut short: {} of the 72 bytes of its values are there",
                              size - 128);
        EXPECT_EQ(load.problem, wanted) << size;
    }
    EXPECT_NE(ReadArray(whole).map, nullptr);
    const SNpyLoad longer = ReadArray(whole + "xy");
    EXPECT_EQ(longer.map, nullptr);
    EXPECT_EQ(longer.problem, "2 bytes stand behind its values");
    EXPECT_EQ(ReadArray(whole + "x").problem, "1 byte stands behind its values");
}

TEST(NpyFile, OtherArraysAreRefusedWithWhatToDo) {
    const auto problem = [](std::string_view descr, std::string_view shape,
                            std::string_view order = "False") {
        const SNpyLoad load = ReadArray(NpyHeaderText(descr, shape, order) + std::string(48, '\0'));
        EXPECT_EQ(load.map, nullptr);
        return load.problem;
    };
    for (const char* descr : {"<f8", ">f4", ">u2", "<i2", "|i1", "<f2", "|O", "|b1", "<U3", ""})
        EXPECT_EQ(problem(descr, "(1, 1, 12)"),
                  fmt::format("its values are of type '{}': save them as numpy.float32 ('<f4'), or "
                              "as the words ('<u2') or bytes ('|u1') of a kind",
                              descr));
    EXPECT_EQ(problem("<f4", "(1, 1, 12)", "True"),
              "its values are in Fortran order: save what numpy.ascontiguousarray makes of it");
    EXPECT_EQ(problem("<f4", "(12,)"), "its shape is (12,): a map's is (height, width, values)");
    EXPECT_EQ(problem("<f4", "()"), "its shape is (): a map's is (height, width, values)");
    EXPECT_EQ(problem("<f4", "(1, 12)"),
              "its shape is (1, 12): a map's is (height, width, values)");
    EXPECT_EQ(problem("<f4", "(1, 1, 12, 1)"),
              "its shape is (1, 1, 12, 1): a map's is (height, width, values)");
    for (const char* shape : {"(0, 1, 12)", "(1, 0, 12)", "(65536, 1, 12)", "(1, 65536, 12)",
                              "(18446744073709551615, 1, 12)"})
        EXPECT_EQ(problem("<f4", shape),
                  fmt::format("its shape is {}: height and width are 1 to 65535", shape));
    EXPECT_EQ(problem("<f4", "(1, 1, 4)"),
              "its shape is (1, 1, 4) of float32: no kind has 4 such values a pixel");
    EXPECT_EQ(problem("<u2", "(1, 1, 1)"),
              "its shape is (1, 1, 1) of uint16: no kind has 1 such values a pixel");
    EXPECT_EQ(problem("|u1", "(1, 1, 12)"),
              "its shape is (1, 1, 12) of uint8: no kind has 12 such values a pixel");
    EXPECT_EQ(problem("<f4", "(1, 1, 4294967308)"),
              "its shape is (1, 1, 4294967308) of float32: no kind has 4294967308 such values a "
              "pixel");
}

TEST(NpyFile, AShapeOfBytesThatAreNotThereTakesNoMemory) {
    const std::uint64_t before = CMemoryBudget::Process().Outstanding();
    const CBudgetLimit none(before);
    const SNpyLoad load = ReadArray(NpyHeaderText("<f4", "(65535, 65535, 12)") + "few");
    EXPECT_EQ(load.problem, "it is cut short: 3 of the 206152138800 bytes of its values are there");
}

TEST(NpyFile, MemoryRefusedForTheMapIsAProblem) {
    const std::string whole = WrittenArray(PatternMap(3, 2), kMapForm);
    const CBudgetLimit few(100);
    const SNpyLoad load = ReadArray(whole);
    EXPECT_EQ(load.map, nullptr);
    EXPECT_EQ(load.problem, "there is not enough memory for 3 x 2 pixels");
}

TEST(NpyFile, AStreamIsReadFromItsPosition) {
    std::istringstream stream =
        StreamBehindPrefix(AsBytes(WrittenArray(PatternMap(3, 2), FormNamed(L".9fcoef"))));
    EXPECT_NE(ReadNpy(stream).map, nullptr);
    CPipe pipe(AsBytes(WrittenArray(PatternMap(3, 2), FormNamed(L".9fcoef"))));
    const SNpyLoad load = ReadNpy(pipe);
    EXPECT_EQ(load.map, nullptr);
    EXPECT_EQ(load.problem, "the system does not tell how long it is");
}

TEST(NpyFile, AFullDiskIsSeen) {
    const CChromaCorrectCoef map = PatternMap(3, 2);
    const std::size_t whole = WrittenArray(map, kMapForm).size();
    for (const std::size_t room : {std::size_t{0}, std::size_t{127}, std::size_t{128}, whole - 1}) {
        CFullDisk disk(room);
        EXPECT_FALSE(WriteNpy(map, kMapForm, disk)) << room;
    }
    CFullDisk disk(whole);
    EXPECT_TRUE(WriteNpy(map, kMapForm, disk));
}

TEST(NpyFile, FilesAreWrittenAndRead) {
    const CTemporaryFolder folder;
    const CChromaCorrectCoef map = PatternMap(300, 4);
    EXPECT_EQ(SaveNpyFile(map, kMapForm, folder.File(L"a.npy")), "");
    EXPECT_EQ(test::ReadText(folder.File(L"a.npy")), WrittenArray(map, kMapForm));
    const SNpyLoad load = LoadNpyFile(folder.File(L"a.npy"));
    ASSERT_NE(load.map, nullptr) << load.problem;
    ExpectPixels(*load.map, PatternPixel);
    const SNpyLoad none = LoadNpyFile(folder.File(L"none.npy"));
    EXPECT_EQ(none.map, nullptr);
    EXPECT_EQ(none.problem, "cannot be read: " + SystemErrorText(ENOENT));
    WriteText(folder.File(L"b.npy"), "notes");
    EXPECT_EQ(LoadNpyFile(folder.File(L"b.npy")).problem,
              "cannot be read: it does not begin as a .npy file does");
    EXPECT_EQ(SaveNpyFile(map, kMapForm, folder.File(L"none") + L"/a.npy"),
              "cannot be written: " + SystemErrorText(ENOENT));
}

#ifndef _WIN32
TEST(NpyFile, AFileThatIsNotWholeIsAProblem) {
    const CTemporaryFolder folder;
    for (const std::int32_t width : {1, 30}) // which the stream holds back to its close, or not
        for (const rlim_t room : {rlim_t{0}, rlim_t{100}}) {
            const CFileSizeLimit limit(room);
            EXPECT_EQ(SaveNpyFile(PatternMap(width, 4), kMapForm, folder.File(L"a.npy")),
                      "cannot be written: " + SystemErrorText(EFBIG));
        }
}
#endif

TEST(NpyFile, NamesAndTypes) {
    EXPECT_TRUE(IsNpyName(L"Cab_01.npy"));
    EXPECT_TRUE(IsNpyName(L"wall.9fcoef.NPY"));
    EXPECT_FALSE(IsNpyName(L"Cab.npy.9fcoef"));
    EXPECT_FALSE(IsNpyName(L"npy"));
    EXPECT_EQ(ArrayTypeName(EStoredValue::Float), "float32");
    EXPECT_EQ(ArrayTypeName(EStoredValue::Text), "float32");
    EXPECT_EQ(ArrayTypeName(EStoredValue::Word), "uint16");
    EXPECT_EQ(ArrayTypeName(EStoredValue::Byte), "uint8");
}

} // namespace
} // namespace trevolt
