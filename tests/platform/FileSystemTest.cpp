#include "platform/FileSystem.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <utility>

#include <gtest/gtest.h>

#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>
#endif

#include "platform/FileStream.h"
#ifndef _WIN32
#include "tests/support/OrdinaryUser.h"
#endif
#include "tests/support/TestFiles.h"

namespace trevolt {
namespace {

using test::CTemporaryFolder;
#ifndef _WIN32
using test::COrdinaryUser;
#endif
using test::ReadText;
using test::WriteText;

const FolderEntry* Find(const FolderListing& listing, const std::wstring& name) {
    const auto found = std::find_if(listing.entries.begin(), listing.entries.end(),
                                    [&](const FolderEntry& entry) { return entry.name == name; });
    return found == listing.entries.end() ? nullptr : &*found;
}

TEST(FileSystem, ListsFilesAndFoldersWithDots) {
    const CTemporaryFolder folder;
    test::WriteText(folder.File(L"\u7BB1\u4F53-90\u00B0.9fcoef"), "x");
    ASSERT_TRUE(CreateFolders(folder.File(L"deep/er")));

    const FolderListing listing = ListEntries(folder.Path());
    ASSERT_NE(Find(listing, L"\u7BB1\u4F53-90\u00B0.9fcoef"), nullptr);
    EXPECT_EQ(Find(listing, L"\u7BB1\u4F53-90\u00B0.9fcoef")->kind, EntryKind::File);
    ASSERT_NE(Find(listing, L"deep"), nullptr);
    EXPECT_EQ(Find(listing, L"deep")->kind, EntryKind::Folder);
    ASSERT_NE(Find(listing, L"."), nullptr);
    EXPECT_EQ(listing.entries.size(), 4U);
}

TEST(FileSystem, ListsOnlyNamesThatBeginWithThePrefix) {
    const CTemporaryFolder folder;
    test::WriteText(folder.File(L"cab1.9fcoef"), "x");
    test::WriteText(folder.File(L"other.9fcoef"), "x");
    const FolderListing listing = ListEntries(folder.File(L"cab"));
    ASSERT_EQ(listing.entries.size(), 1U);
    EXPECT_EQ(listing.entries[0].name, L"cab1.9fcoef");
}

TEST(FileSystem, ListsNothingOfAMissingFolder) {
    const CTemporaryFolder folder;
    EXPECT_TRUE(ListEntries(WithSeparator(folder.File(L"missing"))).entries.empty());
}

TEST(FileSystem, AListingThatIsRefusedTellsWhy) {
    const CTemporaryFolder folder;
    EXPECT_EQ(ListEntries(folder.Path()).error, 0);
    EXPECT_EQ(ListEntries(folder.File(L"nothing begins so")).error, 0);
    EXPECT_EQ(ListEntries(WithSeparator(folder.File(L"missing"))).error, ENOENT);
    test::WriteText(folder.File(L"file"), "x");
    const FolderListing listing = ListEntries(WithSeparator(folder.File(L"file")));
    EXPECT_NE(listing.error, 0);
    EXPECT_TRUE(listing.entries.empty());
}

TEST(FileSystem, SeesWhetherAFolderIsEmpty) {
    const CTemporaryFolder folder;
    EXPECT_TRUE(IsEmptyFolder(folder.Path()));
    EXPECT_TRUE(IsEmptyFolder(WithoutSeparator(folder.Path())));
    EXPECT_FALSE(IsEmptyFolder(folder.File(L"missing")));
    for (const wchar_t* name : {L"file", L".hidden", L"..a"}) {
        WriteText(folder.File(name), "x");
        EXPECT_FALSE(IsEmptyFolder(folder.Path())) << name;
        EXPECT_FALSE(IsEmptyFolder(folder.File(name)));
        ASSERT_TRUE(RemoveFile(folder.File(name)));
    }
    ASSERT_TRUE(CreateFolders(folder.File(L"deep")));
    EXPECT_FALSE(IsEmptyFolder(folder.Path()));
    EXPECT_TRUE(IsEmptyFolder(folder.File(L"deep")));
}

TEST(FileSystem, SyncsWhatIsThereAndTellsWhatIsNot) {
    const CTemporaryFolder folder;
    test::WriteText(folder.File(L"a"), "x");
    EXPECT_EQ(SyncNativeFile(*ToNativePath(folder.File(L"a"))), 0);
    EXPECT_EQ(SyncNativeFile(*ToNativePath(folder.File(L"missing"))), ENOENT);
    EXPECT_EQ(SyncNativeFolder(*ToNativePath(folder.Path())), 0);
    EXPECT_TRUE(RemoveNativeFile(*ToNativePath(folder.File(L"a"))));
    EXPECT_FALSE(RemoveNativeFile(*ToNativePath(folder.File(L"a"))));
#ifndef _WIN32 // where names are written through
    EXPECT_EQ(SyncNativeFolder(*ToNativePath(folder.File(L"missing"))), ENOENT);
    EXPECT_EQ(SyncNativeFolder(*ToNativePath(L"/proc/self")), 0)
        << "which knows no sync of folders";
#endif
}

TEST(FileSystem, ReplacesDurably) {
    const CTemporaryFolder folder;
    test::WriteText(folder.File(L"a"), "new");
    test::WriteText(folder.File(L"b"), "old");
    EXPECT_TRUE(ReplaceDurably(folder.File(L"a"), folder.File(L"b")));
    EXPECT_EQ(test::ReadText(folder.File(L"b")), "new");
    EXPECT_FALSE(ReplaceDurably(folder.File(L"a"), folder.File(L"b")));
    EXPECT_EQ(errno, ENOENT);
}

TEST(FileSystem, AnEntryHasOneIdentityUnderAllItsNames) {
    const CTemporaryFolder folder;
    const auto native = [&](const wchar_t* name) {
        return std::filesystem::path(*ToNativePath(folder.File(name)));
    };
    test::WriteText(folder.File(L"a"), "x");
    test::WriteText(folder.File(L"b"), "x");
    std::filesystem::create_hard_link(native(L"a"), native(L"c"));
    ASSERT_TRUE(IdentityOf(folder.File(L"a")).has_value());
    EXPECT_EQ(IdentityOf(folder.File(L"a")), IdentityOf(folder.File(L"c")));
    EXPECT_NE(IdentityOf(folder.File(L"a")), IdentityOf(folder.File(L"b")));
    EXPECT_EQ(IdentityOf(folder.File(L"missing")), std::nullopt);
    EXPECT_EQ(IdentityOf(folder.File(L"A")).has_value(), kNamesIgnoreCase);
#ifndef _WIN32
    std::filesystem::create_symlink(native(L"a"), native(L"link"));
    EXPECT_NE(IdentityOf(folder.File(L"link")), IdentityOf(folder.File(L"a")));
#endif
}

TEST(FileSystem, TheAgeOfAFileIsTheTimeSinceItsLastWrite) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"a");
    test::WriteText(path, "x");
    ASSERT_TRUE(AgeOf(path).has_value());
    EXPECT_LT(*AgeOf(path), std::chrono::minutes(5));
    std::filesystem::last_write_time(std::filesystem::path(*ToNativePath(path)),
                                     std::filesystem::file_time_type::clock::now() -
                                         std::chrono::hours(48));
    EXPECT_GE(*AgeOf(path), std::chrono::hours(48));
    EXPECT_LT(*AgeOf(path), std::chrono::hours(49));
    EXPECT_EQ(AgeOf(folder.File(L"missing")), std::nullopt);
}

