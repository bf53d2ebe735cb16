#include "app/rotation/Manifest.h"

#include <algorithm>
#include <cerrno>
#include <sstream>

#include <gtest/gtest.h>

#include "platform/FileSystem.h"
#include "tests/support/TestFiles.h"
#include "trevolt/Utf8.h"

#ifndef _WIN32
#include <unistd.h>
#endif

namespace trevolt {
namespace {

using namespace test;

// printf '' | sha256sum, printf abc | sha256sum
const std::string kSumOfNothing =
    "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
const std::string kSumOfAbc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";

/// Tells of more bytes than it gives.
class CEarlyEnd : public std::stringbuf {
  public:
    using std::stringbuf::stringbuf;

  protected:
    std::streamsize xsgetn(char* bytes, std::streamsize count) override {
        return std::stringbuf::xsgetn(bytes, std::min<std::streamsize>(count, 2));
    }
};

void ExpectLackOfBytes(const SSum& sum, int error) {
    EXPECT_EQ(sum.lack, SSum::ELack::Bytes);
    EXPECT_EQ(sum.error, error);
    EXPECT_EQ(sum.digits, "");
}

TEST(Manifest, AnEndThatComesTooEarlyGivesNoSum) {
    std::stringbuf whole("abc");
    std::istream abc(&whole);
    EXPECT_EQ(Sha256Of(abc).digits, kSumOfAbc);
    CEarlyEnd cut("abc");
    std::istream stream(&cut);
    ExpectLackOfBytes(Sha256Of(stream), 0);
}

TEST(Sum, IsOfWhatTheStreamStillHolds) {
    std::istringstream stream("xyabc");
    stream.seekg(2);
    EXPECT_EQ(Sha256Of(stream).digits, kSumOfAbc);
    std::istringstream empty;
    EXPECT_EQ(Sha256Of(empty).digits, kSumOfNothing);
}

// printf '%0*d' COUNT 0 | sha256sum
TEST(Sum, OfMoreThanOnePiece) {
    const std::pair<std::size_t, const char*> sums[] = {
        {262143, "5ec17e6e672d9d3bdb1d13e765c52ab3203dd1470411381546a11c99560aba6b"},
        {262144, "6faefade5a638cd3545d638dd5754763658e32209e69420cb559b7650d4bf93a"},
        {262145, "37281836759058fdd14325d2f0780ca47de58a19f03795a4717c9939b9ff0a3e"},
        {700000, "102ebe288ac0d67a7189f7d3bb87ac3bd974f830347b199c6f363b32ea13913f"}};
    for (const auto& [count, sum] : sums) {
        std::istringstream stream(std::string(count, '0'));
        EXPECT_EQ(Sha256Of(stream).digits, sum) << count;
    }
}

/// A file that grants so many seeks and refuses so many behind them.
class CRefusedSeek : public std::stringbuf {
  public:
    CRefusedSeek(int granted, int refused)
        : std::stringbuf("abc"), m_granted(granted), m_refused(refused) {}

  protected:
    pos_type seekoff(off_type offset, std::ios::seekdir from, std::ios::openmode which) override {
        if (m_granted-- > 0 || m_refused-- <= 0)
            return std::stringbuf::seekoff(offset, from, which);
        errno = EIO;
        return pos_type(off_type(-1));
    }
    pos_type seekpos(pos_type position, std::ios::openmode which) override {
        return seekoff(off_type(position), std::ios::beg, which);
    }

