#include "app/inspection/FileFacts.h"

#include <cstring>

#include <gtest/gtest.h>

#include "app/rotation/CoefFile.h"
#include "app/rotation/StoredKinds.h"
#include "platform/FileStream.h"
#include "tests/support/BudgetLimit.h"
#include "tests/support/TestFiles.h"
#include "trevolt/CoefObjects.h"
#include "trevolt/PixelRect.h"

namespace trevolt {
namespace {

using namespace test;

struct SSampleFile {
    const wchar_t* name;
    std::uint32_t rawBytes; ///< of a pixel, 0 for text
    std::optional<EWordKind> words = std::nullopt;
};

const SSampleFile kSampleFiles[]{
    {L"Cab_01.9fcoef", 36},
    {L"Cab_02.3fcoef", 12},
    {L"Cab_03.9bcoef", 9},
    {L"Cab_04.3bcoef", 3},
    {L"Cab_05.cccoef", 0},
    {L"Cab_06.9wcoef", 18, EWordKind::Chroma},
    {L"Cab_07.3wcoef", 6, EWordKind::Brightness},
    {L"Cab_08.4wcoef", 8, EWordKind::VirtualGreenBrightness},
    {L"Cab_09.12wcoef", 24, EWordKind::VirtualGreenChroma},
};

std::wstring PathOf(const SSampleFile& cabinet) {
    return Sample(L"cabinet/" + std::wstring(cabinet.name));
}

void PutWord(Bytes& bytes, std::size_t offset, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i)
        bytes[offset + i] = static_cast<std::byte>(value >> (8 * i));
}

/// What a coefficient object tells of its store that has loaded the file.
std::wstring DigestByObject(EWordKind kind, const std::wstring& path, std::uint16_t width,
                            std::uint16_t height) {
    const auto object = CreateCoefObject(kind);
    EXPECT_EQ(object->Create(width, height), S_OK);
    if (kind == EWordKind::VirtualGreenBrightness || kind == EWordKind::VirtualGreenChroma)
        object->SetFileKind(2);
    EXPECT_EQ(object->LoadCoefRect(path.c_str(), 0, 0), S_OK);
    std::wstring text;
    EXPECT_EQ(object->GetStoreDigest(text), S_OK);
    return text;
}

void ExpectSame(const SCoefStatistics& a, const SCoefStatistics& b) {
    EXPECT_EQ(a.pixels, b.pixels);
    EXPECT_EQ(a.defaults, b.defaults);
    EXPECT_EQ(a.wanted, b.wanted);
    for (std::size_t k = 0; k < a.values.size(); ++k) {
        if (!a.wanted.test(k))
            continue;
        EXPECT_EQ(a.values[k].least, b.values[k].least) << k;
        EXPECT_EQ(a.values[k].greatest, b.values[k].greatest) << k;
        EXPECT_EQ(a.values[k].mean, b.values[k].mean) << k;
        EXPECT_EQ(a.values[k].outside, b.values[k].outside) << k;
        EXPECT_EQ(a.values[k].nan, b.values[k].nan) << k;
    }
}

TEST(FileFacts, TellsOfEveryKind) {
    for (const SSampleFile& cabinet : kSampleFiles) {
        const std::wstring path = PathOf(cabinet);
        const SFileFacts facts = FindFileFacts(path, 2);
        SCOPED_TRACE(std::string(cabinet.name, cabinet.name + std::wcslen(cabinet.name)));
        ASSERT_NE(facts.kind, nullptr);
        EXPECT_EQ(facts.kind, FindLoadKind(cabinet.name));
        EXPECT_EQ(facts.problems, std::vector<std::string>());
        EXPECT_EQ(facts.notes, std::vector<std::string>());
        EXPECT_EQ(facts.size, (PixelSize{40, 24}));
        EXPECT_EQ(facts.storedBytes, ReadFile(path).size());
        ASSERT_TRUE(facts.statistics);
        EXPECT_EQ(facts.statistics->pixels, 960U);
        EXPECT_EQ(facts.words.has_value(), cabinet.words.has_value());
        if (cabinet.rawBytes == 0) {
            EXPECT_EQ(facts.content, nullptr);
            EXPECT_FALSE(facts.version || facts.rawBytes || facts.covered);
            continue;
        }
        EXPECT_EQ(facts.content, facts.kind);
        EXPECT_EQ(facts.version, 1U);
        EXPECT_EQ(facts.rawBytes, 960U * cabinet.rawBytes);
        EXPECT_EQ(facts.covered, 960U);
    }
}

TEST(FileFacts, ValuesAreThoseOfAMap) {
    for (const SSampleFile& cabinet : kSampleFiles) {
        SCOPED_TRACE(std::string(cabinet.name, cabinet.name + std::wcslen(cabinet.name)));
        const SFileFacts facts = FindFileFacts(PathOf(cabinet), 1);
        const SCoefLoad load = LoadCoefFile(PathOf(cabinet));
        ASSERT_TRUE(facts.statistics);
        EXPECT_EQ(facts.statistics->wanted, FormOfKind(*load.kind).Values());
        ExpectSame(*facts.statistics, StatisticsOf(*load.map, FormOfKind(*load.kind).Values(), 1));
    }
}

TEST(FileFacts, EachKindHasItsValues) {
    const auto valuesOf = [](const wchar_t* extension) {
        return FormOfKind(*FindLoadKind(extension)).Values();
    };
    for (const wchar_t* const full : {L".9fcoef", L".9bcoef", L".9wcoef", L".cccoef"})
        EXPECT_EQ(valuesOf(full), MapValues(0x1FF));
    for (const wchar_t* const diagonal : {L".3fcoef", L".3bcoef", L".3wcoef"})
        EXPECT_EQ(valuesOf(diagonal), MapValues(0x111));
    EXPECT_EQ(valuesOf(L".4wcoef"), MapValues(0x511));
    EXPECT_EQ(valuesOf(L".12wcoef"), MapValues(0xFFF));
}

TEST(FileFacts, DigestIsThatOfACoefficientObject) {
    for (const SSampleFile& cabinet : kSampleFiles) {
        if (!cabinet.words)
            continue;
        const SFileFacts facts = FindFileFacts(PathOf(cabinet), 1);
        EXPECT_EQ(facts.words->storeDigest,
                  DigestByObject(*cabinet.words, PathOf(cabinet), 40, 24));
    }
    // More than one block in both directions.
    const std::wstring blocks = Sample(L"awkward/blocks_reversed.9wcoef");
    const SFileFacts facts = FindFileFacts(blocks, 2);
    EXPECT_EQ(facts.words->storeDigest, DigestByObject(EWordKind::Chroma, blocks, 300, 140));
    EXPECT_EQ(facts.words->chunks, 4U);
}

TEST(FileFacts, TellsAnOrigin) {
    const SFileFacts facts = FindFileFacts(Sample(L"awkward/origin_1000_777.9wcoef"), 1);
    ASSERT_TRUE(facts.words);
    EXPECT_EQ(facts.words->originX, 1000U);
    EXPECT_EQ(facts.words->originY, 777U);
    EXPECT_EQ(facts.words->chunks, 6U);
    EXPECT_FALSE(facts.words->hasExtraWords);
    EXPECT_FALSE(facts.words->owner);
    EXPECT_EQ(
        facts.words->storeDigest,
        DigestByObject(EWordKind::Chroma, Sample(L"awkward/blocks_reversed.9wcoef"), 300, 140));
}

TEST(FileFacts, TellsExtraWordsAndOwner) {
    const CTemporaryFolder folder;
    const auto object = CreateCoefObject(EWordKind::Chroma);
    ASSERT_EQ(object->Create(5, 4), S_OK);
    const SOwnerFacts owner{{'W', 'a', 'l', 'l', ' ', '7'}, 9};
    const std::wstring exported = folder.File(L"x.9wPCoef");
    ASSERT_EQ(object->ExportCoef(exported.c_str(), {0, 0, 5, 4},
                                 reinterpret_cast<const std::byte*>(owner.name.data()),
                                 &owner.flag),
              S_OK);
    const std::wstring path = folder.File(L"x.9wcoef");
    WriteFile(path, ReadFile(exported));
    const SFileFacts facts = FindFileFacts(path, 1);
    EXPECT_EQ(facts.problems, std::vector<std::string>());
    ASSERT_TRUE(facts.words && facts.words->owner);
    EXPECT_TRUE(facts.words->hasExtraWords);
    EXPECT_EQ(facts.words->owner->name, owner.name);
    EXPECT_EQ(facts.words->owner->flag, 9);
    EXPECT_EQ(facts.statistics->defaults, 20U);
    Bytes bytes = ReadFile(path);
    std::fill(bytes.begin() + 69, bytes.begin() + 85, std::byte{});
    WriteFile(path, bytes);
    EXPECT_TRUE(FindFileFacts(path, 1).words->owner); // its flag alone
    bytes[85] = std::byte{};
    WriteFile(path, bytes);
    EXPECT_FALSE(FindFileFacts(path, 1).words->owner);
}

TEST(FileFacts, DamageIsAProblem) {
    const SFileFacts cut = FindFileFacts(Sample(L"awkward/cut_short.9fcoef"), 1);
    ASSERT_EQ(cut.problems.size(), 1U);
    EXPECT_EQ(cut.problems[0].substr(0, 22), "cannot be read: E_FAIL");
    EXPECT_EQ(cut.size, (PixelSize{40, 24}));
    EXPECT_EQ(cut.covered, 0U);
    EXPECT_FALSE(cut.statistics);
    const SFileFacts newer = FindFileFacts(Sample(L"awkward/version_2.9fcoef"), 1);
    ASSERT_EQ(newer.problems.size(), 1U);
    EXPECT_EQ(newer.version, 2U);
    EXPECT_EQ(newer.size, PixelSize{});
    EXPECT_FALSE(newer.covered || newer.statistics);
}

TEST(FileFacts, NothingAndNoFileAreProblems) {
    const CTemporaryFolder folder;
    for (const SSampleFile& cabinet : kSampleFiles) {
        const std::wstring path = folder.File(cabinet.name);
        const SFileFacts missing = FindFileFacts(path, 1);
        EXPECT_EQ(missing.problems.size(), 1U);
        EXPECT_FALSE(missing.storedBytes || missing.version || missing.words || missing.statistics);
        WriteFile(path, {});
        const SFileFacts empty = FindFileFacts(path, 1);
        EXPECT_EQ(empty.problems.size(), 1U);
        EXPECT_EQ(empty.storedBytes, 0U);
        EXPECT_FALSE(empty.version || empty.words || empty.statistics);
    }
    const SFileFacts other = FindFileFacts(folder.File(L"notes.txt"), 1);
    EXPECT_EQ(other.kind, nullptr);
    EXPECT_EQ(other.problems, std::vector<std::string>{"is no coefficient file by its name"});
}

TEST(FileFacts, PixelsWithoutAChunkAreNotCovered) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"x.9wcoef");
    Bytes bytes = ReadFile(Sample(L"cabinet/Cab_06.9wcoef"));
    PutWord(bytes, 32, 30); // six rows more
    WriteFile(path, bytes);
    const SFileFacts facts = FindFileFacts(path, 1);
    EXPECT_EQ(facts.problems, std::vector<std::string>{"is incomplete: 240 pixels have no data"});
    EXPECT_EQ(facts.covered, 960U);
    ASSERT_TRUE(facts.statistics);
    EXPECT_EQ(facts.statistics->pixels, 1200U);
    EXPECT_EQ(facts.statistics->defaults,
              240U + FindFileFacts(Sample(L"cabinet/Cab_06.9wcoef"), 1).statistics->defaults);
}

