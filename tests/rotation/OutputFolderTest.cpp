#include "app/rotation/OutputFolder.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>

#include <gtest/gtest.h>

#include <fmt/xchar.h>

#include "platform/Process.h"
#ifndef _WIN32
#include <sys/stat.h>

#include "tests/support/OrdinaryUser.h"
#endif
#include "tests/support/TestFiles.h"
#include "trevolt/FileKinds.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

using namespace test;

constexpr std::uint32_t kNoProcess = 0x7FFFFFF0; ///< above every id that systems give
constexpr std::chrono::hours kWeek{24 * 7};

std::filesystem::path NativeOf(const std::wstring& path) {
    return std::filesystem::path(ToNativePath(path).value());
}

void MakeOld(const std::wstring& path, std::chrono::seconds age) {
    std::filesystem::last_write_time(NativeOf(path),
                                     std::filesystem::file_time_type::clock::now() - age);
}

std::wstring NameOf(const CTemporaryOutput& output) {
    return output.Path().substr(FolderPart(output.Path()).size());
}

TEST(OutputFolder, WhatIsUnderWorkIsOfNoKind) {
    const CTemporaryFolder folder;
    COutputFolder outputs(folder.Path(), true);
    for (const SFileKind& kind : FileKinds()) {
        const auto output = outputs.Begin(L"a" + std::wstring(kind.extension));
        EXPECT_EQ(FindLoadKind(NameOf(*output)), nullptr) << WideToShownUtf8(NameOf(*output));
        EXPECT_TRUE(NameOf(*output).ends_with(L".tmp"));
        EXPECT_TRUE(NameOf(*output).starts_with(L".trevolt-"));
    }
    // Its writer decides by the ending what the file holds.
    const auto extra = outputs.Begin(L"a.9wcoef.9wPCoef");
    EXPECT_EQ(FindLoadKind(NameOf(*extra)), nullptr);
    EXPECT_EQ(FindExportKind(NameOf(*extra)), nullptr);
    EXPECT_TRUE(NameOf(*extra).ends_with(L".9wPCoef"));
    EXPECT_TRUE(NameOf(*outputs.Begin(L"a.9wcoef.9wpcoef")).ends_with(L".tmp"));
}

TEST(OutputFolder, NamesUnderWorkAreShortAndDiffer) {
    const CTemporaryFolder folder;
    COutputFolder outputs(folder.Path(), true);
    COutputFolder others(folder.Path(), true);
    const auto one = outputs.Begin(std::wstring(250, L'a'));
    const auto two = outputs.Begin(L"a");
    EXPECT_NE(one->Path(), two->Path());
    EXPECT_NE(one->Path(), others.Begin(L"a")->Path());
    EXPECT_LE(NameOf(*one).size(), 9U + 4 * 9 + 8);
}

TEST(OutputFolder, AnOutputHasItsNameOnlyWhenItIsKept) {
    for (const bool sync : {true, false}) {
        const CTemporaryFolder folder;
        WriteText(folder.File(L"b"), "earlier");
        COutputFolder outputs(folder.Path(), sync);
        EXPECT_EQ(outputs.IsSynced(), sync);
        {
            const auto kept = outputs.Begin(L"b");
            EXPECT_EQ(kept->FinalName(), L"b");
            EXPECT_EQ(kept->Sync(), ENOENT) << "nothing is written yet";
            WriteText(kept->Path(), "kept");
            const auto left = outputs.Begin(L"c");
            WriteText(left->Path(), "left");
            EXPECT_EQ(kept->Sync(), 0);
            EXPECT_EQ(ReadText(folder.File(L"b")), "earlier");
            EXPECT_TRUE(outputs.Keep(*kept, true).isKept);
            EXPECT_EQ(outputs.SyncNames(), 0);
        }
        EXPECT_EQ(folder.Names(), std::vector<std::wstring>{L"b"});
        EXPECT_EQ(ReadText(folder.File(L"b")), "kept");
    }
}

TEST(OutputFolder, ARefusedNameTellsWhy) {
    const CTemporaryFolder folder;
    COutputFolder outputs(folder.Path(), true);
    const SKeptOutput kept = outputs.Keep(*outputs.Begin(L"b"), true); // which is not written
    EXPECT_FALSE(kept.isKept);
    EXPECT_EQ(kept.error, ENOENT);
    EXPECT_TRUE(kept.sameEntryAs.empty());
}

TEST(OutputFolder, AnOutputOfThisRunIsNotReplacedUnderAnotherName) {
    const CTemporaryFolder folder;
    COutputFolder outputs(folder.Path(), true);
    const auto first = outputs.Begin(L"Cab");
    WriteText(first->Path(), "first");
    ASSERT_TRUE(outputs.Keep(*first, true).isKept);
    // Some folders make two names one file by themselves.
    std::filesystem::create_hard_link(NativeOf(folder.File(L"Cab")),
                                      NativeOf(folder.File(L"other")));
    const auto second = outputs.Begin(L"other");
    WriteText(second->Path(), "second");
    const SKeptOutput kept = outputs.Keep(*second, true);
    EXPECT_FALSE(kept.isKept);
    EXPECT_EQ(kept.sameEntryAs, L"Cab");
    EXPECT_EQ(ReadText(folder.File(L"Cab")), "first");

    const auto third = outputs.Begin(kNamesIgnoreCase ? L"cAB" : L"third");
    WriteText(third->Path(), "third");
    EXPECT_EQ(outputs.Keep(*third, true).isKept, !kNamesIgnoreCase);
    EXPECT_EQ(ReadText(folder.File(L"Cab")), "first");
}