  private:
    int m_granted;
    int m_refused;
};

TEST(Sum, IsNoneWhereTheStreamMayStandAnywhere) {
    for (const int granted : {1, 2, 3, 4}) {
        CRefusedSeek file(granted, 100);
        std::istream stream(&file);
        SCOPED_TRACE(granted);
        ExpectLackOfBytes(Sha256Of(stream), EIO);
    }
    for (const int granted : {0, 1, 2, 3, 4}) { // it stands where it stood
        CRefusedSeek file(granted, 1);
        std::istream stream(&file);
        EXPECT_EQ(Sha256Of(stream).digits, kSumOfAbc) << granted;
    }
    CRefusedSeek pipe(0, 100);
    std::istream piped(&pipe);
    EXPECT_EQ(Sha256Of(piped).digits, kSumOfAbc);
    std::istringstream notAtItsFirstByte("abc");
    notAtItsFirstByte.setstate(std::ios::failbit);
    ExpectLackOfBytes(Sha256Of(notAtItsFirstByte), 0);
}

TEST(Sum, OfAStreamThatCannotBeReadIsNone) {
    std::istringstream stream("abc");
    stream.setstate(std::ios::badbit);
    ExpectLackOfBytes(Sha256Of(stream), 0);
    const CTemporaryFolder folder;
    ExpectLackOfBytes(Sha256OfFile(folder.File(L"missing")), ENOENT);
    EXPECT_EQ(Sha256OfFile(folder.Path()).lack, SSum::ELack::Bytes);
}

TEST(Sum, ThatIsLackingIsTold) {
    const auto told = [](SSum::ELack lack, int error) {
        return DescribeLackOfSum({{}, lack, error}, "cannot be read", "its SHA-256 sum");
    };
    EXPECT_EQ(told(SSum::ELack::Bytes, EIO), "cannot be read: Input/output error");
    EXPECT_EQ(told(SSum::ELack::Bytes, 0),
              "cannot be read: the system did not give all of its bytes");
    EXPECT_EQ(told(SSum::ELack::Memory, 0),
              "its SHA-256 sum cannot be computed: not enough memory");
    EXPECT_EQ(told(SSum::ELack::Hashing, 0),
              "its SHA-256 sum cannot be computed: the system does not offer it");
}

// As sha256sum prints files of these names.
TEST(ManifestLine, EscapesNamesAsSha256sumDoes) {
    EXPECT_EQ(ManifestLine(kSumOfAbc, L" a b"), kSumOfAbc + "   a b\n");
    EXPECT_EQ(ManifestLine(kSumOfAbc, L"s/\u00B0\U0001F4A1"),
              kSumOfAbc + "  s/\xC2\xB0\xF0\x9F\x92\xA1\n");
    EXPECT_EQ(ManifestLine(kSumOfAbc, L"d\ne"), "\\" + kSumOfAbc + "  d\\ne\n");
    EXPECT_EQ(ManifestLine(kSumOfAbc, L"f\rg"), "\\" + kSumOfAbc + "  f\\rg\n");
    EXPECT_EQ(ManifestLine(kSumOfAbc, L"b\\c"),
              kPathSeparator == L'\\' ? kSumOfAbc + "  b/c\n" : "\\" + kSumOfAbc + "  b\\\\c\n");
    EXPECT_EQ(ManifestLine(kSumOfAbc, std::wstring(L"x") + wchar_t{0xD800}), std::nullopt);
}

void ExpectEntry(const std::string& line, const std::string& shownName, const std::string& name) {
    const auto entry = ParseManifestLine(line);
    ASSERT_TRUE(entry) << line;
    EXPECT_EQ(entry->sum, kSumOfAbc);
    EXPECT_EQ(entry->shownName, shownName);
    EXPECT_EQ(entry->name, name);
}

TEST(ManifestLine, IsReadBack) {
    ExpectEntry(kSumOfAbc + "  a", "a", "a");
    ExpectEntry(kSumOfAbc + " *a", "a", "a");
    ExpectEntry(kSumOfAbc + "   a ", " a ", " a ");
    ExpectEntry(kSumOfAbc + "  b\\c", "b\\c", "b\\c");
    ExpectEntry("\\" + kSumOfAbc + "  b\\\\c\\nd\\re", "\\b\\\\c\\nd\\re", "b\\c\nd\re");
    std::string upper = kSumOfAbc;
    for (char& c : upper)
        c = c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c;
    ExpectEntry(upper + "  a", "a", "a");
}

TEST(ManifestLine, ThatIsNoneIsRefused) {
    const std::string sum = kSumOfAbc;
    const std::string lines[] = {"",
                                 "\\",
                                 "junk",
                                 sum,
                                 sum + "  ",
                                 sum + " a",
                                 sum + "\ta",
                                 sum + " -a",
                                 sum + "* a",
                                 sum.substr(1) + "  a",
                                 "0" + sum + "  a",
                                 " " + sum + "  a",
                                 "g" + sum.substr(1) + "  a",
                                 "/" + sum.substr(1) + "  a",
                                 ":" + sum.substr(1) + "  a",
                                 "@" + sum.substr(1) + "  a",
                                 "G" + sum.substr(1) + "  a",
                                 "`" + sum.substr(1) + "  a",
                                 sum + "  a" + std::string(1, '\0'),
                                 "\\" + sum + "  a\\",
                                 "\\" + sum + "  a\\t",
                                 "SHA256 (a) = " + sum};
    for (const std::string& line : lines)
        EXPECT_FALSE(ParseManifestLine(line)) << line;
}

class CAnswers : public CVerificationListener {
  public:
    using EAnswer = SVerifiedFile::EAnswer;
    void OnFile(const SVerifiedFile& file) override {
        const char* const answers[] = {"OK", "differs", "missing", "unreadable"};
        lines.push_back(file.name + ": " + answers[static_cast<int>(file.answer)] +
                        (file.problem.empty() ? "" : ", " + file.problem));
    }
    void OnBadLine(std::uint64_t number) override {
        lines.push_back("bad line " + std::to_string(number));
    }
    std::vector<std::string> lines;
};

class Verification : public testing::Test {
  protected:
    std::string Name(const std::wstring& name) const {
        return WideToShownUtf8(m_folder.File(name));
    }
    std::string Line(const std::string& sum, const std::wstring& name) const {
        return ManifestLine(sum, m_folder.File(name)).value();
    }
    /// The name as the manifest has it.
    std::string Listed(const std::wstring& name) const {
        return ParseManifestLine(Line(kSumOfAbc, name).substr(0, Line(kSumOfAbc, name).size() - 1))
            .value()
            .shownName;
    }
    SVerification Run(const std::string& manifest) {
        WriteText(m_folder.File(L"sums"), manifest);
        m_answers.lines.clear();
        return VerifyManifest(m_folder.File(L"sums"), m_answers);
    }
    using Lines = std::vector<std::string>;

