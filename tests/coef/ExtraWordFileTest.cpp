// Chroma word files with extra words, and the same as streams.
#include <cstring>
#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>

#include "calibuf/ChunkLayout.h"
#include "common/LittleEndian.h"
#include "tests/coef/CoefObjects.h"
#include "tests/coef/VanishingFile.h"
#include "tests/support/BudgetLimit.h"
#include "tests/support/Streams.h"
#include "tests/support/TestFiles.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

using test::Bytes;
using test::HeaderOf;
using test::ReadFile;
using test::Sample;
using test::Whole;
using test::WriteFile;

/// Makes a folder the process's own, until the holder goes.
class CWorkingFolder {
  public:
    explicit CWorkingFolder(const std::wstring& folder)
        : m_before(std::filesystem::current_path()) {
        std::filesystem::current_path(folder);
    }
    ~CWorkingFolder() { std::filesystem::current_path(m_before); }
    CWorkingFolder(const CWorkingFolder&) = delete;
    CWorkingFolder& operator=(const CWorkingFolder&) = delete;

  private:
    std::filesystem::path m_before;
};

class ExtraWordFiles : public ::testing::Test {
  protected:
    static ::testing::AssertionResult SameExtraWords(const CCNewChromaCorrectCoef& a,
                                                     const CCNewChromaCorrectCoef& b) {
        for (std::uint32_t y = 0; y < a.GetHeight(); ++y)
            for (std::uint32_t x = 0; x < a.GetWidth(); ++x)
                if (a.FindExtraWord(x, y)->w != b.FindExtraWord(x, y)->w)
                    return ::testing::AssertionFailure() << x << ", " << y;
        return ::testing::AssertionSuccess();
    }

    test::CTemporaryFolder folder;
    std::wstring path = folder.File(L"a.9wPCoef");
    CCNewChromaCorrectCoef object;
};

TEST_F(ExtraWordFiles, RoundTrip) {
    test::CreateWithPattern(object, 300, 140);
    ASSERT_EQ(object.ExportCoef(path.c_str(), Whole(object), nullptr, nullptr), S_OK);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    EXPECT_EQ(object.GetChromaCoefSize(path.c_str(), width, height), S_OK);
    EXPECT_EQ(width, 300U);
    EXPECT_EQ(height, 140U);
    CCNewChromaCorrectCoef loaded;
    ASSERT_EQ(loaded.Create(300, 140), S_OK);
    EXPECT_EQ(loaded.LoadCoef(path.c_str()), S_OK);
    EXPECT_TRUE(test::SamePixels(loaded, object));
    EXPECT_TRUE(SameExtraWords(loaded, object));
    const Bytes first = ReadFile(path);
    ASSERT_EQ(loaded.ExportCoef(path.c_str(), Whole(loaded), nullptr, nullptr), S_OK);
    EXPECT_EQ(ReadFile(path), first);
    // Moved on loading, both parts move.
    CCNewChromaCorrectCoef moved;
    ASSERT_EQ(moved.Create(400, 300), S_OK);
    EXPECT_EQ(moved.LoadCoefRect(path.c_str(), 100, 150), S_OK);
    EXPECT_EQ(test::WordsAt(moved, 399, 289), test::WordsAt(object, 299, 139));
    EXPECT_EQ(moved.FindExtraWord(399, 289)->w, object.FindExtraWord(299, 139)->w);
}

TEST_F(ExtraWordFiles, TheHeaderLeadsToTheExtraPart) {
    test::CreateWithPattern(object, 300, 140);
    ASSERT_EQ(object.ExportCoef(path.c_str(), Whole(object), nullptr, nullptr), S_OK);
    const Bytes extended = ReadFile(path);
    const std::wstring plainPath = folder.File(L"a.9wcoef");
    ASSERT_EQ(object.ExportCoef(plainPath.c_str(), Whole(object), nullptr, nullptr), S_OK);
    const Bytes plain = ReadFile(plainPath);
    // The matrix part is that of the plain file; the extra part begins where that ends.
    const SChunkHeader header = HeaderOf(extended);
    EXPECT_EQ(header.formatId, kChromaChunkFormat2);
    EXPECT_EQ(header.directoryOffset, plain.size());
    EXPECT_EQ(Bytes(extended.begin() + 168, extended.begin() + static_cast<long>(plain.size())),
              Bytes(plain.begin() + 168, plain.end()));
    EXPECT_EQ(HeaderOf(plain).directoryOffset, 0U);
    // Its directory has records of 24 bytes, the first for block 0.
    const SChunkRecord record = DecodeChunkRecord(&extended[plain.size()], 1);
    EXPECT_EQ(record.index, 0U);
    EXPECT_EQ(record.width, 256);
    EXPECT_EQ(record.height, 128);
}

