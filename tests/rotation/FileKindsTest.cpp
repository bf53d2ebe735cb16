#include "trevolt/FileKinds.h"

#include <gtest/gtest.h>

#include "app/rotation/StoredKinds.h"
#include "common/TextConversion.h"

namespace trevolt {
namespace {

std::wstring LoadKindOf(std::wstring_view name) {
    const SFileKind* kind = FindLoadKind(name);
    return kind == nullptr ? L"" : std::wstring(kind->extension);
}

std::wstring ExportKindOf(std::wstring_view name) {
    const SFileKind* kind = FindExportKind(name);
    return kind == nullptr ? L"" : std::wstring(kind->extension);
}

TEST(FileKinds, AreSearchedInTheLoadsOrder) {
    const std::vector<std::wstring> order{L".9fcoef", L".9bcoef", L".9wcoef",
                                          L".3wcoef", L".3fcoef", L".3bcoef",
                                          L".cccoef", L".4wcoef", L".12wcoef"};
    ASSERT_EQ(FileKinds().size(), order.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        EXPECT_EQ(FileKinds()[i].extension, order[i]);
        EXPECT_NE(FileKinds()[i].load, nullptr);
        EXPECT_NE(FileKinds()[i].save, nullptr);
        EXPECT_NE(FileKinds()[i].readSize, nullptr);
        EXPECT_EQ(LoadKindOf(L"cab" + order[i]), order[i]);
        EXPECT_EQ(ExportKindOf(L"cab" + order[i]), order[i]);
        // With any later extension in the same name, wherever it stands, the earlier one wins.
        for (std::size_t later = i + 1; later < order.size(); ++later)
            EXPECT_EQ(LoadKindOf(L"cab" + order[later] + order[i]), order[i]);
    }
}

TEST(FileKinds, AreSearchedInAnotherOrderForTheExport) {
    const std::vector<std::wstring> order{L".9fcoef",  L".9bcoef", L".9wcoef",
                                          L".12wcoef", L".3wcoef", L".4wcoef",
                                          L".3fcoef",  L".3bcoef", L".cccoef"};
    for (std::size_t i = 0; i < order.size(); ++i)
        for (std::size_t later = i + 1; later < order.size(); ++later)
            EXPECT_EQ(ExportKindOf(L"cab" + order[later] + order[i]), order[i]);
    // Such a name is read as one kind and written as another.
    EXPECT_EQ(LoadKindOf(L"cab.12wcoef.3wcoef"), L".3wcoef");
    EXPECT_EQ(ExportKindOf(L"cab.12wcoef.3wcoef"), L".12wcoef");
}

TEST(FileKinds, OccurAnywhereInANameInAnyCase) {
    EXPECT_EQ(LoadKindOf(L"a.9FCOEF"), L".9fcoef");
    EXPECT_EQ(ExportKindOf(L"A.12WCoeF"), L".12wcoef");
    EXPECT_EQ(LoadKindOf(L"a.9fcoef.bak"), L".9fcoef");
    EXPECT_EQ(LoadKindOf(L"/walls/old.9fcoef/readme.txt"), L".9fcoef");
    EXPECT_EQ(LoadKindOf(L".3bcoef"), L".3bcoef");
    EXPECT_EQ(LoadKindOf(L"a.9\uFF26coef"), L""); // a full-width F
}

TEST(FileKinds, NeedTheDotBeforeTheDigit) {
    EXPECT_EQ(LoadKindOf(L"x.12wcoef"), L".12wcoef");
    EXPECT_EQ(ExportKindOf(L"x.12wcoef"), L".12wcoef");
    EXPECT_EQ(LoadKindOf(L"x9fcoef"), L"");
    EXPECT_EQ(LoadKindOf(L"x.19fcoef"), L"");
    EXPECT_EQ(LoadKindOf(L"x.coef"), L"");
    EXPECT_EQ(LoadKindOf(L""), L"");
    EXPECT_EQ(ExportKindOf(L"notes.txt"), L"");
}

TEST(FileKinds, LowersAToZOnly) {
    EXPECT_EQ(ToLowerAscii(L"AZaz09.\u00C4\u0130\uFF21"), L"azaz09.\u00C4\u0130\uFF21");
}

TEST(FileKinds, TellWhatAStoredPixelTakesAndWhatAnOutputThatDoesNotOpenAnswers) {
    struct SExpected {
        const wchar_t* name;
        std::uint32_t elementBytes;
        Status openFailed;
    };
    for (const SExpected& expected :
         {SExpected{L"a.9fcoef", 36, E_COEF_OPENFAILED},
          SExpected{L"a.3fcoef", 12, E_COEF_OPENFAILED},
          SExpected{L"a.9bcoef", 9, E_COEF_OPENFAILED},
          SExpected{L"a.3bcoef", 3, E_COEF_OPENFAILED},
          SExpected{L"a.9wcoef", 18, E_COEF_OPENFAILED}, SExpected{L"a.3wcoef", 6, E_HANDLE},
          SExpected{L"a.4wcoef", 8, E_HANDLE}, SExpected{L"a.12wcoef", 24, E_HANDLE}}) {
        const SStoredKind* const kind = FindStoredKind(expected.name);
        ASSERT_NE(kind, nullptr);
        EXPECT_EQ(kind->elementBytes, expected.elementBytes);
        EXPECT_EQ(kind->openFailed, expected.openFailed);
    }
    EXPECT_EQ(FindStoredKind(L"a.cccoef"), nullptr);
}

TEST(FileKinds, NamesTheOutputAtTheFirstDot) {
    EXPECT_EQ(ExportName(L"Cab_01.9fcoef", L"90\u00B0"), L"Cab_01-90\u00B0.9fcoef");
    EXPECT_EQ(ExportName(L"a.b.3wcoef", L"90\u00B0"), L"a-90\u00B0.b.3wcoef");
    EXPECT_EQ(ExportName(L"A.9FCOEF", L"180\u00B0"), L"A-180\u00B0.9FCOEF");
    EXPECT_EQ(ExportName(L".9fcoef", L"270\u00B0"), L"-270\u00B0.9fcoef");
    EXPECT_EQ(ExportName(L"nodot", L"90\u00B0"), L"nodot-90\u00B0");
    EXPECT_EQ(ExportName(L"\u7BB1\u4F53.9fcoef", L"90\u00B0"), L"\u7BB1\u4F53-90\u00B0.9fcoef");
    EXPECT_EQ(ExportName(L"Cab_01-90\u00B0.9fcoef", L"90\u00B0"),
              L"Cab_01-90\u00B0-90\u00B0.9fcoef");
    EXPECT_EQ(ExportName(L"a.9fcoef", L""), L"a-.9fcoef");
}

} // namespace
} // namespace trevolt