TEST(FileSystem, ReplacesRemovesAndCompares) {
    const CTemporaryFolder folder;
    test::WriteText(folder.File(L"a"), "new");
    test::WriteText(folder.File(L"b"), "old");
    EXPECT_FALSE(IsSameEntry(folder.File(L"a"), folder.File(L"b")));
    EXPECT_TRUE(IsSameEntry(folder.File(L"a"), folder.File(L"a")));
    ASSERT_TRUE(ReplaceWith(folder.File(L"a"), folder.File(L"b")));
    EXPECT_EQ(test::ReadText(folder.File(L"b")), "new");
    EXPECT_FALSE(PathExists(folder.File(L"a")));
    EXPECT_TRUE(RemoveFile(folder.File(L"b")));
    EXPECT_FALSE(RemoveFile(folder.File(L"b")));
    EXPECT_FALSE(IsSameEntry(folder.File(L"b"), folder.File(L"b")));
}

TEST(FileSystem, FoldersThatCannotBeMadeTellWhy) {
    const CTemporaryFolder folder;
    EXPECT_TRUE(CreateFolders(folder.Path() + L"a/b"));
    EXPECT_TRUE(CreateFolders(folder.Path() + L"a/b/"));
    EXPECT_EQ(errno, 0);
    test::WriteText(folder.File(L"file"), "x");
    EXPECT_FALSE(CreateFolders(folder.File(L"file")));
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_FALSE(CreateFolders(folder.File(L"file") + L"/a/b"));
    EXPECT_EQ(errno, ENOTDIR) << "of the first that stands in the way";
}

