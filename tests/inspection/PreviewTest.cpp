#include "app/inspection/Preview.h"

#include <atomic>
#include <memory>
#include <new>

#include <gtest/gtest.h>

#include "platform/FileSystem.h"
#include "tests/rotation/AllocationLimit.h"
#include "tests/support/CoefMaps.h"
#include "tests/support/TestFiles.h"

namespace trevolt {
namespace {

class CPreviewNotes : public CPreviewListener {
  public:
    void OnFile(const SPreviewedFile& file) override {
        m_files.push_back(file);
        if (m_interrupted != nullptr)
            *m_interrupted = true;
    }
    const std::vector<SPreviewedFile>& Files() const { return m_files; }
    /// Interrupts the run when a file is told.
    void InterruptAtFile(std::atomic<bool>& interrupted) { m_interrupted = &interrupted; }

  private:
    std::vector<SPreviewedFile> m_files;
    std::atomic<bool>* m_interrupted = nullptr;
};

void PutLittleEndian16(test::Bytes& file, std::size_t offset, int value) {
    file.at(offset) = static_cast<std::byte>(value & 0xFF);
    file.at(offset + 1) = static_cast<std::byte>(value >> 8);
}

class Preview : public ::testing::Test {
  protected:
    void Add(const std::wstring& name, std::int32_t width = 4, std::int32_t height = 3) {
        CChromaCorrectCoef map;
        map.Resize(width, height);
        test::PaintMap(map, test::BytePixel);
        const std::wstring path = m_folder.File(name);
        ASSERT_EQ(SaveCoefFile(map, {path, false, false}), "");
        m_request.files.push_back({std::make_shared<const std::wstring>(m_folder.Path()), name});
    }
    SPreviewOutcome Run(bool isInterrupted = false) {
        m_request.output = {Picture(), false, false};
        const std::atomic<bool> interrupted{isInterrupted};
        return RunPreview(m_request, interrupted, m_notes);
    }
    std::wstring Picture() const { return m_folder.File(L"picture.png"); }