    CTemporaryFolder m_folder;
    CAnswers m_answers;
};

TEST_F(Verification, ComparesEveryFile) {
    WriteText(m_folder.File(L"a b"), "abc");
    WriteText(m_folder.File(L"c"), "");
    SVerification answer = Run(Line(kSumOfAbc, L"a b") + Line(kSumOfNothing, L"c"));
    EXPECT_EQ(answer.end, EVerificationEnd::AllRight);
    EXPECT_EQ(answer.error, "");
    EXPECT_EQ(answer.right, 2U);
    EXPECT_EQ(m_answers.lines, (Lines{Listed(L"a b") + ": OK", Listed(L"c") + ": OK"}));

    WriteText(m_folder.File(L"c"), "x");
    ASSERT_TRUE(CreateFolders(m_folder.File(L"d")));
    answer = Run(Line(kSumOfAbc, L"e") + Line(kSumOfAbc, L"c/e") + Line(kSumOfAbc, L"d") +
                 Line(kSumOfNothing, L"c") + Line(kSumOfAbc, L"a b"));
    EXPECT_EQ(answer.end, EVerificationEnd::SomeWrong);
    EXPECT_EQ(answer.error, "");
    EXPECT_EQ(answer.right, 1U);
    EXPECT_EQ(answer.differing, 2U);
    EXPECT_EQ(answer.missing, 2U);
    EXPECT_EQ(m_answers.lines, (Lines{Listed(L"e") + ": missing", Listed(L"c/e") + ": missing",
                                      Listed(L"d") + ": unreadable, cannot be read: Is a directory",
                                      Listed(L"c") + ": differs", Listed(L"a b") + ": OK"}));
}

TEST_F(Verification, EachWrongAnswerAloneIsNoSuccess) {
    WriteText(m_folder.File(L"a"), "abc");
    const std::string right = Line(kSumOfAbc, L"a");
    EXPECT_EQ(Run(right).end, EVerificationEnd::AllRight);
    for (const std::string& wrong : {Line(kSumOfNothing, L"a"), Line(kSumOfAbc, L"b"),
                                     kSumOfAbc + "  \xFF\n", std::string("junk\n")})
        EXPECT_EQ(Run(right + wrong).end, EVerificationEnd::SomeWrong) << wrong;
}

TEST_F(Verification, TakesWhatAnEditorOrAUserLeaves) {
    WriteText(m_folder.File(L"a"), "abc");
    std::string line = Line(kSumOfAbc, L"a");
    line.pop_back();
    for (const std::string& manifest :
         {line, line + "\r\n", "# sums\n\n" + line + "\n\n", "\r\n" + line + "\r\n# end"}) {
        EXPECT_EQ(Run(manifest).end, EVerificationEnd::AllRight) << manifest;
        EXPECT_EQ(m_answers.lines, Lines{Listed(L"a") + ": OK"});
    }
}

TEST_F(Verification, NamesEveryLineThatIsNone) {
    WriteText(m_folder.File(L"a"), "abc");
    const std::string right = Line(kSumOfAbc, L"a");
    const SVerification answer =
        Run("# sums\njunk\n" + right + "\n" + right.substr(1) + right + kSumOfAbc);
    EXPECT_EQ(answer.end, EVerificationEnd::SomeWrong);
    EXPECT_EQ(answer.error, "");
    EXPECT_EQ(answer.right, 2U);
    EXPECT_EQ(answer.badLines, 3U);
    EXPECT_EQ(m_answers.lines, (Lines{"bad line 2", Listed(L"a") + ": OK", "bad line 5",
                                      Listed(L"a") + ": OK", "bad line 7"}));
}

TEST_F(Verification, TakesLinesUpToTheirLimit) {
    const std::string longest =
        kSumOfAbc + "  " + std::string(kLongestManifestLine - kSumOfAbc.size() - 2, 'n');
    SVerification answer = Run(longest + "\n" + longest + "n\n" + longest);
    EXPECT_EQ(answer.badLines, 1U);
    EXPECT_EQ(answer.differing + answer.missing, 2U);
    ASSERT_EQ(m_answers.lines.size(), 3U);
    EXPECT_EQ(m_answers.lines[1], "bad line 2");
}

TEST_F(Verification, AManifestWithoutSumsIsWrong) {
    for (const char* manifest : {"", "\n", "# sums\n"}) {
        const SVerification answer = Run(manifest);
        EXPECT_EQ(answer.end, EVerificationEnd::SomeWrong);
        EXPECT_EQ(answer.error, "the manifest " + Name(L"sums") + " holds no sum");
    }
    EXPECT_EQ(Run("junk").error, "");
}

TEST_F(Verification, AManifestThatDoesNotOpenIsNamed) {
    SVerification answer = VerifyManifest(m_folder.File(L"none"), m_answers);
    EXPECT_EQ(answer.end, EVerificationEnd::NothingToDo);
    EXPECT_EQ(answer.error,
              "the manifest " + Name(L"none") +
                  " cannot be read: No such file or directory: give a file that can be read");
    answer = VerifyManifest(m_folder.Path(), m_answers);
    EXPECT_EQ(answer.end, EVerificationEnd::NothingToDo);
    EXPECT_EQ(answer.error, "the manifest " + Name(L"") +
                                " cannot be read: Is a directory: give a file that can be read");
}

#ifndef _WIN32
// The first page of a process's memory cannot be read.
TEST_F(Verification, FilesThatFailWhileTheyAreReadAreNoSuccess) {
    WriteText(m_folder.File(L"a"), "abc");
    const SVerification answer = Run(Line(kSumOfAbc, L"a") + kSumOfAbc + "  /proc/self/mem\n");
    EXPECT_EQ(answer.end, EVerificationEnd::SomeWrong);
    EXPECT_EQ(answer.differing, 1U);
    EXPECT_EQ(m_answers.lines,
              (Lines{Listed(L"a") + ": OK",
                     "/proc/self/mem: unreadable, cannot be read: Input/output error"}));

    const std::wstring shorterThanTold = L"/sys/devices/system/cpu/possible";
    ASSERT_TRUE(PathExists(shorterThanTold));
    EXPECT_EQ(
        VerifyManifest(shorterThanTold, m_answers).error,
        "the manifest /sys/devices/system/cpu/possible cannot be read: the system did not give "
        "all of its bytes");
    m_answers.lines.clear();
    const SVerification ofManifest = VerifyManifest(L"/proc/self/mem", m_answers);
    EXPECT_EQ(ofManifest.end, EVerificationEnd::SomeWrong);
    EXPECT_EQ(ofManifest.error, "the manifest /proc/self/mem cannot be read: Input/output error");
    EXPECT_EQ(m_answers.lines, Lines{});
}

TEST_F(Verification, ANameThatIsNotUtf8IsNamed) {
    const SVerification answer = Run(kSumOfAbc + "  \xFF\n");
    EXPECT_EQ(answer.differing, 1U);
    EXPECT_EQ(m_answers.lines, Lines{"\xFF: unreadable, its name is not valid UTF-8"});
}
#endif

} // namespace
} // namespace trevolt