TEST(FileSystem, ARefusedReplacementTellsWhy) {
    const CTemporaryFolder folder;
    test::WriteText(folder.File(L"a"), "new");
    ASSERT_TRUE(CreateFolders(folder.File(L"b")));
    EXPECT_FALSE(ReplaceWith(folder.File(L"missing"), folder.File(L"a")));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(ReplaceWith(folder.File(L"a"), folder.File(L"b")));
#ifdef _WIN32
    EXPECT_EQ(errno, EACCES);
#else
    EXPECT_EQ(errno, EISDIR);
    EXPECT_FALSE(ReplaceWith(folder.File(L"a"), std::wstring(L"n\0ul", 4)));
    EXPECT_EQ(errno, 0) << "the system was not asked";
#endif
    EXPECT_EQ(test::ReadText(folder.File(L"a")), "new");
}

#ifndef _WIN32
TEST(FileSystem, NamesThatAreNotUtf8AreApart) {
    const CTemporaryFolder folder;
    const std::string path = *ToNativePath(folder.Path());
    ASSERT_EQ(mkdir((path + "folder\xFF").c_str(), 0777), 0);
    ASSERT_EQ(mkfifo((path + "pipe\xFF").c_str(), 0666), 0);
    std::ofstream(path + "file\xFF") << "x";
    ASSERT_EQ(symlink((path + "folder\xFF").c_str(), (path + "link\xFF").c_str()), 0);
    const FolderListing listing = ListEntries(folder.Path());
    std::map<std::string, std::pair<EntryKind, bool>> unnamed;
    for (const UnnamedEntry& entry : listing.unnamedByUtf8)
        unnamed[entry.rawName] = {entry.kind, entry.isLink};
    EXPECT_EQ(unnamed, (std::map<std::string, std::pair<EntryKind, bool>>{
                           {"file\xFF", {EntryKind::File, false}},
                           {"folder\xFF", {EntryKind::Folder, false}},
                           {"link\xFF", {EntryKind::Folder, true}},
                           {"pipe\xFF", {EntryKind::Other, false}}}));
    EXPECT_EQ(listing.entries.size(), 2U); // "." and ".."
    EXPECT_EQ(unlink((path + "link\xFF").c_str()), 0);
    EXPECT_EQ(rmdir((path + "folder\xFF").c_str()), 0);
    EXPECT_EQ(unlink((path + "pipe\xFF").c_str()), 0);
    EXPECT_EQ(unlink((path + "file\xFF").c_str()), 0);
}
#endif

TEST(FileSystem, AFolderThatIsMissingTakesNoFile) {
    const CTemporaryFolder folder;
    EXPECT_EQ(RefusalOfNewFiles(folder.Path()), 0);
    EXPECT_EQ(RefusalOfNewFiles(folder.File(L"missing")), ENOENT);
    EXPECT_TRUE(folder.Names().empty());
}

#ifndef _WIN32
TEST(FileSystem, WhyAFolderTakesNoFileIsToldWithoutOne) {
    const CTemporaryFolder folder;
    const std::string native = *ToNativePath(folder.Path());
    ASSERT_EQ(chmod(native.c_str(), 0555), 0);
    {
        const COrdinaryUser user;
        EXPECT_EQ(RefusalOfNewFiles(folder.Path()), EACCES);
    }
    ASSERT_EQ(chmod(native.c_str(), 0700), 0);
    EXPECT_TRUE(folder.Names().empty());
}