TEST_F(ExtraWordFiles, OnlyTheExactExtensionChooses) {
    test::CreateWithPattern(object, 4, 4);
    for (const wchar_t* name :
         {L"a.9wpcoef", L"a.9WPCOEF", L"a.9wcoef", L"9wPCoef", L"a.9wPCoef.x", L"a.9wPCoef "}) {
        const std::wstring file = folder.File(name);
        ASSERT_EQ(object.ExportCoef(file.c_str(), Whole(object), nullptr, nullptr), S_OK);
        EXPECT_EQ(HeaderOf(ReadFile(file)).formatId, kChromaChunkFormat);
    }
    {
        // A path without a point has no extension, were it the very word.
        const CWorkingFolder here(folder.Path());
        ASSERT_EQ(object.ExportCoef(L"9wPCoef", Whole(object), nullptr, nullptr), S_OK);
        EXPECT_EQ(HeaderOf(ReadFile(L"9wPCoef")).formatId, kChromaChunkFormat);
    }
    const std::wstring twice = folder.File(L"a.x.9wPCoef");
    ASSERT_EQ(object.ExportCoef(twice.c_str(), Whole(object), nullptr, nullptr), S_OK);
    EXPECT_EQ(HeaderOf(ReadFile(twice)).formatId, kChromaChunkFormat2);
}

TEST_F(ExtraWordFiles, Statuses) {
    test::CreateWithPattern(object, 40, 24);
    const std::wstring unopenable = folder.File(L"missing") + L"/a.9wPCoef";
    EXPECT_EQ(object.ExportCoef(unopenable.c_str(), Whole(object), nullptr, nullptr),
              E_COEF_OPENFAILED);
    ASSERT_EQ(object.ExportCoef(path.c_str(), Whole(object), nullptr, nullptr), S_OK);
    const Bytes file = ReadFile(path);
    CCNewChromaCorrectCoef target;
    ASSERT_EQ(target.Create(40, 24), S_OK);

    // Damage in the matrix part: E_FAIL, and the extra words are not read.
    Bytes damaged = file;
    damaged[168 + 56 + 3] ^= std::byte{0xFF};
    StoreLittle<std::uint32_t>(&damaged[168 + 16], 1);
    WriteFile(path, damaged);
    EXPECT_EQ(target.LoadCoef(path.c_str()), E_FAIL);
    EXPECT_EQ(target.FindExtraWord(1, 1)->w[0], 0);

    // An extra part that cannot be: inside the header, or past the end.
    for (const std::uint32_t offset : {0U, 167U, 0xFFFFFFFFU}) {
        damaged = file;
        StoreLittle<std::uint32_t>(&damaged[86], offset);
        WriteFile(path, damaged);
        EXPECT_EQ(target.LoadCoef(path.c_str()), E_FAIL) << offset;
        EXPECT_EQ(test::WordsAt(target, 1, 1), test::WordsAt(object, 1, 1)); // the matrix is read
        EXPECT_EQ(target.FindExtraWord(1, 1)->w[0], 0);
    }
    WriteFile(path, file);
    target.SetExtraStoreOwner(nullptr);
    EXPECT_EQ(target.LoadCoef(path.c_str()), E_POINTER);
    // Without the extra-word store the file has a matrix part alone.
    ASSERT_EQ(target.ExportCoef(path.c_str(), Whole(target), nullptr, nullptr), S_OK);
    EXPECT_EQ(HeaderOf(ReadFile(path)).directoryOffset, ReadFile(path).size());
}