TEST(OutputFolder, WhatEndedRunsLeftIsRemoved) {
    const CTemporaryFolder folder;
    const std::uint32_t realm = ProcessRealm();
    ASSERT_NE(realm, 0U);
    const auto name = [](std::uint32_t ofRealm, std::uint32_t process, const wchar_t* end) {
        return fmt::format(L".trevolt-{:x}-{:x}-1f-a{}", ofRealm, process, end);
    };
    const std::vector<std::wstring> abandoned{
        name(realm, kNoProcess, L".tmp"), name(realm, kNoProcess, L".9wPCoef"),
        name(realm + 1, kNoProcess, L".tmp"), // of another machine, and a week old
        name(realm + 1, ProcessId(), L".9wPCoef")};
    const std::vector<std::wstring> kept{
        name(realm, ProcessId(), L".tmp"), name(realm + 2, kNoProcess, L".tmp"),
        name(0, kNoProcess, L".tmp"), // of nobody knows whom
        // Another program's.
        name(realm, kNoProcess, L".txt"), L"x" + name(realm, kNoProcess, L".tmp"),
        fmt::format(L".trevolt-{:x}-{:x}-1f.tmp", realm, kNoProcess),
        fmt::format(L".trevolt-{:x}-{:x}-1f-a-b.tmp", realm, kNoProcess),
        fmt::format(L".trevolt-{:x}-{:x}-1f-.tmp", realm, kNoProcess),
        fmt::format(L".trevolt-{:x}-{:x}-1g-a.tmp", realm, kNoProcess),
        fmt::format(L".trevolt-0{:08x}-{:x}-1f-a.tmp", realm, kNoProcess), L".trevolt-.tmp",
        L".trevolt.tmp", L"cab.3bcoef"};
    for (const auto* names : {&abandoned, &kept})
        for (const std::wstring& file : *names)
            WriteText(folder.File(file), "x");
    MakeOld(folder.File(abandoned[2]), kWeek + std::chrono::minutes(1));
    MakeOld(folder.File(abandoned[3]), kWeek + std::chrono::minutes(1));
    MakeOld(folder.File(kept[1]), kWeek - std::chrono::minutes(1));
    for (std::size_t i = 3; i < kept.size(); ++i)
        MakeOld(folder.File(kept[i]), 2 * kWeek);
    const std::wstring asFolder = name(realm, kNoProcess - 1, L".tmp");
    ASSERT_TRUE(CreateFolders(folder.File(asFolder)));

    COutputFolder(folder.Path(), true).RemoveAbandoned();
    std::vector<std::wstring> expected = kept;
    expected.push_back(asFolder);
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(folder.Names(), expected);
}

TEST(OutputFolder, AnotherRunsFilesUnderWorkStay) {
    const CTemporaryFolder folder;
    COutputFolder other(folder.Path(), true);
    const auto output = other.Begin(L"a.3bcoef");
    WriteText(output->Path(), "x");
    COutputFolder(folder.Path(), true).RemoveAbandoned();
    EXPECT_TRUE(PathExists(output->Path()));
}

TEST(OutputFolder, AFolderThatWentAwayCannotBeSynced) {
    const CTemporaryFolder folder;
    const std::wstring gone = folder.File(L"gone");
    for (const bool sync : {false, true}) {
        COutputFolder outputs(gone, sync);
        outputs.RemoveAbandoned();
        ASSERT_EQ(outputs.Make(), 0);
        const auto output = outputs.Begin(L"b");
        WriteText(output->Path(), "kept");
        ASSERT_TRUE(outputs.Keep(*output, false).isKept);
        ASSERT_TRUE(ReplaceWith(gone, folder.File(sync ? L"there" : L"elsewhere")));
#ifndef _WIN32 // where names are written through
        EXPECT_EQ(outputs.SyncNames(), sync ? ENOENT : 0);
        EXPECT_EQ(outputs.SyncNames(), 0) << "nothing was named since";
#endif
    }
}

TEST(OutputFolder, FoldersAreMadeWithThoseAboveThem) {
    const CTemporaryFolder folder;
    const COutputFolder outputs(folder.File(L"a") + kPathSeparator + L"b", true);
    EXPECT_EQ(outputs.Make(L"c/d/"), 0);
    EXPECT_EQ(outputs.Make(L"c/d/"), 0);
    EXPECT_TRUE(IsFolder(folder.File(L"a/b/c/d")));
    WriteText(folder.File(L"file"), "x");
    EXPECT_NE(COutputFolder(folder.File(L"file"), true).Make(L"below/"), 0);
}

