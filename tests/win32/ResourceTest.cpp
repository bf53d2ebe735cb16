// What lies in the program file: texts, templates, icon and manifest.
#include <cstring>

#include "tests/win32/WindowFixture.h"
#include "win32/Resource.h"
#include "win32/Version.h"

namespace trevolt {
namespace {

/// A template as DIALOGEX stores it: 16-bit fields and texts, items aligned to 4 bytes.
class CTemplate {
  public:
    explicit CTemplate(const test::Bytes& bytes) : m_bytes(bytes) {
        Skip(16); // version, help id, styles
        m_count = Word();
        Skip(8);    // place and size
        SkipName(); // menu
        SkipName(); // class
        m_title = Text();
        Skip(6); // the font's size, weight, and slant with character set
        Text();
    }

    const std::wstring& Title() const { return m_title; }

    struct SItem {
        std::uint32_t style;
        std::uint32_t id;
        std::wstring text;
    };
    std::vector<SItem> Items() {
        std::vector<SItem> items;
        for (int i = 0; i < m_count; ++i) {
            m_at = (m_at + 3) / 4 * 4;
            Skip(8); // help id, extended style
            SItem item{};
            item.style = Dword();
            Skip(8); // place and size
            item.id = Dword();
            SkipName(); // class
            item.text = m_bytes.at(m_at) == std::byte{0xFF} ? (Skip(4), L"") : Text();
            Skip(Word()); // creation data
            items.push_back(item);
        }
        return items;
    }

  private:
    std::uint16_t Word() {
        std::uint16_t word = 0;
        for (int shift : {0, 8})
            word = static_cast<std::uint16_t>(word | std::to_integer<int>(m_bytes.at(m_at++))
                                                         << shift);
        return word;
    }
    std::uint32_t Dword() {
        const std::uint32_t low = Word();
        return low | static_cast<std::uint32_t>(Word()) << 16U;
    }
    std::wstring Text() {
        std::wstring text;
        for (std::uint16_t c = Word(); c != 0; c = Word())
            text.push_back(static_cast<wchar_t>(c));
        return text;
    }
    void SkipName() {
        if (Word() == 0xFFFF) {
            Skip(2);
            return;
        }
        m_at -= 2;
        Text();
    }
    void Skip(std::size_t count) { m_at += count; }

    const test::Bytes& m_bytes;
    std::size_t m_at = 0;
    int m_count = 0;
    std::wstring m_title;
};

class TrevoltResources : public testing::Test {
  protected:
    TrevoltResources()
        : m_module(LoadLibraryExW((GetModuleFolder() + L"Trevolt.exe").c_str(), nullptr,
                                  LOAD_LIBRARY_AS_DATAFILE)) {
        EXPECT_NE(m_module, nullptr);
    }
    ~TrevoltResources() override { FreeLibrary(m_module); }

    test::Bytes Find(const wchar_t* type, int id) const {
        const HRSRC found = FindResourceW(m_module, MAKEINTRESOURCEW(id), type);
        EXPECT_NE(found, nullptr) << id;
        if (found == nullptr)
            return {};
        const auto* data =
            static_cast<const std::byte*>(LockResource(LoadResource(m_module, found)));
        return {data, data + SizeofResource(m_module, found)};
    }