// Of the matrix part any failure is E_FAIL; of a plain file it is what the store's reader says.
TEST_F(ExtraWordFiles, ScarceMemoryFailsThePartAsAnyFailure) {
    test::CreateWithPattern(object, 40, 24);
    const std::wstring plainPath = folder.File(L"a.9wcoef");
    ASSERT_EQ(object.ExportCoef(path.c_str(), Whole(object), nullptr, nullptr), S_OK);
    ASSERT_EQ(object.ExportCoef(plainPath.c_str(), Whole(object), nullptr, nullptr), S_OK);
    const test::CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + 1000);
    EXPECT_EQ(object.LoadCoef(plainPath.c_str()), E_COEF_NOBUFFER);
    EXPECT_EQ(object.LoadCoef(path.c_str()), E_FAIL);
}

TEST_F(ExtraWordFiles, WithoutColumns) {
    test::CreateWithPattern(object, 40, 24);
    ASSERT_EQ(object.ExportCoef(path.c_str(), {5, 0, 5, 24}, nullptr, nullptr), S_OK);
    const Bytes file = ReadFile(path);
    EXPECT_EQ(file.size(), 168U);
    EXPECT_EQ(HeaderOf(file).directoryOffset, 168U);
    EXPECT_EQ(HeaderOf(file).originX, 5U);
}

TEST_F(ExtraWordFiles, TheWholeStoreWhateverTheExtension) {
    test::CreateWithPattern(object, 300, 140);
    const std::wstring plainName = folder.File(L"whole.bin");
    EXPECT_EQ(object.SaveWholeStoreC(nullptr), E_POINTER);
    EXPECT_EQ(object.SaveWholeStoreC((folder.File(L"missing") + L"/a").c_str()), E_COEF_OPENFAILED);
    ASSERT_EQ(object.SaveWholeStoreC(plainName.c_str()), S_OK);
    CCNewChromaCorrectCoef loaded;
    ASSERT_EQ(loaded.Create(300, 140), S_OK);
    EXPECT_EQ(loaded.LoadCoef(plainName.c_str()), S_OK);
    EXPECT_TRUE(test::SamePixels(loaded, object));
    EXPECT_TRUE(SameExtraWords(loaded, object));
    object.SetStoreOwner(nullptr);
    EXPECT_EQ(object.SaveWholeStoreC(plainName.c_str()), E_POINTER);
}

TEST_F(ExtraWordFiles, AsAStream) {
    test::CreateWithPattern(object, 40, 24);
    std::array<std::byte, 16> name{std::byte{'x'}};
    const std::uint8_t flag = 8;
    std::stringstream stream;
    ASSERT_EQ(object.WriteChunks2(stream, Whole(object), name.data(), &flag), S_OK);
    ASSERT_EQ(object.ExportCoef(path.c_str(), Whole(object), name.data(), &flag), S_OK);
    EXPECT_EQ(stream.str(), test::ReadText(path));
    SChunkHeader header;
    stream.seekg(0);
    EXPECT_EQ(object.ReadChunkHeader2(stream, header), S_OK);
    EXPECT_EQ(header, HeaderOf(ReadFile(path)));
    EXPECT_EQ(header.ownerFlag, 8);
    EXPECT_EQ(stream.tellg(), std::streampos(168));
    std::stringstream shortStream(stream.str().substr(0, 167));
    EXPECT_EQ(object.ReadChunkHeader2(shortStream, header), E_COEF_BADFORMAT);
    std::stringstream other(test::ReadText(Sample(L"cabinet/Cab_06.9wcoef")));
    EXPECT_EQ(object.ReadChunkHeader2(other, header), E_COEF_BADFORMAT);
}