TEST(FileSystem, AFolderWhoseEntriesAreNotToldIsNotSeenToBeEmpty) {
    const CTemporaryFolder folder;
    const std::string native = *ToNativePath(folder.Path());
    std::ofstream(native + "file\xFF") << "x";
    EXPECT_FALSE(IsEmptyFolder(folder.Path()));
    ASSERT_EQ(unlink((native + "file\xFF").c_str()), 0);
    ASSERT_EQ(chmod(native.c_str(), 0333), 0);
    {
        const COrdinaryUser user;
        EXPECT_FALSE(IsEmptyFolder(folder.Path()));
    }
    ASSERT_EQ(chmod(native.c_str(), 0700), 0);
    EXPECT_TRUE(IsEmptyFolder(folder.Path()));
}

TEST(FileSystem, EntriesThatMayNotBeLookedAtAreWhatTheirFolderTells) {
    const CTemporaryFolder folder;
    const std::string held = *ToNativePath(folder.File(L"held"));
    ASSERT_EQ(chmod(ToNativePath(folder.Path())->c_str(), 0755), 0);
    ASSERT_TRUE(CreateFolders(folder.File(L"held/sub")));
    WriteText(folder.File(L"held/file"), "x");
    const auto listAsOrdinaryUser = [&] {
        EXPECT_EQ(chmod(held.c_str(), 0444), 0);
        FolderListing listing;
        {
            const COrdinaryUser user;
            listing = ListEntries(folder.File(L"held/"));
        }
        EXPECT_EQ(chmod(held.c_str(), 0755), 0);
        return listing;
    };
    const FolderListing listing = listAsOrdinaryUser();
    EXPECT_EQ(listing.error, 0);
    std::map<std::wstring, EntryKind> kinds;
    for (const FolderEntry& entry : listing.entries)
        kinds[entry.name] = entry.kind;
    EXPECT_EQ(kinds, (std::map<std::wstring, EntryKind>{{L".", EntryKind::Folder},
                                                        {L"..", EntryKind::Folder},
                                                        {L"file", EntryKind::File},
                                                        {L"sub", EntryKind::Folder}}));
    ASSERT_EQ(symlink("sub", (held + "/link").c_str()), 0);
    const FolderListing withLink = listAsOrdinaryUser();
    EXPECT_EQ(withLink.error, EACCES);
    EXPECT_EQ(withLink.entries.size(), 5U);
    ASSERT_EQ(unlink((held + "/link").c_str()), 0);
}

TEST(FileSystem, LinksThatLeadNowhereStandAsFiles) {
    const CTemporaryFolder folder;
    WriteText(folder.File(L"file"), "x");
    for (const auto& [to, name] :
         {std::pair{"missing", L"gone"}, {"file/below", L"through"}, {"round", L"round"}})
        ASSERT_EQ(symlink(to, ToNativePath(folder.File(name))->c_str()), 0);
    const FolderListing listing = ListEntries(folder.Path());
    EXPECT_EQ(listing.error, 0);
    EXPECT_EQ(std::count_if(listing.entries.begin(), listing.entries.end(),
                            [](const FolderEntry& entry) { return entry.kind == EntryKind::File; }),
              4);
}
#endif

TEST(FileSystem, StreamsRefuseFoldersNullAndMissingFiles) {
    const CTemporaryFolder folder;
    std::fstream stream;
    EXPECT_FALSE(OpenFileStream(stream, nullptr, std::ios::in));
    EXPECT_FALSE(OpenFileStream(stream, folder.Path().c_str(), std::ios::in));
    EXPECT_FALSE(OpenFileStream(stream, folder.File(L"missing").c_str(), std::ios::in));
    EXPECT_FALSE(PathExists(folder.File(L"missing")));
}

TEST(FileSystem, BytesToEndKeepsThePosition) {
    const CTemporaryFolder folder;
    test::WriteText(folder.File(L"ten"), "0123456789");
    std::fstream stream;
    ASSERT_TRUE(OpenFileStream(stream, folder.File(L"ten").c_str(), std::ios::in));
    stream.seekg(4);
    EXPECT_EQ(BytesToEnd(stream), 6U);
    EXPECT_EQ(stream.get(), '4');
}