    test::CTemporaryFolder m_folder;
    SPreviewRequest m_request;
    CPreviewNotes m_notes;
};

TEST_F(Preview, TellsWhatItShows) {
    Add(L"a.9bcoef");
    const SPreviewOutcome outcome = Run();
    EXPECT_EQ(outcome.end, EPreviewEnd::Written);
    EXPECT_EQ(outcome.errors, std::vector<std::string>{});
    EXPECT_EQ(outcome.shown, 1U);
    ASSERT_TRUE(outcome.values);
    EXPECT_EQ(outcome.values->cells, 12U);
    EXPECT_EQ(outcome.values->found, m_notes.Files().at(0).found);
    EXPECT_EQ(m_notes.Files().at(0).name, "a.9bcoef");
    EXPECT_EQ(m_notes.Files().at(0).kind, "9bcoef");
    EXPECT_EQ(m_notes.Files().at(0).size, (PixelSize{4, 3}));
    EXPECT_TRUE(test::FileExists(Picture()));
}

TEST_F(Preview, MakesAWallThatIsAboutSquare) {
    for (const int count : {2, 3, 5}) {
        while (static_cast<int>(m_request.files.size()) < count)
            Add(L"c" + std::to_wstring(m_request.files.size()) + L".9bcoef");
        const SPreviewOutcome outcome = Run();
        EXPECT_EQ(outcome.grid.columns, count == 5 ? 3 : 2) << count;
        EXPECT_EQ(outcome.grid.rows, count == 2 ? 1 : 2) << count;
        EXPECT_EQ(outcome.end, EPreviewEnd::Written);
        ASSERT_TRUE(RemoveFile(Picture()));
    }
}

TEST_F(Preview, WritesNothingOnceInterrupted) {
    Add(L"a.9bcoef");
    Add(L"b.9bcoef");
    const SPreviewOutcome outcome = Run(true);
    EXPECT_EQ(outcome.end, EPreviewEnd::Interrupted);
    EXPECT_TRUE(m_notes.Files().empty());
    EXPECT_FALSE(test::FileExists(Picture()));
}

TEST_F(Preview, OfOneFileIsInterruptedToo) {
    Add(L"a.9bcoef");
    for (const std::uint32_t turnCode : {0U, 1U}) {
        m_request.turnCode = turnCode;
        m_notes = {};
        EXPECT_EQ(Run(true).end, EPreviewEnd::Interrupted) << turnCode;
        EXPECT_TRUE(m_notes.Files().empty());
        std::atomic<bool> interrupted{false};
        m_notes.InterruptAtFile(interrupted);
        EXPECT_EQ(RunPreview(m_request, interrupted, m_notes).end, EPreviewEnd::Interrupted);
        EXPECT_EQ(m_notes.Files().size(), 1U);
        EXPECT_FALSE(test::FileExists(Picture()));
    }
}

TEST_F(Preview, LooksAtTheOutputBeforeTheFiles) {
    Add(L"a.9bcoef");
    test::WriteText(Picture(), "mine");
    const SPreviewOutcome outcome = Run();
    EXPECT_EQ(outcome.end, EPreviewEnd::SomeFailed);
    ASSERT_EQ(outcome.errors.size(), 1U);
    EXPECT_TRUE(m_notes.Files().empty());
    EXPECT_EQ(test::ReadText(Picture()), "mine");
}

TEST_F(Preview, RefusesWhatDoesNotGoTogether) {
    Add(L"a.9bcoef");
    Add(L"b.9bcoef");
    m_request.turnCode = 1;
    EXPECT_EQ(Run().end, EPreviewEnd::Misused);
    m_request.turnCode = 0;
    m_request.grid = SPreviewGrid{1, 1};
    EXPECT_EQ(Run().end, EPreviewEnd::Misused);
    EXPECT_EQ(Run().errors, std::vector<std::string>{
                                "2 files do not fit into a grid of 1 x 1: give a larger one"});
    EXPECT_FALSE(test::FileExists(Picture()));
}

TEST_F(Preview, IsAWallWhereFilesHaveNoNames) {
    Add(L"a.9bcoef");
    m_request.title = "wall";
    const auto pictureOf = [&](std::optional<SPreviewGrid> grid, std::size_t unnamable) {
        m_request.grid = grid;
        m_request.unnamable = unnamable;
        EXPECT_EQ(Run().end, EPreviewEnd::Written);
        test::Bytes picture = test::ReadFile(Picture());
        EXPECT_TRUE(RemoveFile(Picture()));
        return picture;
    };
    const SPreviewGrid one{1, 1};
    EXPECT_EQ(pictureOf(std::nullopt, 1), pictureOf(one, 1));
    EXPECT_NE(pictureOf(one, 0), pictureOf(one, 1)); // "1 of 2 cabinets"
    m_request.turnCode = 1;
    EXPECT_EQ(pictureOf(std::nullopt, 1), pictureOf(std::nullopt, 0));
}

TEST_F(Preview, CrossesOutWhatIsGone) {
    Add(L"a.9bcoef");
    Add(L"b.9bcoef");
    ASSERT_TRUE(RemoveFile(m_folder.File(L"a.9bcoef")));
    const SPreviewOutcome outcome = Run();
    EXPECT_EQ(outcome.end, EPreviewEnd::SomeFailed);
    EXPECT_EQ(outcome.failed, 1U);
    EXPECT_EQ(outcome.shown, 1U);
    EXPECT_FALSE(m_notes.Files().at(0).problems.empty());
    EXPECT_TRUE(m_notes.Files().at(1).problems.empty());
    EXPECT_TRUE(test::FileExists(Picture()));
}

TEST_F(Preview, TellsWhatItLookedAtBeforeMemoryEnded) {
    Add(L"a.9bcoef");
    Add(L"b.9bcoef", 60000, 2); // a row of it is larger than all else here
    Add(L"c.9bcoef");
    const test::CAllocationLimit limit(100000);
    EXPECT_THROW(Run(), std::bad_alloc);
    ASSERT_EQ(m_notes.Files().size(), 1U);
    EXPECT_EQ(m_notes.Files()[0].name, "a.9bcoef");
    EXPECT_EQ(m_notes.Files()[0].problems, std::vector<std::string>{});
    EXPECT_FALSE(test::FileExists(Picture()));
}

TEST_F(Preview, GivesPlacesTheSizeOfWhatIsShown) {
    Add(L"a.9bcoef");
    Add(L"b.9bcoef");
    Add(L"c.9bcoef");
    for (const auto& [width, height] : {std::pair{60000, 3}, {4, 60000}, {65535, 65535}}) {
        SCOPED_TRACE(testing::Message() << width << " x " << height);
        test::Bytes file = test::ReadFile(m_folder.File(L"b.9bcoef"));
        PutLittleEndian16(file, 20, width);
        PutLittleEndian16(file, 22, height);
        test::WriteFile(m_folder.File(L"b.9bcoef"), file);
        m_notes = {};
        const SPreviewOutcome outcome = Run();
        EXPECT_EQ(outcome.end, EPreviewEnd::SomeFailed);
        EXPECT_EQ(outcome.shown, 2U);
        EXPECT_EQ(outcome.failed, 1U);
        ASSERT_TRUE(outcome.values);
        EXPECT_EQ(outcome.values->cells, 24U); // every pixel of both
        ASSERT_EQ(m_notes.Files().size(), 3U);
        EXPECT_EQ(m_notes.Files()[1].problems.size(), 1U);
        EXPECT_EQ(m_notes.Files()[2].found, m_notes.Files()[0].found);
        ASSERT_TRUE(RemoveFile(Picture()));
    }
}

} // namespace
} // namespace trevolt