TEST_F(ExtraWordFiles, OwnerDataByValue) {
    test::CreateWithPattern(object, 300, 200);
    std::array<std::byte, 16> name{};
    for (std::size_t i = 0; i < name.size(); ++i)
        name[i] = static_cast<std::byte>(0xA0 + i);
    const std::uint8_t flag = 0x5C;
    ASSERT_EQ(object.ExportCoef(path.c_str(), {10, 20, 290, 140}, name.data(), &flag), S_OK);
    const Bytes file = ReadFile(path);
    Bytes expected(168);
    constexpr std::uint8_t kFormat[] = {0x0C, 0x14, 0xED, 0xF4, 0x3A, 0xFC, 0xD3, 0x4E,
                                        0x97, 0xCB, 0x78, 0x6E, 0x63, 0xDE, 0xAF, 0x99};
    std::memcpy(expected.data(), kFormat, 16);
    StoreLittle<std::uint32_t>(&expected[16], 1);
    StoreLittle<std::uint32_t>(&expected[20], 10);
    StoreLittle<std::uint32_t>(&expected[24], 20);
    StoreLittle<std::uint32_t>(&expected[28], 280);
    StoreLittle<std::uint32_t>(&expected[32], 120);
    StoreLittle<std::uint32_t>(&expected[36], 4);
    std::memcpy(&expected[69], name.data(), 16);
    expected[85] = std::byte{0x5C};
    StoreLittle<std::uint32_t>(&expected[86], LoadLittle<std::uint32_t>(&file[86]));
    EXPECT_EQ(Bytes(file.begin(), file.begin() + 168), expected);

    std::array<std::byte, 16> gotName{};
    std::uint8_t gotFlag = 0;
    EXPECT_EQ(object.GetChromaCoefInfo(path.c_str(), gotName.data(), 16, gotFlag), S_OK);
    EXPECT_EQ(gotName, name);
    EXPECT_EQ(gotFlag, 0x5C);
    // Without a name the flag is left out too.
    ASSERT_EQ(object.ExportCoef(path.c_str(), {10, 20, 290, 140}, nullptr, &flag), S_OK);
    EXPECT_EQ(object.GetChromaCoefInfo(path.c_str(), gotName.data(), 16, gotFlag), S_OK);
    EXPECT_EQ(gotName, (std::array<std::byte, 16>{}));
    EXPECT_EQ(gotFlag, 0);
}

TEST_F(ExtraWordFiles, ExtendedLoad) {
    test::CreateWithPattern(object, 300, 140);
    ASSERT_EQ(object.ExportCoef(path.c_str(), {10, 20, 110, 70}, nullptr, nullptr), S_OK);
    CCNewChromaCorrectCoef target;
    ASSERT_EQ(target.Create(400, 300), S_OK);
    SPixelRect rect{350, 100, 0, 0};
    EXPECT_EQ(target.LoadCoefEx(path.c_str(), rect), S_OK);
    EXPECT_EQ(rect, (SPixelRect{350, 100, 400, 150}));
    EXPECT_EQ(test::WordsAt(target, 399, 149), test::WordsAt(object, 59, 69));
    EXPECT_EQ(target.FindExtraWord(399, 149)->w, object.FindExtraWord(59, 69)->w);
    EXPECT_EQ(target.FindExtraWord(349, 149)->w[0], 0);
    rect = {1, 2, 3, 4};
    target.SetExtraStoreOwner(nullptr);
    EXPECT_EQ(target.LoadCoefEx(path.c_str(), rect), E_POINTER);
    EXPECT_EQ(rect, (SPixelRect{1, 2, 101, 52}));
}

TEST_F(ExtraWordFiles, WithoutTheMatrixStore) {
    test::CreateWithPattern(object, 40, 24);
    ASSERT_EQ(object.ExportCoef(path.c_str(), Whole(object), nullptr, nullptr), S_OK);
    const SWordCoef before = *object.FindExtraWord(3, 3);
    ASSERT_EQ(object.ExtraStore()->Allocate(40, 24), S_OK);
    object.SetStoreOwner(nullptr);
    EXPECT_EQ(object.LoadCoef(path.c_str()), E_POINTER);
    EXPECT_NE(before.w[0], 0);
    EXPECT_EQ(object.FindExtraWord(3, 3)->w[0], 0); // not read without the matrix
}