TEST(FileFacts, ABlockWithoutAChunkHoldsDefaults) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"x.9wcoef");
    Bytes bytes = ReadFile(Sample(L"cabinet/Cab_06.9wcoef"));
    PutWord(bytes, 28, 300); // the second block has no pixel
    WriteFile(path, bytes);
    const SFileFacts facts = FindFileFacts(path, 1);
    EXPECT_EQ(facts.covered, 960U);
    ASSERT_TRUE(facts.statistics);
    EXPECT_EQ(facts.statistics->defaults,
              6240U + FindFileFacts(Sample(L"cabinet/Cab_06.9wcoef"), 1).statistics->defaults);
    EXPECT_EQ(facts.statistics->values[0].greatest, 1.0F);
}

/// What the kind sets of a map: all values of the matrix, and the virtual green's where it has any.
TEST(FileFacts, StoredElementsAreThoseOfAMap) {
    for (const SSampleFile& sample : kSampleFiles) {
        const SFileKind& kind = *FindLoadKind(sample.name);
        const SStoredKind& stored = StoredKindOf(kind);
        if (stored.load == nullptr)
            continue;
        CInputFile file;
        ASSERT_TRUE(file.Open(PathOf(sample).c_str()));
        const SStoredLoad load = stored.load(file, 1, {});
        const SCoefLoad map = LoadCoefFile(PathOf(sample));
        const std::size_t values = FormOfKind(kind).Values().test(10) ? 12 : 9;
        std::array<SMatrixCoef, 7> run;
        for (std::uint32_t y = 0; y < 24; ++y) {
            load.coef->CopyElements(30, y, 7, run.data());
            for (std::size_t i = 0; i < run.size(); ++i)
                for (std::size_t k = 0; k < values; ++k)
                    EXPECT_EQ(run[i].m[k],
                              map.map->FindElement(30 + static_cast<std::int64_t>(i), y)->m[k]);
        }
    }
}

