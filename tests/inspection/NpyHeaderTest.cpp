#include "app/inspection/NpyHeader.h"

#include <sstream>

#include <gtest/gtest.h>

namespace trevolt {
namespace {

const SNpyHeader kSmall{"<f4", false, {3, 4, 12}};
constexpr const char* kSmallDict =
    "{'descr': '<f4', 'fortran_order': False, 'shape': (3, 4, 12), }";

/// What a reader says of a file that begins so.
std::string ReadHeaderOf(const std::string& bytes, SNpyHeader& header) {
    std::istringstream stream(bytes);
    return ReadNpyHeader(stream, header);
}

std::string ProblemOf(const std::string& bytes) {
    SNpyHeader header;
    return ReadHeaderOf(bytes, header);
}

std::string WithLength16(std::string version, const std::string& dict) {
    return "\x93NUMPY" + version + static_cast<char>(dict.size() & 0xFF) +
           static_cast<char>(dict.size() >> 8) + dict;
}

TEST(NpyHeader, IsWrittenAsNumPyDoes) {
    const std::string bytes = FormatNpyHeader(kSmall);
    ASSERT_EQ(bytes.size(), 128U);
    EXPECT_EQ(bytes.substr(0, 10), std::string("\x93NUMPY\x01\x00\x76\x00", 10));
    const std::string dict = kSmallDict;
    EXPECT_EQ(bytes.substr(10, dict.size()), dict);
    EXPECT_EQ(bytes.substr(10 + dict.size()), std::string(117 - dict.size(), ' ') + "\n");
    EXPECT_EQ(FormatNpyHeader({"|u1", true, {7}}).substr(10, 58),
              "{'descr': '|u1', 'fortran_order': True, 'shape': (7,), }  ");
}

TEST(NpyHeader, EndsAtAMultipleOf64WhateverTheDictionarysLength) {
    for (std::size_t sides = 0; sides <= kMostNpyDimensions; ++sides) {
        const SNpyHeader header{"<u2", false, std::vector<std::uint64_t>(sides, 1)};
        const std::string bytes = FormatNpyHeader(header);
        EXPECT_EQ(bytes.size() % 64, 0U) << sides;
        EXPECT_EQ(bytes.back(), '\n');
        const std::size_t text = bytes.find('}') + 1;
        EXPECT_LT(bytes.size() - text, 65U) << sides;
        SNpyHeader back;
        ASSERT_EQ(ReadHeaderOf(bytes, back), "") << sides;
        EXPECT_EQ(back, header);
    }
}

TEST(NpyHeader, EveryVersionIsRead) {
    const std::string dict = std::string(kSmallDict) + "   \n";
    const std::string length32{static_cast<char>(dict.size()), 0, 0, 0};
    for (const std::string& bytes :
         {WithLength16({1, 0}, dict), std::string("\x93NUMPY\2\0", 8) + length32 + dict,
          std::string("\x93NUMPY\3\0", 8) + length32 + dict}) {
        std::istringstream stream(bytes + "values");
        SNpyHeader header;
        ASSERT_EQ(ReadNpyHeader(stream, header), "");
        EXPECT_EQ(header, kSmall);
        EXPECT_EQ(std::streamoff{stream.tellg()}, static_cast<std::streamoff>(bytes.size()));
    }
}

TEST(NpyHeader, OtherVersionsAreNot) {
    EXPECT_EQ(ProblemOf(WithLength16({4, 0}, kSmallDict)),
              "its .npy version is 4.0: 1.0, 2.0 and 3.0 are known");
    EXPECT_EQ(ProblemOf(WithLength16({0, 0}, kSmallDict)),
              "its .npy version is 0.0: 1.0, 2.0 and 3.0 are known");
    EXPECT_EQ(ProblemOf(WithLength16({1, 1}, kSmallDict)),
              "its .npy version is 1.1: 1.0, 2.0 and 3.0 are known");
}

TEST(NpyHeader, CutAnywhereItIsNoHeader) {
    const std::string whole = FormatNpyHeader(kSmall);
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_EQ(ProblemOf(whole.substr(0, size)),
                  size < 8 ? "it does not begin as a .npy file does" : "its header is cut short")
            << size;
    EXPECT_EQ(ProblemOf("PK\x03\x04 an archive of arrays"),
              "it does not begin as a .npy file does");
}

TEST(NpyHeader, ALengthThatNoDictionaryHasIsRefusedUnread) {
    const std::string prefix("\x93NUMPY\2\0", 8);
    EXPECT_EQ(ProblemOf(prefix + std::string("\xFF\xFF\xFF\xFF", 4) + kSmallDict),
              "its header is of 4294967295 bytes: 65535 are the most that are taken");
    EXPECT_EQ(ProblemOf(prefix + std::string("\x00\x00\x01\x00", 4) + kSmallDict),
              "its header is of 65536 bytes: 65535 are the most that are taken");
    EXPECT_EQ(ProblemOf(prefix + std::string("\xFF\xFF\x00\x00", 4) + kSmallDict),
              "its header is cut short");
}

TEST(NpyHeader, KeysComeInAnyOrderAndQuotesAndBlanksAsTheyLike) {
    for (const char* dict : {"{'descr':'<f4','fortran_order':False,'shape':(3,4,12)}",
                             "{'shape': (3, 4, 12), 'fortran_order': False, 'descr': '<f4'}",
                             "{'fortran_order': False, 'shape': (3, 4, 12,), 'descr': '<f4',}",
                             " {\n\"descr\" : \"<f4\" ,\t'fortran_order' : False , 'shape' : ( 3 , "
                             "4 , 12 ) , } \r\n"}) {
        SNpyHeader header{"x", true, {1}};
        EXPECT_TRUE(ParseNpyDict(dict, header)) << dict;
        EXPECT_EQ(header, kSmall) << dict;
    }
    SNpyHeader header;
    EXPECT_TRUE(ParseNpyDict("{'descr': '<f4', 'fortran_order': True, 'shape': ()}", header));
    EXPECT_TRUE(header.shape.empty() && header.isFortranOrder);
    EXPECT_TRUE(ParseNpyDict("{'descr': '<f4', 'fortran_order': True, 'shape': (5,)}", header));
    EXPECT_EQ(header.shape, std::vector<std::uint64_t>{5});
    EXPECT_TRUE(ParseNpyDict(
        "{'descr': '', 'fortran_order': True, 'shape': (18446744073709551615,)}", header));
    EXPECT_EQ(header.shape, std::vector<std::uint64_t>{UINT64_MAX});
}

TEST(NpyHeader, EveryOtherTextIsRefused) {
    const std::string order = "'fortran_order': False, ";
    const std::string type = "'descr': '<f4', ";
    const std::string shape = "'shape': (3, 4, 12), ";
    SNpyHeader header;
    const auto expectRefused = [&](const std::string& dict) {
        EXPECT_FALSE(ParseNpyDict(dict, header)) << dict;
        EXPECT_EQ(ProblemOf(WithLength16({1, 0}, dict)),
                  "its header does not tell of one array of plain numbers")
            << dict;
    };
    /// The whole entries stand where T, O and S do.
    const auto whole = [&](std::string_view pattern) {
        std::string dict;
        for (const char c : pattern)
            dict += c == 'T' ? type : c == 'O' ? order : c == 'S' ? shape : std::string(1, c);
        return dict;
    };
    ASSERT_TRUE(ParseNpyDict(whole("{TOS}"), header));
    for (const char* pattern : {"", "{", "{}", "{TO}", "{TS}", "{OS}", "{TOS", "TOS}", "{TOS}x",
                                "{TOS, }", "{, TOS}", "{TTOS}", "{TTO}", "{TOS'more': 1, }"})
        expectRefused(whole(pattern));
    const std::string long33(33, '1');
    for (const std::string& text :
         {std::string("'Descr': '<f4'"), std::string("'descr' '<f4'"), std::string("'descr': <f4"),
          std::string("'descr': '<f4\""), std::string("'descr': '\\x3cf4'"),
          std::string("'descr': [('a', '<f4')]"), "'descr': '" + long33 + "'"})
        expectRefused("{" + text + ", " + order + shape + "}");
    for (const char* text : {"0", "false", "Falsely"})
        expectRefused("{" + type + "'fortran_order': " + text + ", " + shape + "}");
    for (const char* text :
         {"3", "(3)", "[3, 4, 12]", "(,)", "(3,, 4)", "(3 4)", "(-3, 4, 12)", "(+3, 4)", "(3.0, 4)",
          "(3L, 4L)", "(0x3, 4)", "(18446744073709551616, 1)"})
        expectRefused("{" + type + order + "'shape': " + text + "}");
    expectRefused("{" + type + order + "'shape': (3, 4");
    std::string sides = "1";
    for (std::size_t k = 1; k < kMostNpyDimensions; ++k)
        sides += ", 1";
    EXPECT_TRUE(ParseNpyDict("{" + type + order + "'shape': (" + sides + ")}", header));
    EXPECT_FALSE(ParseNpyDict("{" + type + order + "'shape': (" + sides + ", 1)}", header));
    EXPECT_TRUE(
        ParseNpyDict("{'descr': '" + long33.substr(1) + "', " + order + shape + "}", header));
}

TEST(NpyHeader, AShapeIsToldAsPythonDoes) {
    EXPECT_EQ(FormatNpyShape({}), "()");
    EXPECT_EQ(FormatNpyShape({5}), "(5,)");
    EXPECT_EQ(FormatNpyShape({3, 4, 12}), "(3, 4, 12)");
}

} // namespace
} // namespace trevolt