TEST_F(ExtraWordFiles, LostChunksAreNotedWhereTheStatusIsFine) {
    test::CreateWithPattern(object, 40, 24);
    for (const SPixelRect& bad :
         {SPixelRect{40, 0, 0, 24}, SPixelRect{0, 24, 40, 0}, SPixelRect{0, 0, 200000, 24}}) {
        const CTransferReport report;
        EXPECT_EQ(object.ExportCoef(path.c_str(), bad, nullptr, nullptr), S_OK);
        EXPECT_TRUE(report.HasWriteFailed());
        std::stringstream stream;
        const CTransferReport second;
        EXPECT_EQ(object.WriteChunks2(stream, bad, nullptr, nullptr), S_OK);
        EXPECT_TRUE(second.HasWriteFailed());
        EXPECT_EQ(stream.str(), test::ReadText(path));
    }
    const CTransferReport report;
    EXPECT_EQ(object.SaveWholeStoreC(path.c_str()), S_OK);
    EXPECT_FALSE(report.HasWriteFailed());
    // The loss of either part alone: the matrix part needs more memory, and a store without blocks
    // none.
    const auto save = [&](std::uint64_t left) {
        const test::CBudgetLimit limit(CMemoryBudget::Process().Outstanding() + left);
        const CTransferReport scarce;
        EXPECT_EQ(object.SaveWholeStoreC(path.c_str()), S_OK);
        EXPECT_TRUE(scarce.HasWriteFailed());
    };
    save(30000);
    EXPECT_EQ(HeaderOf(ReadFile(path)).directoryOffset, 168U);
    EXPECT_GT(ReadFile(path).size(), 168U + 24U);
    object.Store()->Clear();
    save(6000);
    EXPECT_EQ(HeaderOf(ReadFile(path)).directoryOffset, 168U + 56U);
    EXPECT_EQ(ReadFile(path).size(), 168U + 56U);
}

#ifndef _WIN32
TEST_F(ExtraWordFiles, AFullDiskIsNoted) {
    test::CreateWithPattern(object, 300, 140);
    const CTransferReport report;
    EXPECT_EQ(object.SaveWholeStoreC(L"/dev/full"), S_OK);
    EXPECT_TRUE(report.HasWriteFailed());
}

TEST_F(ExtraWordFiles, AFileThatIsGoneWhenItIsOpenedAgain) {
    test::CreateWithPattern(object, 40, 24);
    ASSERT_EQ(object.ExportCoef(path.c_str(), Whole(object), nullptr, nullptr), S_OK);
    const Bytes file = ReadFile(path);
    const std::wstring before = test::DigestOf(object);
    const std::wstring gone = folder.File(L"gone.9wPCoef");
    {
        const test::CVanishingFile vanishing(gone, Bytes(file.begin(), file.begin() + 168));
        EXPECT_EQ(object.LoadCoef(gone.c_str()), E_COEF_OPENFAILED);
    }
    EXPECT_FALSE(test::FileExists(gone));
    EXPECT_EQ(test::DigestOf(object), before);
}
#endif

// Inside another stream, what the header tells is a position in that stream.
TEST_F(ExtraWordFiles, AsAStreamBehindOtherContent) {
    test::CreateWithPattern(object, 300, 140);
    const std::string before(1000, 'b');
    std::stringstream stream;
    stream << before;
    ASSERT_EQ(object.WriteChunks2(stream, Whole(object), nullptr, nullptr), S_OK);
    EXPECT_EQ(stream.tellp(), std::streampos(1168));
    const std::string text = stream.str();
    EXPECT_EQ(text.substr(0, 1000), before);
    ASSERT_EQ(object.ExportCoef(path.c_str(), Whole(object), nullptr, nullptr), S_OK);
    const std::string file = test::ReadText(path);
    EXPECT_EQ(text.substr(1168), file.substr(168));
    SChunkHeader header;
    stream.seekg(1000);
    ASSERT_EQ(object.ReadChunkHeader2(stream, header), S_OK);
    SChunkHeader expected = HeaderOf(ReadFile(path));
    expected.directoryOffset += 1000;
    EXPECT_EQ(header, expected);

    CCNewChromaCorrectCoef loaded;
    ASSERT_EQ(loaded.Create(300, 140), S_OK);
    stream.seekg(1000);
    EXPECT_EQ(loaded.LoadBlocks107(stream, 0, 0), S_OK);
    stream.clear();
    stream.seekg(1000);
    EXPECT_EQ(loaded.ExtraStore()->ReadRectChunks(stream, 0, 0, 0, 0), S_OK);
    EXPECT_TRUE(test::SamePixels(loaded, object));
    EXPECT_TRUE(SameExtraWords(loaded, object));
}