TEST(FileFacts, ABrokenChunkLeavesTheOthers) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"x.9wcoef");
    Bytes bytes = ReadFile(Sample(L"awkward/blocks_reversed.9wcoef"));
    PutWord(bytes, 168 + 20, 0); // the first chunk's first plane
    WriteFile(path, bytes);
    const SFileFacts facts = FindFileFacts(path, 2);
    EXPECT_EQ(facts.problems,
              std::vector<std::string>{"is damaged: 1 of its chunks could not be read"});
    EXPECT_EQ(facts.covered, 42000U);
    ASSERT_TRUE(facts.statistics);
    EXPECT_EQ(facts.statistics->defaults, 44U * 12U); // the smallest block, which comes first
    EXPECT_EQ(facts.words->storeDigest.value_or(L"").size(), 32U);
}

TEST(FileFacts, AFloatFileUnderAWordKindsName) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"x.3wcoef");
    WriteFile(path, ReadFile(Sample(L"cabinet/Cab_02.3fcoef")));
    const SFileFacts facts = FindFileFacts(path, 1);
    EXPECT_EQ(facts.problems, std::vector<std::string>());
    EXPECT_EQ(facts.notes, std::vector<std::string>{"begins as a .3fcoef file"});
    EXPECT_EQ(facts.kind, FindLoadKind(L".3wcoef"));
    EXPECT_EQ(facts.content, FindLoadKind(L".3fcoef"));
    EXPECT_FALSE(facts.words);
    EXPECT_EQ(facts.covered, 960U);
    ASSERT_TRUE(facts.statistics);
    EXPECT_EQ(facts.statistics->pixels, 960U);
    EXPECT_EQ(facts.statistics->wanted, MapValues(0x111));
    Bytes damaged = ReadFile(path);
    damaged.pop_back();
    WriteFile(path, damaged);
    const SFileFacts unread = FindFileFacts(path, 1);
    EXPECT_EQ(unread.problems.size(), 1U);
    EXPECT_EQ(unread.covered, 0U);
    EXPECT_FALSE(unread.statistics);
}