TEST(OutputFolder, WhyNothingCanBeMadeIsSeenWithoutWriting) {
    const CTemporaryFolder folder;
    WriteText(folder.File(L"file"), "x");
    const COutputFolder outputs(folder.File(L"new"), true);
    EXPECT_EQ(outputs.Refusal(), 0);
    EXPECT_EQ(outputs.Refusal(L"below/"), 0);
    EXPECT_EQ(outputs.Try(), ENOENT);
    EXPECT_EQ(COutputFolder(folder.File(L"file"), true).Refusal(), ENOTDIR);
    EXPECT_EQ(COutputFolder(folder.File(L"file"), true).Refusal(L"below/"), ENOTDIR);
    EXPECT_EQ(COutputFolder(folder.Path(), true).Refusal(), 0);
    EXPECT_EQ(COutputFolder(folder.Path(), true).Try(), 0);
    EXPECT_EQ(folder.Names(), std::vector<std::wstring>{L"file"});
}

#ifndef _WIN32
TEST(OutputFolder, WhatNoFolderCanBeMadeOfIsSeenWithoutWriting) {
    const CTemporaryFolder folder;
    const auto refusal = [&](const std::wstring& name) {
        return COutputFolder(folder.File(name), true).Refusal();
    };
    std::filesystem::create_symlink("nowhere", NativeOf(folder.File(L"dangling")));
    std::filesystem::create_symlink("loop", NativeOf(folder.File(L"loop")));
    const std::wstring longName(256, L'a');
    EXPECT_EQ(refusal(L"dangling"), ENOENT);
    EXPECT_EQ(refusal(L"dangling/x"), ENOENT);
    EXPECT_EQ(refusal(L"loop/x"), ELOOP);
    EXPECT_EQ(refusal(longName), ENAMETOOLONG);
    EXPECT_EQ(refusal(L"new/" + longName + L"/below"), ENAMETOOLONG);
    EXPECT_EQ(refusal(longName.substr(1)), 0);
    std::wstring path = L"d";
    while (path.size() < 4096)
        path += L"/d";
    EXPECT_EQ(refusal(path), ENAMETOOLONG);
    EXPECT_EQ(folder.Names(), (std::vector<std::wstring>{L"dangling", L"loop"}));
}

TEST(OutputFolder, AFolderThatCannotBeSyncedIsSeenWithoutWriting) {
    const CTemporaryFolder folder;
    ASSERT_EQ(chmod(ToNativePath(folder.Path())->c_str(), 0333), 0);
    {
        const COrdinaryUser user;
        for (const wchar_t* below : {L"", L"new/"}) {
            EXPECT_EQ(COutputFolder(folder.Path(), true).Refusal(below), EACCES);
            EXPECT_EQ(COutputFolder(folder.Path(), false).Refusal(below), 0);
        }
    }
    ASSERT_EQ(chmod(ToNativePath(folder.Path())->c_str(), 0700), 0);
}

TEST(OutputFolder, AFolderThatTakesNoFileIsTold) {
    const CTemporaryFolder folder;
    const std::string native = *ToNativePath(folder.Path());
    ASSERT_EQ(chmod(native.c_str(), 0555), 0);
    {
        const COrdinaryUser user;
        const COutputFolder outputs(folder.Path(), true);
        EXPECT_EQ(outputs.Try(), EACCES);
        EXPECT_EQ(outputs.Make(), EACCES);
        for (const wchar_t* below : {L"", L"new/", L"new/below/"})
            EXPECT_EQ(outputs.Refusal(below), EACCES);
    }
    ASSERT_EQ(chmod(native.c_str(), 0700), 0);
    EXPECT_TRUE(folder.Names().empty());
}
#endif

TEST(OutputFolder, WhatStandsIsReplacedOnlyWhenTold) {
    for (const bool sync : {false, true}) {
        const CTemporaryFolder folder;
        WriteText(folder.File(L"b"), "earlier");
        COutputFolder outputs(folder.Path(), sync);
        const auto output = outputs.Begin(L"b");
        WriteText(output->Path(), "new");
        const SKeptOutput kept = outputs.Keep(*output, false);
        EXPECT_FALSE(kept.isKept);
        EXPECT_TRUE(kept.isTaken);
        EXPECT_TRUE(kept.sameEntryAs.empty());
        EXPECT_EQ(ReadText(folder.File(L"b")), "earlier");
        EXPECT_TRUE(outputs.Keep(*output, true).isKept);
        EXPECT_EQ(ReadText(folder.File(L"b")), "new");
    }
}

TEST(OutputFolder, OutputsLieUnderWorkInTheFolderThatTheyGoInto) {
    const CTemporaryFolder folder;
    COutputFolder outputs(folder.Path(), true);
    ASSERT_EQ(outputs.Make(L"sub/"), 0);
    const auto output = outputs.Begin(L"sub/b");
    EXPECT_EQ(output->Path().find(folder.File(L"sub/.trevolt-")), 0U);
    WriteText(output->Path(), "x");
    EXPECT_TRUE(outputs.Keep(*output, false).isKept);
    EXPECT_EQ(outputs.SyncNames(), 0);
    EXPECT_EQ(ReadText(folder.File(L"sub/b")), "x");
}

} // namespace
} // namespace trevolt
