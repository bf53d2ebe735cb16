#include <filesystem>

#include <gtest/gtest.h>

#include "platform/FileSystem.h"
#include "tests/support/CoefMaps.h"
#include "trevolt/RotationRun.h"
#include "trevolt/Utf8.h"

#ifndef _WIN32
#include <sys/stat.h>

#include "tests/support/OrdinaryUser.h"
#endif

namespace trevolt {
namespace {

using namespace test;

using Texts = std::vector<std::string>;

class RotationPlan : public testing::Test {
  protected:
    RotationPlan() {
        m_request.sources = {m_source.Path()};
        m_request.targetFolder = m_target.Path();
    }

    void Add(const std::wstring& name) const { WriteText(m_source.File(name), "x"); }

    void AddFolder(const std::wstring& name) const {
        ASSERT_TRUE(CreateFolders(m_source.File(name)));
    }

    static std::string Shown(const std::wstring& path) { return WideToShownUtf8(path); }

    /// "name -> output" of each turn.
    Texts Turns() const {
        Texts told;
        for (const SPlannedTurn& turn : PlanRotation(m_request).turns)
            told.push_back(Shown(turn.name) + " -> " + Shown(turn.outputName));
        return told;
    }

    std::vector<bool> Taken() const {
        std::vector<bool> taken;
        for (const SPlannedTurn& turn : PlanRotation(m_request).turns)
            taken.push_back(turn.isTaken);
        return taken;
    }

    Texts Obstacles() const { return PlanRotation(m_request).obstacles; }

    Texts PassedOver() const {
        Texts told;
        for (const SPassedOver& entry : PlanRotation(m_request).passedOver)
            told.push_back(entry.name + ": " + entry.reason);
        return told;
    }