TEST(FileFacts, ABinaryFileOfMorePixelsThanABodyHasIsToldAsSuch) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"x.3bcoef");
    Bytes bytes = ReadFile(Sample(L"cabinet/Cab_04.3bcoef"));
    PutWord(bytes, 20, 65535U + (32768U << 16));
    WriteFile(path, bytes);
    const SFileFacts damaged = FindFileFacts(path, 1);
    ASSERT_EQ(damaged.problems.size(), 1U);
    EXPECT_EQ(damaged.problems[0].substr(0, 22), "cannot be read: E_FAIL");
    PutWord(bytes, 20, 65535U + (32769U << 16));
    WriteFile(path, bytes);
    const std::vector<std::string> tooMany{
        "its size 65535 x 32769 has more than 2147483647 pixels"};
    EXPECT_EQ(FindFileFacts(path, 1).problems, tooMany);
    EXPECT_EQ(LoadCoefFile(path).problems, tooMany);
}

TEST(FileFacts, ASizeThatLiesIsDamageAndNoLackOfMemory) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"x.3wcoef");
    Bytes bytes = ReadFile(Sample(L"cabinet/Cab_07.3wcoef"));
    PutWord(bytes, 28, 60000);
    PutWord(bytes, 32, 30000);
    WriteFile(path, bytes);
    const CBudgetLimit limit(std::uint64_t{64} << 20);
    const SFileFacts facts = FindFileFacts(path, 1);
    EXPECT_EQ(facts.problems,
              std::vector<std::string>{"is incomplete: 1799999040 pixels have no data"});
    EXPECT_EQ(LoadCoefFile(path).problems, facts.problems);
    EXPECT_EQ(facts.words->chunks, 1U);
    EXPECT_FALSE(facts.statistics);
    PutWord(bytes, 28, 70000);
    WriteFile(path, bytes);
    EXPECT_EQ(FindFileFacts(path, 1).problems,
              std::vector<std::string>{"its size 70000 x 30000 is above 65535 in one direction"});
}

