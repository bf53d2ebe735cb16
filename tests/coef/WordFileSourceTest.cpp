#include "coef/WordFileSource.h"

#include <sstream>

#include <gtest/gtest.h>

#include "tests/support/TestFiles.h"

namespace trevolt {
namespace {

std::string ReadAll(std::istream& stream) { return {std::istreambuf_iterator<char>(stream), {}}; }

TEST(FileSource, OpensAPathAnewForEveryLook) {
    const test::CTemporaryFolder folder;
    const std::wstring path = folder.File(L"file");
    CWordFileSource file(path.c_str());
    EXPECT_FALSE(file.IsNull());
    EXPECT_EQ(file.Path(), path.c_str());
    EXPECT_EQ(file.Open(), nullptr);
    test::WriteText(path, "first");
    ASSERT_NE(file.Open(), nullptr);
    EXPECT_EQ(ReadAll(*file.Open()), "first");
    test::WriteText(path, "second\r\n\x1A.");
    std::istream* const stream = file.Open();
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(ReadAll(*stream), "second\r\n\x1A.");
    file.Rewind();
    EXPECT_EQ(ReadAll(*stream), "second\r\n\x1A.");
    EXPECT_TRUE(CWordFileSource(nullptr).IsNull());
}

TEST(FileSource, PutsAStreamBackForEveryLook) {
    std::istringstream stream("before|file");
    stream.seekg(7);
    CWordFileSource file(stream, L"a path");
    EXPECT_FALSE(file.IsNull());
    EXPECT_EQ(std::wstring(file.Path()), L"a path");
    EXPECT_EQ(CWordFileSource(stream).Path(), nullptr);
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

TEST(FileSource, AStreamThatHadFailedHasNoBytes) {
    std::istringstream stream("file");
    stream.setstate(std::ios::failbit);
    CWordFileSource file(stream);
    EXPECT_FALSE(file.IsNull());
    ASSERT_EQ(file.Open(), &stream);
    EXPECT_TRUE(stream.fail());
    file.Rewind();
    EXPECT_TRUE(stream.fail());
}

/// Bytes that come one after the other, as from a pipe.
class CUnseekable : public std::streambuf {
  public:
    explicit CUnseekable(std::string bytes) : m_bytes(std::move(bytes)) {
        setg(m_bytes.data(), m_bytes.data(), m_bytes.data() + m_bytes.size());
    }

  private:
    std::string m_bytes;
};

TEST(FileSource, AStreamThatCannotBeSoughtHasNoBytes) {
    CUnseekable bytes("file");
    std::istream stream(&bytes);
    CWordFileSource file(stream);
    ASSERT_EQ(file.Open(), &stream);
    EXPECT_EQ(ReadAll(stream).size(), 4U) << "the buffer itself goes on";
    EXPECT_TRUE(stream.fail());
}

} // namespace
} // namespace trevolt