    CTemporaryFolder m_source;
    CTemporaryFolder m_target;
    SRotationRequest m_request;
};

TEST_F(RotationPlan, TakesTheKnownFilesOfAFolderInSortedOrder) {
    Add(L"b.3bcoef");
    Add(L"a.9wcoef");
    Add(L"notes.txt");
    AddFolder(L"sub");
    Add(L"sub/c.3bcoef");
    EXPECT_EQ(Turns(),
              (Texts{"a.9wcoef -> a-90\xC2\xB0.9wcoef", "b.3bcoef -> b-90\xC2\xB0.3bcoef"}));
    EXPECT_EQ(PassedOver(), (Texts{"notes.txt: no coefficient file by its name", "sub: a folder"}));
    EXPECT_EQ(Obstacles(), Texts{});
}

TEST_F(RotationPlan, TellsWhichOutputsStand) {
    Add(L"a.3bcoef");
    Add(L"b.3bcoef");
    using Flags = std::vector<bool>;
    EXPECT_EQ(Taken(), (Flags{false, false})) << "the target is empty";
    WriteText(m_target.File(L"b-90\u00B0.3bcoef"), "x");
    EXPECT_EQ(Taken(), (Flags{false, true}));
#ifndef _WIN32
    const std::string native = *ToNativePath(m_target.Path());
    ASSERT_EQ(chmod(ToNativePath(m_source.Path())->c_str(), 0755), 0);
    ASSERT_EQ(chmod(native.c_str(), 0333), 0);
    {
        const COrdinaryUser user;
        EXPECT_EQ(Taken(), (Flags{false, true})) << "what may not be listed may be looked at";
    }
    ASSERT_EQ(chmod(native.c_str(), 0700), 0);
#endif
    m_request.targetFolder = m_target.File(L"missing");
    EXPECT_EQ(Taken(), (Flags{false, false}));
}

TEST_F(RotationPlan, TakesTheWholeTreeAndNotTheTargetInIt) {
    AddFolder(L"one/two");
    AddFolder(L"out");
    Add(L"z.3bcoef");
    Add(L"one/b.3bcoef");
    Add(L"one/two/a.3bcoef");
    Add(L"out/earlier-90.3bcoef");
    m_request.recursive = true;
    m_request.targetFolder = m_source.File(L"out");
    m_request.suffix = L"turned";
    EXPECT_EQ(Turns(), (Texts{"one/b.3bcoef -> one/b-turned.3bcoef",
                              "one/two/a.3bcoef -> one/two/a-turned.3bcoef",
                              "z.3bcoef -> z-turned.3bcoef"}));
    EXPECT_EQ(PassedOver(), Texts{"out: the target folder"});
    for (const SPlannedTurn& turn : PlanRotation(m_request).turns)
        EXPECT_EQ(ReadText(turn.Path()), "x");
}

TEST_F(RotationPlan, TakesFilesAndFoldersInTheOrderInWhichTheyAreNamed) {
    Add(L"z.3bcoef");
    Add(L"a.3bcoef");
    AddFolder(L"sub");
    Add(L"sub/c.3bcoef");
    m_request.sources = {m_source.File(L"z.3bcoef"), m_source.File(L"sub"),
                         m_source.File(L"a.3bcoef")};
    EXPECT_EQ(Turns(), (Texts{"z.3bcoef -> z-90\xC2\xB0.3bcoef", "c.3bcoef -> c-90\xC2\xB0.3bcoef",
                              "a.3bcoef -> a-90\xC2\xB0.3bcoef"}));
}

TEST_F(RotationPlan, EveryObstacleIsToldAtOnce) {
    Add(L"notes.txt");
    WriteText(m_target.File(L"file"), "x");
    m_request.sources = {m_source.File(L"missing"), m_source.File(L"notes.txt"), L""};
    m_request.targetFolder = m_target.File(L"file");
    m_request.manifest = m_target.File(L"file");
    EXPECT_EQ(
        Obstacles(),
        (Texts{"the source " + Shown(m_source.File(L"missing")) + " does not exist: check its path",
               "the source " + Shown(m_source.File(L"notes.txt")) +
                   " is no coefficient file by its name: give one with one of the nine "
                   "extensions",
               "the source  does not exist: check its path",
               "the target " + Shown(m_target.File(L"file")) + " is not a folder: choose another",
               "the manifest " + Shown(m_target.File(L"file")) +
                   " is the target: choose another name"}));
}

TEST_F(RotationPlan, TwoFilesThatWouldBecomeOneAreRefused) {
    AddFolder(L"sub");
    Add(L"a.3bcoef");
    Add(L"sub/a.3bcoef");
    const std::wstring first = m_source.File(L"a.3bcoef");
    const std::wstring second = m_source.File(L"sub/a.3bcoef");
    m_request.sources = {first, second};
    EXPECT_EQ(Obstacles(),
              Texts{Shown(first) + " and " + Shown(second) +
                    " would both become a-90\xC2\xB0.3bcoef: give each a target of its own"});
    m_request.sources = {first, first};
    EXPECT_EQ(Obstacles(), Texts{Shown(first) + " is named twice as a source: name it once"});
}

TEST_F(RotationPlan, ObstaclesOfOneSortAreToldUpToTen) {
    AddFolder(L"sub");
    for (int i = 0; i < 12; ++i) {
        Add(L"a" + std::to_wstring(i) + L".3bcoef");
        Add(L"sub/a" + std::to_wstring(i) + L".3bcoef");
    }
    m_request.sources = {m_source.Path(), m_source.File(L"sub")};
    const Texts told = Obstacles();
    ASSERT_EQ(told.size(), 11U);
    EXPECT_EQ(told.back(), "and 2 more like these");
}

TEST_F(RotationPlan, AnOutputNeverFallsOnASource) {
    Add(L"a.3bcoef");
    Add(L"a-90\u00B0.3bcoef");
    m_request.sources = {m_source.File(L"a.3bcoef"), m_source.File(L"a-90\u00B0.3bcoef")};
    m_request.targetFolder = m_source.Path();
    const Texts expected{"the output a-90\xC2\xB0.3bcoef of " + Shown(m_source.File(L"a.3bcoef")) +
                         " is one of the sources: choose another target"};
    EXPECT_EQ(Obstacles(), expected);
    m_request.sources.pop_back();
    const SRotationPlan plan = PlanRotation(m_request);
    EXPECT_EQ(plan.obstacles, Texts{});
    EXPECT_TRUE(plan.turns.at(0).isTaken);
}

#ifndef _WIN32
TEST_F(RotationPlan, NorOnALinkThatIsASource) {
    Add(L"a.3bcoef");
    const std::wstring link = m_target.File(L"a-90\u00B0.3bcoef");
    std::filesystem::create_symlink(*ToNativePath(m_source.File(L"a.3bcoef")), *ToNativePath(link));
    m_request.sources = {m_source.File(L"a.3bcoef"), link};
    EXPECT_EQ(Obstacles().size(), 1U);
    m_request.sources = {m_source.File(L"a.3bcoef")};
    EXPECT_EQ(Obstacles(), Texts{});
}

TEST_F(RotationPlan, NorOnWhatALinkOfTheSourcesLeadsTo) {
    const std::wstring output = m_target.File(L"a-90\u00B0.3bcoef");
    WriteText(output, "x");
    std::filesystem::create_symlink(*ToNativePath(output),
                                    *ToNativePath(m_source.File(L"a.3bcoef")));
    EXPECT_EQ(Obstacles().size(), 1U);
}

TEST_F(RotationPlan, ALinkThatLeadsNowhereStandsInTheOutputsPlace) {
    Add(L"a.3bcoef");
    std::filesystem::create_symlink("nowhere", *ToNativePath(m_target.File(L"a-90\u00B0.3bcoef")));
    EXPECT_TRUE(PlanRotation(m_request).turns.at(0).isTaken);
}

TEST_F(RotationPlan, ASourceThatCannotBeLookedAtIsNotToldAsMissing) {
    m_request.sources = {m_source.File(std::wstring(300, L'a'))};
    EXPECT_EQ(Obstacles(), Texts{"the source " + Shown(m_request.sources[0]) +
                                 " cannot be looked at: File name too long: check its path "
                                 "and its rights"});
}
#endif

TEST_F(RotationPlan, WithoutATargetNoOutputStands) {
    Add(L"a.3bcoef");
    m_request.targetFolder.clear();
    EXPECT_FALSE(PlanRotation(m_request).turns.at(0).isTaken);
    EXPECT_EQ(Obstacles(), Texts{});
}

TEST_F(RotationPlan, SourceAndTargetAreNeverTheSameFolder) {
    Add(L"a.3bcoef");
    AddFolder(L"sub");
    for (const std::wstring& same :
         {m_source.Path(), m_source.File(L"."), m_source.File(L"sub/..")}) {
        m_request.targetFolder = same;
        EXPECT_EQ(Obstacles(),
                  Texts{"source and target are the same folder: choose another target, so that the "
                        "source stays as it is"});
    }
}

TEST_F(RotationPlan, RowsOfAnglesNameFilesAsTheSystemTellsThemApart) {
    Add(L"Cab_1.3bcoef");
    m_request.angles = {{L"cAB_1.3BCOEF", 3}, {L"*", 1}};
    if (kNamesIgnoreCase)
        EXPECT_EQ(Turns(), Texts{"Cab_1.3bcoef -> Cab_1-270\xC2\xB0.3bcoef"});
    else
        EXPECT_EQ(Obstacles(), Texts{"the table of angles names cAB_1.3BCOEF, which is no file of "
                                     "the sources: correct the row"});
}

TEST_F(RotationPlan, EachFileHasItsAngle) {
    Add(L"a.3bcoef");
    Add(L"b.3bcoef");
    Add(L"c.3bcoef");
    m_request.angles = {{L"b.3bcoef", 2}, {L"*", 0}, {L"c.3bcoef", 3}};
    EXPECT_EQ(Turns(), (Texts{"a.3bcoef -> a-0\xC2\xB0.3bcoef", "b.3bcoef -> b-180\xC2\xB0.3bcoef",
                              "c.3bcoef -> c-270\xC2\xB0.3bcoef"}));
    EXPECT_EQ(PlanRotation(m_request).turns.at(0).angle.code, 0U);
    EXPECT_EQ(PlanRotation(m_request).turns.at(2).angle.code, 3U);

    m_request.angles = {{L"b.3bcoef", 2}, {L"d.3bcoef", 1}};
    EXPECT_EQ(Obstacles(),
              (Texts{"the table of angles has no row for a.3bcoef: add one, or a row for *",
                     "the table of angles has no row for c.3bcoef: add one, or a row for *",
                     "the table of angles names d.3bcoef, which is no file of the "
                     "sources: correct the row"}));
    m_request.angles = {{L"b.3bcoef", 2, 1}, {L"*", 1, 2}, {L"c.3bcoef ", 1, 7}};
    m_request.angleTable = L"wall.csv";
    EXPECT_EQ(
        Obstacles(),
        Texts{"the table of angles wall.csv names c.3bcoef  in line 7, which is no file of the "
              "sources: correct the row, also the blanks around the name"});
    m_request.angles = {{L"b.3bcoef", 2, 1}, {L"c.3bcoef", 1, 2}};
    EXPECT_EQ(Obstacles(),
              Texts{"the table of angles wall.csv has no row for a.3bcoef: add one, or a "
                    "row for *"});
    m_request.angles = {{L"*", 1}};
    EXPECT_EQ(Obstacles(), Texts{}) << "the rest may be none or all";
    m_request.angles = {{L"*", 0}};
    m_request.size = PixelSize{2, 2};
    EXPECT_EQ(Obstacles(),
              Texts{"a.3bcoef is to be copied, which no size can change: give it another angle, "
                    "or no size"});
}

TEST_F(RotationPlan, ASuffixIsPartOfAName) {
    Add(L"a.b.3bcoef");
    m_request.suffix = L"90deg";
    EXPECT_EQ(Turns(), Texts{"a.b.3bcoef -> a-90deg.b.3bcoef"});
    for (const wchar_t* const suffix : {L"a/b", L"a\\b", L"x.9fcoef", L"a\nb", L"a:b", L"\x7F"}) {
        m_request.suffix = suffix;
        EXPECT_EQ(Obstacles().size(), 1U) << Shown(suffix);
    }
    EXPECT_EQ(Obstacles(), Texts{"\"\x7F\" cannot stand in the names of outputs"});
}

TEST_F(RotationPlan, ShardsTakeEveryFileOnce) {
    for (int i = 0; i < 7; ++i)
        Add(L"a" + std::to_wstring(i) + L".3bcoef");
    const Texts all = Turns();
    m_request.shard = {2, 3};
    EXPECT_EQ(Turns(), (Texts{all[1], all[4]}));
    m_request.shard = {1, 3};
    EXPECT_EQ(Turns(), (Texts{all[0], all[3], all[6]}));
    m_request.shard = {8, 9};
    EXPECT_EQ(Turns(), Texts{});
    EXPECT_EQ(Obstacles(), Texts{});
}

TEST_F(RotationPlan, AScreenIsOneFile) {
    Add(L"a.3bcoef");
    m_request.wholeScreen = true;
    EXPECT_EQ(Obstacles(), Texts{});
    Add(L"b.3bcoef");
    EXPECT_EQ(Obstacles(), Texts{"a whole screen is exactly one coefficient file, but " +
                                 Shown(m_source.Path()) + " holds 2: give one file"});
    m_request.sources = {m_target.Path()};
    m_request.targetFolder = m_source.Path();
    EXPECT_EQ(Obstacles(), Texts{"there is no coefficient file in " + Shown(m_target.Path()) +
                                 ": give a folder that holds some"});
}

} // namespace
} // namespace trevolt