TEST(FileFacts, AWholeFileThatIsTooLargeGetsNoMemory) {
    const std::wstring path = Sample(L"cabinet/Cab_06.9wcoef");
    const CBudgetLimit limit(std::uint64_t{40} * 24 * 18 - 1);
    const std::vector<std::string> expected{"not enough memory for 40 x 24 pixels"};
    EXPECT_EQ(FindFileFacts(path, 1).problems, expected);
    EXPECT_EQ(LoadCoefFile(path).problems, expected);
}

/// A `.9fcoef` of 1000 × 300 pixels, 10.8 MB of them.
std::wstring PutLargeFile(const CTemporaryFolder& folder) {
    CChromaCorrectCoef map;
    map.Resize(1000, 300);
    for (std::int32_t i = 0; i < 300000; ++i)
        map.SetElement(i % 1000, i / 1000, {{static_cast<float>(i) * 1e-6F}});
    const std::wstring path = folder.File(L"large.9fcoef");
    EXPECT_EQ(FindLoadKind(path)->save(map, path.c_str()), S_OK);
    return path;
}

TEST(FileFacts, ABinaryFileNeedsNoMemoryForItsPixels) {
    const CTemporaryFolder folder;
    const std::wstring path = PutLargeFile(folder);
    const SCoefLoad load = LoadCoefFile(path);
    const std::uint64_t held = CMemoryBudget::Process().Outstanding();
    for (const std::size_t threads : {1U, 2U}) {
        const CBudgetLimit limit(held + (std::uint64_t{8} << 20));
        const SFileFacts facts = FindFileFacts(path, threads);
        EXPECT_EQ(facts.problems, std::vector<std::string>());
        EXPECT_EQ(facts.rawBytes, 10800000U);
        EXPECT_EQ(facts.covered, 300000U);
        ASSERT_TRUE(facts.statistics);
        ExpectSame(*facts.statistics, StatisticsOf(*load.map, kWholeMatrix, 1));
    }
    const CBudgetLimit limit(held + 1000);
    const SFileFacts refused = FindFileFacts(path, 2);
    EXPECT_EQ(refused.problems, std::vector<std::string>{"not enough memory to read it whole"});
    EXPECT_FALSE(refused.statistics);
}

// What comes before the damage looks like any other file.
TEST(FileFacts, OfABinaryFileThatIsDamagedAtItsEndNoValueIsTold) {
    const CTemporaryFolder folder;
    const std::wstring path = PutLargeFile(folder);
    Bytes bytes = ReadFile(path);
    bytes.back() ^= std::byte{1}; // of the checksum over all
    WriteFile(path, bytes);
    for (const std::size_t threads : {1U, 2U}) {
        const SFileFacts facts = FindFileFacts(path, threads);
        ASSERT_EQ(facts.problems.size(), 1U);
        EXPECT_EQ(facts.problems[0].substr(0, 22), "cannot be read: E_FAIL");
        EXPECT_EQ(facts.covered, 0U);
        EXPECT_FALSE(facts.statistics);
    }
}

} // namespace
} // namespace trevolt
