#include "coef/WordFileSource.h"

#include <sstream>

#include <gtest/gtest.h>

#include "tests/support/Streams.h"
#include "tests/support/TestFiles.h"

namespace trevolt {
namespace {

std::string ReadAll(std::istream& stream) { return {std::istreambuf_iterator<char>(stream), {}}; }

TEST(WordFileSource, OpensAPathAnewForEveryLook) {
    const test::CTemporaryFolder folder;
    const std::wstring path = folder.File(L"file");
    CWordFileSource file(path.c_str());
    EXPECT_EQ(file.Open(), nullptr);
    EXPECT_EQ(file.Take([](std::istream&) { return S_OK; }), E_COEF_OPENFAILED);
    test::WriteText(path, "first");
    ASSERT_NE(file.Open(), nullptr);
    EXPECT_EQ(ReadAll(*file.Open()), "first");
    test::WriteText(path, "second\r\n\x1A.");
    std::istream* const stream = file.Open();
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(ReadAll(*stream), "second\r\n\x1A.");
    file.Rewind();
    EXPECT_EQ(ReadAll(*stream), "second\r\n\x1A.");
    EXPECT_EQ(file.Take([](std::istream& taken) {
        EXPECT_EQ(ReadAll(taken), "second\r\n\x1A.");
        return E_COEF_BADTEXT;
    }),
              E_COEF_BADTEXT);
    EXPECT_EQ(CWordFileSource(static_cast<const wchar_t*>(nullptr)).Take([](std::istream&) {
        return S_OK;
    }),
              E_COEF_INVALIDARG);
}

TEST(WordFileSource, PutsAStreamBackForEveryLook) {
    std::istringstream stream("before|file");
    stream.seekg(7);
    CWordFileSource file(stream);
    for (int look = 0; look < 2; ++look) {
        ASSERT_EQ(file.Open(), &stream);
        EXPECT_EQ(ReadAll(stream), "file");
        EXPECT_FALSE(stream.get() != EOF);
        EXPECT_TRUE(stream.fail());
    }
    file.Rewind();
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(stream.tellg(), std::streampos(7));
}

TEST(WordFileSource, AStreamThatHadFailedHasNoBytes) {
    std::istringstream stream("file");
    stream.setstate(std::ios::failbit);
    CWordFileSource file(stream);
    ASSERT_EQ(file.Open(), &stream);
    EXPECT_EQ(stream.get(), EOF);
    file.Rewind();
    EXPECT_EQ(stream.get(), EOF);
    EXPECT_TRUE(stream.fail());
}

TEST(WordFileSource, AStreamThatCannotBeSoughtHasNoBytes) {
    test::CPipe stream(test::Bytes(4, std::byte{'x'}));
    CWordFileSource file(stream);
    ASSERT_EQ(file.Open(), &stream);
    EXPECT_EQ(stream.get(), EOF);
    EXPECT_TRUE(stream.fail());
}

} // namespace
} // namespace trevolt
