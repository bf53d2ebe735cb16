#include "platform/SettingsProfile.h"

#include <filesystem>

#include <gtest/gtest.h>

#ifndef _WIN32
#include <unistd.h>
#endif

#include "platform/FileSystem.h"
#include "tests/support/TestFiles.h"

namespace trevolt {
namespace {

using test::CTemporaryFolder;

/// The bytes of a settings file as the program itself leaves it.
std::string Utf16(std::u16string_view text) {
    std::string bytes = "\xFF\xFE";
    for (const char16_t unit : text) {
        bytes.push_back(static_cast<char>(unit & 0xFF));
        bytes.push_back(static_cast<char>(unit >> 8));
    }
    return bytes;
}

class SettingsProfile : public testing::Test {
  protected:
    void Fill(std::string_view bytes) { test::WriteText(m_path, bytes); }
    std::string Bytes() const { return test::ReadText(m_path); }

    CTemporaryFolder m_folder;
    std::wstring m_path = m_folder.File(L"Trevo.ini");
    CSettingsProfile m_profile{m_path, L"coefInfo"};
};

TEST_F(SettingsProfile, MissingFileSectionAndKeyReadAsEmpty) {
    EXPECT_EQ(m_profile.ReadString(L"BoxWidth"), L"");
    EXPECT_FALSE(test::FileExists(m_path));
    Fill(Utf16(u"[other]\r\nBoxWidth=3\r\n"));
    EXPECT_EQ(m_profile.ReadString(L"BoxWidth"), L"");
    Fill(Utf16(u"[coefInfo]\r\nBoxHeight=3\r\n"));
    EXPECT_EQ(m_profile.ReadString(L"BoxWidth"), L"");
}

TEST_F(SettingsProfile, WritesUtf16WithItsMark) {
    ASSERT_TRUE(m_profile.WriteString(L"BoxWidth", L"128"));
    ASSERT_TRUE(m_profile.WriteString(L"OriCoefPath", L"C:\\\u7BB1\u4F53 \u00E9\\"));
    ASSERT_TRUE(m_profile.WriteString(L"BoxWidth", L"64"));
    EXPECT_EQ(Bytes(),
              Utf16(u"[coefInfo]\r\nBoxWidth=64\r\nOriCoefPath=C:\\\u7BB1\u4F53 \u00E9\\\r\n"));
    EXPECT_EQ(m_profile.ReadString(L"BoxWidth"), L"64");
    EXPECT_EQ(m_profile.ReadString(L"OriCoefPath"), L"C:\\\u7BB1\u4F53 \u00E9\\");
}

TEST_F(SettingsProfile, KeepsCharactersBeyondTheBasicPlane) {
    ASSERT_TRUE(m_profile.WriteString(L"OriCoefPath", L"D:\\\U0001F4C1\\"));
    EXPECT_EQ(Bytes(), Utf16(u"[coefInfo]\r\nOriCoefPath=D:\\\U0001F4C1\\\r\n"));
    EXPECT_EQ(m_profile.ReadString(L"OriCoefPath"), L"D:\\\U0001F4C1\\");
}

TEST_F(SettingsProfile, NamesAreFoundWithoutRegardToCaseAndTheFirstWins) {
    Fill(Utf16(u"[COEFINFO]\r\nboxwidth=1\r\nBoxWidth=2\r\n"));
    EXPECT_EQ(m_profile.ReadString(L"BoxWidth"), L"1");
}

TEST_F(SettingsProfile, BlanksAreTrimmedAndOnePairOfQuotesStripped) {
    Fill(Utf16(u"[coefInfo]\r\n"
               u"a =  1 2 \t\r\n"
               u"b=\"D:\\x y\\\"\r\n"
               u"c='single'\r\n"
               u"d=\"\"twice\"\"\r\n"
               u"e=\" inside \"\r\n"
               u"f=\r\n"));
    EXPECT_EQ(m_profile.ReadString(L"a"), L"1 2");
    EXPECT_EQ(m_profile.ReadString(L"b"), L"D:\\x y\\");
    EXPECT_EQ(m_profile.ReadString(L"c"), L"single");
    EXPECT_EQ(m_profile.ReadString(L"d"), L"\"twice\"");
    EXPECT_EQ(m_profile.ReadString(L"e"), L" inside ");
    EXPECT_EQ(m_profile.ReadString(L"f"), L"");
}

TEST_F(SettingsProfile, CommentsStandAtTheStartOfALine) {
    Fill(Utf16(u"[coefInfo]\r\n;BoxWidth=1\r\nBoxWidth=2 ; kept\r\n"));
    EXPECT_EQ(m_profile.ReadString(L"BoxWidth"), L"2 ; kept");
}

TEST_F(SettingsProfile, ValuesAreCutAt999Characters) {
    ASSERT_TRUE(m_profile.WriteString(L"OriCoefPath", std::wstring(1200, L'x')));
    EXPECT_EQ(m_profile.ReadString(L"OriCoefPath"), std::wstring(999, L'x'));
}

TEST_F(SettingsProfile, EverythingElseInTheFileStays) {
    Fill(Utf16(u"; mine\r\n[other]\r\nBoxWidth=7\r\n[coefInfo]\r\nBoxWidth=1\r\nExtra=x\r\n"
               u"[last]\r\ny=z\r\n"));
    ASSERT_TRUE(m_profile.WriteString(L"BoxWidth", L"5"));
    EXPECT_EQ(Bytes(),
              Utf16(u"; mine\r\n[other]\r\nBoxWidth=7\r\n[coefInfo]\r\nBoxWidth=5\r\nExtra=x\r\n"
                    u"[last]\r\ny=z\r\n"));
}

TEST_F(SettingsProfile, NewKeyGoesToItsOwnSection) {
    Fill(Utf16(u"[coefInfo]\r\nBoxWidth=1\r\n[last]\r\ny=z\r\n"));
    ASSERT_TRUE(m_profile.WriteString(L"y", L"own"));
    EXPECT_EQ(m_profile.ReadString(L"y"), L"own");
    EXPECT_EQ((CSettingsProfile{m_path, L"last"}.ReadString(L"y")), L"z");
}

TEST_F(SettingsProfile, SectionHeadingAsTheLastLineIsUsed) {
    Fill(Utf16(u"[coefInfo]\r\n"));
    ASSERT_TRUE(m_profile.WriteString(L"BoxWidth", L"5"));
    EXPECT_EQ(Bytes(), Utf16(u"[coefInfo]\r\nBoxWidth=5\r\n"));
}

TEST_F(SettingsProfile, RewritesUtf8AsUtf16WithTheSameContent) {
    for (const std::string mark : {"", "\xEF\xBB\xBF"}) {
        Fill(mark + "[coefInfo]\r\nOriCoefPath=D:\\\xE7\xAE\xB1\\\r\nBoxWidth=1\r\n");
        EXPECT_EQ(m_profile.ReadString(L"OriCoefPath"), L"D:\\\u7BB1\\");
        ASSERT_TRUE(m_profile.WriteString(L"BoxWidth", L"2"));
        EXPECT_EQ(Bytes(), Utf16(u"[coefInfo]\r\nOriCoefPath=D:\\\u7BB1\\\r\nBoxWidth=2\r\n"));
    }
}

TEST_F(SettingsProfile, ReadsAnotherEncodingAsItIsAndRewritesItBeforeTheFirstWrite) {
    for (const std::string bytes :
         {"[coefInfo]\nOriCoefPath=D:\\\xC3\xBC\\\nBoxWidth=1\n",
          "\xEF\xBB\xBF[coefInfo]\r\nOriCoefPath=D:\\\xC3\xBC\\\r\nBoxWidth=1",
          "[coefInfo]\r\nOriCoefPath=D:\\\xFC\\\r\nBoxWidth=1\r\n"}) {
        Fill(bytes);
        const CSettingsProfile profile(m_path, L"coefInfo", 1252);
        EXPECT_EQ(profile.ReadString(L"OriCoefPath"), L"D:\\\u00FC\\");
        EXPECT_EQ(profile.ReadString(L"BoxWidth"), L"1");
        EXPECT_EQ(Bytes(), bytes) << "reading changes nothing";
        ASSERT_TRUE(profile.WriteString(L"BoxWidth", L"2"));
        EXPECT_EQ(Bytes(), Utf16(u"[coefInfo]\r\nOriCoefPath=D:\\\u00FC\\\r\nBoxWidth=2\r\n"));
        EXPECT_EQ(profile.ReadString(L"OriCoefPath"), L"D:\\\u00FC\\");
    }
}

TEST_F(SettingsProfile, AnotherEncodingIsReadByTheSameRules) {
    Fill("; mine\n[other]\na=0\n[COEFINFO]\n;b=1\n a = \"1 2\" \nA=3\nc=\n[last]\nd=4\n");
    EXPECT_EQ(m_profile.ReadString(L"A"), L"1 2");
    EXPECT_EQ(m_profile.ReadString(L"b"), L"");
    EXPECT_EQ(m_profile.ReadString(L"c"), L"");
    EXPECT_EQ(m_profile.ReadString(L"d"), L"");
    EXPECT_EQ((CSettingsProfile{m_path, L"none"}.ReadString(L"a")), L"");
    Fill("[coefInfo]\na=\"\n");
    EXPECT_EQ(m_profile.ReadString(L"a"), L"\"");
    Fill("[coefInfo]\na=" + std::string(1200, 'x') + "\n");
    EXPECT_EQ(m_profile.ReadString(L"a"), std::wstring(999, L'x'));
}

TEST_F(SettingsProfile, AFileInACodePageKeepsItsLetters) {
#ifdef _WIN32
    const std::wstring western = L"D:\\M\u00FCller\\Caf\u00E9 \u20AC\\";
    const std::wstring chinese = L"D:\\\u7BB1\u4F53\\\u65CB\u8F6C 1\\";
#else // which knows no code page: every byte is kept as the character of its number
    const std::wstring western = L"D:\\M\u00FCller\\Caf\u00E9 \u0080\\";
    const std::wstring chinese = L"D:\\\u00CF\u00E4\u00CC\u00E5\\\u00D0\u00FD\u00D7\u00AA 1\\";
#endif
    struct SPage {
        unsigned number;
        std::string path;
        std::wstring text;
    };
    const SPage pages[] = {
        {1252, "D:\\M\xFCller\\Caf\xE9 \x80\\", western},
        {936, "D:\\\xCF\xE4\xCC\xE5\\\xD0\xFD\xD7\xAA 1\\", chinese},
        {54321, "D:\\M\xFCller\\", L"D:\\M\u00FCller\\"},
    };
    for (const SPage& page : pages) {
        Fill("[coefInfo]\r\nOriCoefPath=" + page.path + "\r\nBoxWidth=12\r\n");
        const CSettingsProfile profile(m_path, L"coefInfo", page.number);
        EXPECT_EQ(profile.ReadString(L"OriCoefPath"), page.text);
        EXPECT_EQ(profile.ReadString(L"BoxWidth"), L"12");
        ASSERT_TRUE(profile.WriteString(L"BoxHeight", L"3"));
        EXPECT_EQ(Bytes().substr(0, 2), "\xFF\xFE");
        EXPECT_EQ(profile.ReadString(L"OriCoefPath"), page.text);
        EXPECT_EQ(profile.ReadString(L"BoxWidth"), L"12");
    }
}

TEST_F(SettingsProfile, TheLastLineNeedsNoEnd) {
    Fill(Utf16(u"[coefInfo]\r\nBoxWidth=12"));
    EXPECT_EQ(m_profile.ReadString(L"BoxWidth"), L"12");
}

TEST_F(SettingsProfile, AFileTooLargeForSettingsIsLeftAlone) {
    const std::string large = "[coefInfo]\nBoxWidth=1\n" + std::string(5U << 20U, ';');
    Fill(large);
    EXPECT_FALSE(m_profile.WriteString(L"BoxWidth", L"2"));
    EXPECT_TRUE(Bytes() == large);
}

// As UTF-16 it would be too large to be read again.
TEST_F(SettingsProfile, AFileThatWouldGrowTooLargeForSettingsIsLeftAlone) {
    const std::string head = "[coefInfo]\r\nBoxWidth=1\r\n";
    const std::size_t half = (std::size_t{4} << 20) / 2;
    const std::string large = head + std::string(half - head.size() - 2, ';');
    Fill(large);
    EXPECT_FALSE(m_profile.WriteString(L"BoxWidth", L"2"));
    EXPECT_EQ(m_profile.ReadString(L"BoxWidth"), L"1");
    EXPECT_TRUE(Bytes() == large);
    EXPECT_FALSE(test::FileExists(m_path + L".new"));
    Fill(head + std::string(half - head.size() - 3, ';'));
    EXPECT_TRUE(m_profile.WriteString(L"BoxWidth", L"2"));
    EXPECT_EQ(m_profile.ReadString(L"BoxWidth"), L"2");
}

#ifndef _WIN32
TEST_F(SettingsProfile, AValueThatIsNoLineIsNotWritten) {
    const std::string before = Utf16(u"[coefInfo]\r\nBoxWidth=1\r\n");
    Fill(before);
    for (const std::wstring& value :
         {std::wstring(L"1\n[other]"), std::wstring(L"1\r"), std::wstring(1, L'\0')})
        EXPECT_FALSE(m_profile.WriteString(L"BoxWidth", value));
    EXPECT_EQ(Bytes(), before);
}
#endif

#ifdef __linux__
// The first page of a process is nobody's: its memory opens, and the first read fails.
TEST_F(SettingsProfile, AFileThatCannotBeReadIsNotWrittenOver) {
    std::filesystem::create_symlink("/proc/self/mem", m_path);
    EXPECT_EQ(m_profile.ReadString(L"BoxWidth"), L"");
    EXPECT_FALSE(m_profile.WriteString(L"BoxWidth", L"64"));
    EXPECT_TRUE(std::filesystem::is_symlink(m_path));
}
#endif

#ifndef _WIN32
TEST_F(SettingsProfile, TheFileIsReplacedWholeOrStays) {
    ASSERT_TRUE(m_profile.WriteString(L"BoxWidth", L"1"));
    const std::string before = Bytes();
    const std::wstring link = m_folder.File(L"link");
    ASSERT_EQ(::link(ToNativePath(m_path)->c_str(), ToNativePath(link)->c_str()), 0);
    ASSERT_TRUE(m_profile.WriteString(L"BoxWidth", L"2"));
    EXPECT_EQ(test::ReadText(link), before) << "the earlier file itself is not written to";
    EXPECT_EQ(m_profile.ReadString(L"BoxWidth"), L"2");
    EXPECT_EQ(m_folder.Names(), (std::vector<std::wstring>{L"Trevo.ini", L"link"}));

    ASSERT_TRUE(CreateFolders(m_path + L".new")); // where the new one is to be written
    EXPECT_FALSE(m_profile.WriteString(L"BoxWidth", L"3"));
    EXPECT_EQ(m_profile.ReadString(L"BoxWidth"), L"2");
}
#endif

TEST_F(SettingsProfile, WritingToAPlaceThatIsNoneFails) {
    const CSettingsProfile nowhere{m_folder.File(L"missing") + L"/Trevo.ini", L"coefInfo"};
    EXPECT_FALSE(nowhere.WriteString(L"BoxWidth", L"1"));
    EXPECT_EQ(nowhere.ReadString(L"BoxWidth"), L"");
}

} // namespace
} // namespace trevolt