    HMODULE m_module;
};

TEST_F(TrevoltResources, AboutEntryIsString101) {
    wchar_t text[64]{};
    EXPECT_EQ(LoadStringW(m_module, 101, text, 64), 17);
    EXPECT_STREQ(text, L"&About Trevolt...");
}

TEST_F(TrevoltResources, DialogHoldsItsControlsWithTheirDefaultTexts) {
    const test::Bytes bytes = Find(RT_DIALOG, 102);
    CTemplate dialog(bytes);
    EXPECT_EQ(dialog.Title(), L"\u7CFB\u6570\u65CB\u8F6C");
    const std::pair<std::uint32_t, std::wstring> expected[] = {
        {1017, L"By Cabinet"},
        {1018, L"\u6309\u6574\u5C4F"},
        {1019, L"\u7BB1\u4F53\u5BBD"},
        {1002, L""},
        {1020, L"Cabinet Height"},
        {1004, L""},
        {1000, L"\u65CB\u8F6C\u89D2\u5EA6"},
        {1021, L""},
        {1003, L"Coefficient before Adjustment"},
        {1007, L""},
        {1005, L"\u9009\u62E9\u8DEF\u5F84"},
        {1006, L"\u8C03\u6574\u540E\u7CFB\u6570"},
        {1010, L""},
        {1013, L"\u9009\u62E9\u8DEF\u5F84"},
        {1001, L"\u5F00\u59CB"},
        {1008, L""},
        {0xFFFFFFFF, L"" TREVOLT_TITLE_TEXT},
    };
    const std::vector<CTemplate::SItem> items = dialog.Items();
    ASSERT_EQ(items.size(), std::size(expected));
    for (std::size_t i = 0; i < items.size(); ++i) {
        EXPECT_EQ(items[i].id, expected[i].first);
        EXPECT_EQ(items[i].text, expected[i].second) << items[i].id;
        // The arrow keys walk through the two modes only.
        EXPECT_EQ((items[i].style & WS_GROUP) != 0, items[i].id != 1018) << items[i].id;
    }
}

TEST_F(TrevoltResources, AboutBoxHasItsTexts) {
    const test::Bytes bytes = Find(RT_DIALOG, 100);
    CTemplate about(bytes);
    EXPECT_EQ(about.Title(), L"About Trevolt");
    const std::vector<CTemplate::SItem> items = about.Items();
    ASSERT_EQ(items.size(), 3U);
    EXPECT_EQ(items[1].text, L"" TREVOLT_ABOUT_TEXT);
    EXPECT_EQ(items[2].text, L"OK");
    EXPECT_EQ(items[2].id, static_cast<std::uint32_t>(IDOK));
}

/// The resource's directory entries are those of the icon file but for the last field, which names
/// a resource in place of an offset.
TEST_F(TrevoltResources, Icon128HoldsTheIconFilesPictures) {
    constexpr std::size_t kHead = 6;
    constexpr std::size_t kFileEntry = 16;
    constexpr std::size_t kGroupEntry = 14;
    const test::Bytes file = test::ReadFile(test::Sample(L"../win32/Trevolt.ico"));
    const test::Bytes group = Find(RT_GROUP_ICON, 128);
    const std::vector<int> sizes{16, 20, 24, 32, 40, 48, 64, 0 /* 256 */};
    ASSERT_EQ(group.size(), kHead + kGroupEntry * sizes.size());
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        const std::byte* entry = group.data() + kHead + kGroupEntry * i;
        EXPECT_EQ(std::to_integer<int>(entry[0]), sizes[i]);
        EXPECT_EQ(std::to_integer<int>(entry[1]), sizes[i]);
        const std::byte* fileEntry = file.data() + kHead + kFileEntry * i;
        std::uint32_t size = 0;
        std::uint32_t offset = 0;
        std::uint16_t id = 0;
        std::memcpy(&size, fileEntry + 8, sizeof size);
        std::memcpy(&offset, fileEntry + 12, sizeof offset);
        std::memcpy(&id, entry + 12, sizeof id);
        ASSERT_LE(offset + size, file.size());
        EXPECT_EQ(Find(RT_ICON, id), test::Bytes(file.data() + offset, file.data() + offset + size))
            << sizes[i];
    }
}

TEST_F(TrevoltResources, ManifestAsksForWhatTheWindowNeeds) {
    const test::Bytes bytes = Find(RT_MANIFEST, 1);
    const std::string manifest(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    for (const char* part : {"name=\"Microsoft.Windows.Common-Controls\" version=\"6.0.0.0\"",
                             ">PerMonitorV2, PerMonitor</dpiAwareness>", ">true</longPathAware>",
                             ">UTF-8</activeCodePage>", "level=\"asInvoker\"",
                             "name=\"Trevolt\" version=\"" TREVOLT_VERSION_TEXT "\""})
        EXPECT_NE(manifest.find(part), std::string::npos) << part;
}

TEST_F(TrevoltResources, VersionIsTheProjects) {
    test::Bytes bytes = Find(RT_VERSION, VS_VERSION_INFO);
    VS_FIXEDFILEINFO* numbers = nullptr;
    UINT size = 0;
    ASSERT_TRUE(VerQueryValueW(bytes.data(), L"\\", reinterpret_cast<void**>(&numbers), &size));
    constexpr DWORD kFields[] = {TREVOLT_VERSION_FIELDS};
    EXPECT_EQ(numbers->dwFileVersionMS, kFields[0] << 16U | kFields[1]);
    EXPECT_EQ(numbers->dwFileVersionLS, kFields[2] << 16U | kFields[3]);
    EXPECT_EQ(numbers->dwProductVersionMS, numbers->dwFileVersionMS);
    EXPECT_EQ(numbers->dwProductVersionLS, numbers->dwFileVersionLS);
    for (const wchar_t* name : {L"FileVersion", L"ProductVersion"}) {
        wchar_t* text = nullptr;
        const std::wstring path = std::wstring(L"\\StringFileInfo\\040904B0\\") + name;
        ASSERT_TRUE(
            VerQueryValueW(bytes.data(), path.c_str(), reinterpret_cast<void**>(&text), &size));
        EXPECT_EQ(std::wstring(text), L"" TREVOLT_VERSION_TEXT) << name;
    }
}

} // namespace
} // namespace trevolt