TEST(FileSystem, WholeFileIsReadUpToItsLimit) {
    const CTemporaryFolder folder;
    test::WriteText(folder.File(L"ten"), "0123456789");
    test::WriteText(folder.File(L"none"), "");
    EXPECT_EQ(ReadWholeFile(folder.File(L"ten"), 10), "0123456789");
    EXPECT_EQ(ReadWholeFile(folder.File(L"ten"), 9), std::nullopt);
    EXPECT_EQ(ReadWholeFile(folder.File(L"none"), 0), "");
    EXPECT_EQ(ReadWholeFile(folder.File(L"missing"), 10), std::nullopt);
    EXPECT_EQ(ReadWholeFile(folder.Path(), 10), std::nullopt);
}

TEST(FileSystem, SeparatorIsAddedOnce) {
    EXPECT_EQ(WithSeparator(L""), L"");
    const std::wstring once = WithSeparator(L"a");
    EXPECT_EQ(once, (std::wstring{L'a', kPathSeparator}));
    EXPECT_EQ(WithSeparator(once), once);
}

TEST(FileSystem, ANewNameReplacesNothing) {
    const CTemporaryFolder folder;
    for (const bool isDurable : {false, true}) {
        WriteText(folder.File(L"a"), "new");
        WriteText(folder.File(L"b"), "kept");
        EXPECT_FALSE(NameNew(folder.File(L"a"), folder.File(L"b"), isDurable));
        EXPECT_EQ(errno, EEXIST);
        EXPECT_EQ(ReadText(folder.File(L"a")), "new");
        EXPECT_EQ(ReadText(folder.File(L"b")), "kept");
        ASSERT_TRUE(RemoveFile(folder.File(L"b")));
        EXPECT_TRUE(NameNew(folder.File(L"a"), folder.File(L"b"), isDurable));
        EXPECT_EQ(folder.Names(), std::vector<std::wstring>{L"b"});
        EXPECT_EQ(ReadText(folder.File(L"b")), "new");
        ASSERT_TRUE(RemoveFile(folder.File(L"b")));
    }
    EXPECT_FALSE(NameNew(folder.File(L"missing"), folder.File(L"b"), false));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(NameNew(std::wstring(L"n\0ul", 4), folder.File(L"b"), false));
}

TEST(FileSystem, TellsWhatStandsUnderAPath) {
    const CTemporaryFolder folder;
    WriteText(folder.File(L"a"), "x");
    EXPECT_EQ(KindOfEntry(folder.File(L"a")), EntryKind::File);
    EXPECT_EQ(KindOfEntry(folder.Path()), EntryKind::Folder);
    EXPECT_EQ(KindOfEntry(folder.File(L"missing")), std::nullopt);
#ifndef _WIN32
    EXPECT_EQ(KindOfEntry(L"/dev/null"), EntryKind::Other);
#endif
}

TEST(FileSystem, CopiesTheTimeOfTheLastWrite) {
    const CTemporaryFolder folder;
    WriteText(folder.File(L"a"), "x");
    WriteText(folder.File(L"b"), "y");
    const std::filesystem::path from(*ToNativePath(folder.File(L"a")));
    const std::filesystem::path to(*ToNativePath(folder.File(L"b")));
    std::filesystem::last_write_time(from, std::filesystem::file_time_type::clock::now() -
                                               std::chrono::hours(1000));
    ASSERT_NE(std::filesystem::last_write_time(from), std::filesystem::last_write_time(to));
    EXPECT_TRUE(CopyWriteTime(folder.File(L"a"), folder.File(L"b")));
    EXPECT_EQ(std::filesystem::last_write_time(from), std::filesystem::last_write_time(to));
    EXPECT_FALSE(CopyWriteTime(folder.File(L"missing"), folder.File(L"b")));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(CopyWriteTime(folder.File(L"a"), folder.File(L"missing")));
    EXPECT_EQ(errno, ENOENT);
}

TEST(FileSystem, AFileIsReadTheSameWhenItsPagesWereDropped) {
    const CTemporaryFolder folder;
    WriteText(folder.File(L"a"), "text");
    ASSERT_EQ(SyncNativeFile(*ToNativePath(folder.File(L"a"))), 0);
    DropCachedPages(folder.File(L"a"));
    DropCachedPages(folder.File(L"missing"));
    EXPECT_EQ(ReadText(folder.File(L"a")), "text");
    EXPECT_FALSE(PathExists(folder.File(L"missing")));
}

} // namespace
} // namespace trevolt