// No header leads past 4 GiB: the extra words stay out, and the matrix still loads.
TEST_F(ExtraWordFiles, AsAStreamPastWhatAHeaderHolds) {
    test::CreateWithPattern(object, 300, 140);
    ASSERT_EQ(object.ExportCoef(path.c_str(), Whole(object), nullptr, nullptr), S_OK);
    const std::string file = test::ReadText(path);
    SChunkHeader expected = HeaderOf(ReadFile(path));
    const std::uint32_t matrixEnd = expected.directoryOffset;
    expected.directoryOffset = 0;

    constexpr std::streamoff kStart = std::streamoff{5} << 30;
    test::CFarBuffer buffer(kStart);
    std::iostream stream(&buffer);
    EXPECT_EQ(object.WriteChunks2(stream, Whole(object), nullptr, nullptr), E_FAIL);
    EXPECT_EQ(buffer.str().substr(168), file.substr(168, matrixEnd - 168));
    SChunkHeader header;
    stream.seekg(kStart);
    ASSERT_EQ(object.ReadChunkHeader2(stream, header), S_OK);
    EXPECT_EQ(header, expected);
    CCNewChromaCorrectCoef loaded;
    ASSERT_EQ(loaded.Create(300, 140), S_OK);
    stream.seekg(kStart);
    EXPECT_EQ(loaded.LoadBlocks107(stream, 0, 0), S_OK);
    EXPECT_TRUE(test::SamePixels(loaded, object));
}

// The last position that a header holds is one byte short of 4 GiB.
TEST_F(ExtraWordFiles, AsAStreamToTheLastPositionThatAHeaderHolds) {
    constexpr std::streamoff kLastPosition = 0xFFFFFFFF;
    test::CreateWithPattern(object, 300, 140);
    ASSERT_EQ(object.ExportCoef(path.c_str(), Whole(object), nullptr, nullptr), S_OK);
    const std::string file = test::ReadText(path);
    const std::streamoff matrixEnd = HeaderOf(ReadFile(path)).directoryOffset;

    test::CFarBuffer last(kLastPosition - matrixEnd);
    std::iostream reachable(&last);
    EXPECT_EQ(object.WriteChunks2(reachable, Whole(object), nullptr, nullptr), S_OK);
    EXPECT_EQ(last.str().substr(168), file.substr(168));
    SChunkHeader header;
    reachable.seekg(kLastPosition - matrixEnd);
    ASSERT_EQ(object.ReadChunkHeader2(reachable, header), S_OK);
    EXPECT_EQ(header.directoryOffset, 0xFFFFFFFFU);

    test::CFarBuffer past(kLastPosition - matrixEnd + 1);
    std::iostream unreachable(&past);
    EXPECT_EQ(object.WriteChunks2(unreachable, Whole(object), nullptr, nullptr), E_FAIL);
    EXPECT_EQ(past.str().size(), static_cast<std::size_t>(matrixEnd));
    unreachable.seekg(kLastPosition - matrixEnd + 1);
    ASSERT_EQ(object.ReadChunkHeader2(unreachable, header), S_OK);
    EXPECT_EQ(header.directoryOffset, 0U);
}

// A matrix part may be read to its end with a success and leave the stream failed: its last chunk
// claims more than the file has, and no block would take it.
TEST_F(ExtraWordFiles, AreReadBehindAMatrixPartThatPassesTheFilesEnd) {
    test::CreateWithPattern(object, 300, 24);
    ASSERT_EQ(object.ExportCoef(path.c_str(), Whole(object), nullptr, nullptr), S_OK);
    Bytes file = ReadFile(path);
    StoreLittle<std::uint32_t>(&file[168 + 56 + chunk_record::kTotalSize], 500000);
    WriteFile(path, file);
    CCNewChromaCorrectCoef loaded;
    ASSERT_EQ(loaded.Create(256, 24), S_OK);
    const CTransferReport report;
    EXPECT_EQ(loaded.LoadCoef(path.c_str()), S_OK);
    EXPECT_EQ(report.FailedChunks(), 1U);
    for (std::uint32_t y = 0; y < 24; ++y)
        for (std::uint32_t x = 0; x < 256; ++x) {
            ASSERT_EQ(test::WordsAt(loaded, x, y), test::WordsAt(object, x, y));
            ASSERT_EQ(loaded.FindExtraWord(x, y)->w, object.FindExtraWord(x, y)->w);
        }
}

} // namespace
} // namespace trevolt
