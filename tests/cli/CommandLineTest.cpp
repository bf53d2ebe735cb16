#include "cli/CommandLine.h"

#include <gtest/gtest.h>

#include "cli/Program.h"

namespace trevolt {
namespace {

using Words = std::vector<std::string>;

SCommandLine Arranged(const Words& words) {
    int status = 0;
    return ArrangeWords(*MakeProgram(status), words);
}

TEST(CommandLine, PutsPlacesBehindOptions) {
    const SCommandLine line =
        Arranged({"rotate", "a", "--angle=90", "b", "-nq", "-j", "4", "c", "--lenient"});
    EXPECT_EQ(line.mistake, "");
    EXPECT_EQ(line.words, (Words{"rotate", "--angle", "90", "-n", "-q", "-j", "4", "--lenient",
                                 "--", "a", "b", "c"}));
}

TEST(CommandLine, TakesNegativeNumbersForValues) {
    const Words expected{"rotate", "--angle", "-90", "--", "a"};
    EXPECT_EQ(Arranged({"rotate", "--angle", "-90", "a"}).words, expected);
    EXPECT_EQ(Arranged({"rotate", "--angle=-90", "a"}).words, expected);
    const Words expectedShort{"rotate", "-a", "-90", "--", "a"};
    for (const Words& given : {Words{"rotate", "-a", "-90", "a"}, Words{"rotate", "-a-90", "a"},
                               Words{"rotate", "-a=-90", "a"}})
        EXPECT_EQ(Arranged(given).words, expectedShort);
}

TEST(CommandLine, TakesEveryWordBehindTwoDashesForAPlace) {
    EXPECT_EQ(Arranged({"rotate", "--", "--angle", "-x", "--"}).words,
              (Words{"rotate", "--", "--angle", "-x", "--"}));
    EXPECT_EQ(Arranged({"rotate", "-", "demo"}).words, (Words{"rotate", "--", "-", "demo"}));
}

TEST(CommandLine, KeepsEmptyValues) {
    const Words expected{"rotate", "--size", "", "--"};
    EXPECT_EQ(Arranged({"rotate", "--size="}).words, expected);
    EXPECT_EQ(Arranged({"rotate", "--size", ""}).words, expected);
}

TEST(CommandLine, NamesWhatIsMistyped) {
    struct SCase {
        Words words;
        const char* mistake;
    };
    for (const SCase& one : std::vector<SCase>{
             {{},
              "name a command: rotate, compose, crop, convert, info, diff, preview, verify, demo; "
              "see trevolt-cli --help"},
             {{"rotat"}, "there is no command rotat: did you mean rotate?"},
             {{"frobnicate"},
              "there is no command frobnicate: the commands are rotate, compose, crop, convert, "
              "info, diff, preview, verify, demo; see trevolt-cli --help"},
             {{"--versoin"},
              "there is no option --versoin before a command: did you mean "
              "--version?"},
             {{"--angle", "90"},
              "there is no option --angle before a command: name one first: "
              "rotate, compose, crop, convert, info, diff, preview, verify, demo"},
             {{"rotate", "--angel", "90"},
              "there is no option --angel for rotate: did you mean --angle?"},
             {{"rotate", "--angel=90"},
              "there is no option --angel for rotate: did you mean --angle?"},
             {{"rotate", "-angle", "90"},
              "there is no option -angle for rotate: did you mean --angle?"},
             {{"rotate", "--jbos", "2"},
              "there is no option --jbos for rotate: did you mean --jobs?"},
             {{"rotate", "--frobnicate"},
              "there is no option --frobnicate for rotate: see trevolt-cli rotate --help"},
             {{"verify", "-x.sums"},
              "there is no option -x.sums for verify: see trevolt-cli verify --help, or give "
              "./-x.sums for a file of that name"},
             {{"rotate", "-z"}, "there is no option -z for rotate: see trevolt-cli rotate --help"},
             {{"rotate", "-90"},
              "there is no option -90 for rotate: see trevolt-cli rotate --help"},
             {{"rotate", "--angle"}, "--angle has no value: give 90|180|270"},
             {{"rotate", "-s", "--lenient"}, "-s has no value: give WIDTHxHEIGHT"},
             {{"rotate", "--lenient=yes"}, "--lenient takes no value: leave out =yes"},
             {{"rotate", "-a", "90", "--angle", "180"}, "--angle is given twice: give it once"},
             {{"verify", "a", "b"},
              "b is one word too many for verify: see trevolt-cli verify "
              "--help"}})
        EXPECT_EQ(Arranged(one.words).mistake, one.mistake);
}

TEST(CommandLine, MeasuresHowFarWordsAre) {
    EXPECT_EQ(WordDistance("", ""), 0U);
    EXPECT_EQ(WordDistance("abc", ""), 3U);
    EXPECT_EQ(WordDistance("", "abc"), 3U);
    EXPECT_EQ(WordDistance("angle", "angel"), 1U);
    EXPECT_EQ(WordDistance("angle", "angles"), 1U);
    EXPECT_EQ(WordDistance("angles", "angle"), 1U);
    EXPECT_EQ(WordDistance("angle", "ankle"), 1U);
    EXPECT_EQ(WordDistance("kitten", "sitting"), 3U);
    EXPECT_EQ(WordDistance("ba", "ab"), 1U);
}

TEST(CommandLine, FindsTheNearestWordWithinAThird) {
    const Words known{"rotate", "demo", "verify"};
    EXPECT_EQ(NearestWord("rotate", known), "rotate");
    EXPECT_EQ(NearestWord("rtoaet", known), "rotate");
    EXPECT_EQ(NearestWord("rtoxet", known), "");
    EXPECT_EQ(NearestWord("dmo", known), "demo");
    EXPECT_EQ(NearestWord("d", known), "");
    EXPECT_EQ(NearestWord("", known), "");
}
TEST(CommandLine, FindsTheWordThatIsBegun) {
    const Words known{"--angles", "--angle", "--recursive", "rotate", "--rotates"};
    EXPECT_EQ(NearestWord("--ang", known), "--angle");
    EXPECT_EQ(NearestWord("--angles", known), "--angles");
    EXPECT_EQ(NearestWord("--rec", known), "--recursive");
    EXPECT_EQ(NearestWord("--re", known), "");
    EXPECT_EQ(NearestWord("rot", known), "rotate");
    EXPECT_EQ(NearestWord("ro", known), "");
    EXPECT_EQ(NearestWord("ate", known), "");
    EXPECT_EQ(NearestWord("--", known), "");
}
TEST(CommandLine, FindsWordsInCapitals) {
    EXPECT_EQ(NearestWord("--ANGLE", {"--overwrite", "--angle"}), "--angle");
    EXPECT_EQ(NearestWord("ROT", {"demo", "rotate"}), "rotate");
    EXPECT_EQ(NearestWord("DmO", {"demo", "rotate"}), "demo");
}

} // namespace
} // namespace trevolt
