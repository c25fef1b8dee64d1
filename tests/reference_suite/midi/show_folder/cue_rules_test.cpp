// Cues held against a song of 48 bars of 4/4: positions that do not exist, cues outside the song, and cues
// that contradict each other.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/reference_suite/midi/show_folder/show_on_disk.h"

namespace {

using made_show::ProblemsOfToml;
using testing::ElementsAre;
using testing::IsEmpty;

struct Row {
  const char* text;
  const char* problem;
};
void PrintTo(const Row& row, std::ostream* out) {
  *out << row.text;
}

class CueErrors : public testing::TestWithParam<Row> {};

TEST_P(CueErrors, AreToldWithTheirPlace) {
  EXPECT_THAT(ProblemsOfToml(GetParam().text), ElementsAre(GetParam().problem));
}

INSTANTIATE_TEST_SUITE_P(
    Positions, CueErrors,
    testing::Values(
        Row{"[[caesura]]\nat = \"99\"", "2:6: \"at\": bar 99 does not exist: the song has bars 1 to 48."},
        Row{"[[caesura]]\nat = \"0\"", "2:6: \"at\": bar 0 does not exist: the song has bars 1 to 48."},
        Row{"[[caesura]]\nat = \"17.5\"",
            "2:6: \"at\": beat 5 of bar 17 does not exist: the bar has beats 1 to 4."},
        Row{"[[caesura]]\nat = \"48.4.481\"",
            "2:6: \"at\": tick 92161 does not exist: the song ends at tick 92160 (49.1.0)."},
        Row{"[[caesura]]\nat = { tick = 92161 }",
            "2:6: \"at\": tick 92161 does not exist: the song ends at tick 92160 (49.1.0)."},
        Row{"[[cut]]\nfrom = \"1\"\nto = \"99\"",
            "3:6: \"to\": bar 99 does not exist: the song has bars 1 to 48."},
        Row{"[[cut]]\nfrom = \"99\"\nto = \"1\"",
            "2:8: \"from\": bar 99 does not exist: the song has bars 1 to 48."},
        Row{"audio_start = \"99\"",
            "1:15: \"audio_start\": bar 99 does not exist: the song has bars 1 to 48."},
        Row{"audio_end = \"99\"", "1:13: \"audio_end\": bar 99 does not exist: the song has bars 1 to 48."},
        Row{"first_bar = 0\naudio_end = \"48\"\n[[caesura]]\nat=\"49\"",
            "4:4: \"at\": bar 49 does not exist: the song has bars 0 to 47."}));

INSTANTIATE_TEST_SUITE_P(
    OutsideTheSong, CueErrors,
    testing::Values(
        Row{"audio_start = \"3\"\n[[vamp]]\nfrom = \"2\"\nto = \"5\"",
            "3:8: \"from\" lies before the audio: \"2\" (tick 1920), while the audio starts at tick 3840."},
        Row{"audio_start = \"3\"\n[[marker]]\nat = { tick = 3839 }\nname = \"x\"",
            "3:6: \"at\" lies before the audio: tick 3839, while the audio starts at tick 3840."},
        Row{"audio_start = \"3\"\n[[page]]\nat = \"1\"\nnumber = 1",
            "3:6: \"at\" lies before the audio: \"1\" (tick 0), while the audio starts at tick 3840."},
        Row{"audio_end = \"3\"\n[[cut]]\nfrom = \"2\"\nto = \"end\"",
            "4:6: \"to\" lies after the end of the song: \"end\" (tick 92160), while the song ends at tick "
            "3840."},
        Row{"audio_end = \"3\"\n[[caesura]]\nat = { tick = 3841 }",
            "3:6: \"at\" lies after the end of the song: tick 3841, while the song ends at tick 3840."},
        Row{"audio_end = \"3\"\n[[tempo]]\nat = \"3\"\nscale = 1",
            "3:6: \"at\" lies on the end of the song, \"3\" (tick 3840), where only a caesura may lie or a "
            "range end."},
        Row{"[[transpose]]\nat = \"end\"\nsemitones = 1",
            "2:6: \"at\" lies on the end of the song, \"end\" (tick 92160), where only a caesura may lie or "
            "a range end."},
        Row{"[[repeat]]\nfrom = \"end\"\nto = \"end\"",
            "2:8: \"from\" lies on the end of the song, \"end\" (tick 92160), where only a caesura may lie "
            "or a range end."}));

INSTANTIATE_TEST_SUITE_P(Audio, CueErrors,
                         testing::Values(Row{"audio_start = \"17\"\naudio_end = \"17\"",
                                             "1:15: the audio starts at \"17\" (tick 30720), which does not "
                                             "lie before the end of the song, \"17\" (tick "
                                             "30720) (line 2)."},
                                         Row{"audio_end = \"3\"\naudio_start = { tick = 5000 }",
                                             "2:15: the audio starts at tick 5000, which does not lie before "
                                             "the end of the song, \"3\" (tick 3840) "
                                             "(line 1)."},
                                         Row{"audio_start = \"end\"",
                                             "1:15: the audio starts at \"end\" (tick 92160), which does not "
                                             "lie before the end of the song, tick "
                                             "92160."},
                                         Row{"audio_end = \"1\"",
                                             "1:13: the audio starts at tick 0, which does not lie before "
                                             "the end of the song, \"1\" (tick 0) (line "
                                             "1)."}));

INSTANTIATE_TEST_SUITE_P(
    BackwardRanges, CueErrors,
    testing::Values(
        Row{"[[vamp]]\nfrom = \"13\"\nto = \"9\"",
            "1:1: this vamp ends before it begins: \"9\" (tick 15360) does not lie after \"13\" (tick "
            "23040)."},
        Row{"[[repeat]]\nfrom = \"9\"\nto = \"9\"",
            "1:1: this repeat ends before it begins: \"9\" (tick 15360) does not lie after \"9\" (tick "
            "15360)."},
        Row{"[[safety]]\nfrom = { tick = 5 }\nto = { tick = 4 }",
            "1:1: this safety ends before it begins: tick 4 does not lie after tick 5."},
        Row{"[[click]]\nfrom = \"3\"\nto = \"1\"",
            "1:1: this click ends before it begins: \"1\" (tick 0) does not lie after \"3\" (tick 3840)."},
        Row{"[[cut]]\nfrom = \"33\"\nto = \"17\"",
            "1:1: this cut would start inside its own target range: \"17\" (tick 30720) does not lie after "
            "\"33\" (tick 61440), so that playback would come to it again and again."},
        Row{"[[cut]]\nfrom = \"33\"\nto = \"33\"",
            "1:1: this cut would start inside its own target range: \"33\" (tick 61440) does not lie after "
            "\"33\" (tick 61440), so that playback would come to it again and again."}));

INSTANTIATE_TEST_SUITE_P(
    Contradictions, CueErrors,
    testing::Values(
        Row{"[[vamp]]\nfrom = \"9\"\nto = \"13\"\n[[repeat]]\nfrom = \"11\"\nto = \"17\"",
            "4:1: this repeat (\"11\" to \"17\") and the vamp of line 1 (\"9\" to \"13\") overlap in part; "
            "loops must lie one inside the other or apart."},
        Row{"[[repeat]]\nfrom = \"11\"\nto = \"17\"\n\n[[vamp]]\nfrom = \"9\"\nto = \"13\"",
            "5:1: this vamp (\"9\" to \"13\") and the repeat of line 1 (\"11\" to \"17\") overlap in part; "
            "loops must lie one inside the other or apart."},
        Row{"[[vamp]]\nfrom = \"9\"\nto = \"13\"\n[[vamp]]\nfrom = \"9\"\nto = \"13.1\"",
            "4:1: this vamp (\"9\" to \"13.1\") and the vamp of line 1 (\"9\" to \"13\") are the same "
            "passage, so that neither lies inside the other; keep one of them."},
        Row{"[[caesura]]\nat = \"29.3\"\n[[caesura]]\nat = { tick = 54720 }",
            "3:1: this caesura (tick 54720) and the caesura of line 1 (\"29.3\") lie at one place; keep one "
            "of them."},
        Row{"[[cut]]\nfrom = \"9\"\nto = \"13\"\n[[cut]]\nfrom = \"9\"\nto = \"17\"",
            "4:1: this cut (\"9\" to \"17\") and the cut of line 1 (\"9\" to \"13\") lie at one place; keep "
            "one of them."},
        Row{"[[tempo]]\nat = \"9\"\nscale = 1\n[[tempo]]\nat = \"9\"\nscale = 1",
            "4:1: this tempo (\"9\") and the tempo of line 1 (\"9\") lie at one place; keep one of them."},
        Row{"[[transpose]]\nat = \"9\"\nsemitones = 1\n[[transpose]]\nat = \"9\"\nsemitones = 2",
            "4:1: this transpose (\"9\") and the transpose of line 1 (\"9\") lie at one place; keep one of "
            "them."},
        Row{"[[page]]\nat = \"9\"\nnumber = 1\n[[page]]\nat = \"9\"\nnumber = 2",
            "4:1: this page (\"9\") and the page of line 1 (\"9\") lie at one place; keep one of them."}));

TEST(CueErrors, EveryPairOfThreeIsTold) {
  EXPECT_THAT(
      ProblemsOfToml("[[caesura]]\nat = \"2\"\n[[caesura]]\nat = \"2\"\n[[caesura]]\nat = \"2\""),
      ElementsAre("3:1: this caesura (\"2\") and the caesura of line 1 (\"2\") lie at one place; keep one of "
                  "them.",
                  "5:1: this caesura (\"2\") and the caesura of line 3 (\"2\") lie at one place; keep one of "
                  "them."));
}

TEST(CueErrors, TwoOnOneLine) {
  EXPECT_THAT(
      ProblemsOfToml("caesura = [{ at = \"2\" }, { at = \"2\" }]"),
      ElementsAre(
          "1:26: this caesura (\"2\") and the caesura of line 1 (\"2\") lie at one place; keep one of "
          "them."));
}

TEST(CueErrors, InnerLoopThatLeavesTheOuter) {
  EXPECT_THAT(
      ProblemsOfToml("[[vamp]]\nfrom = \"1\"\nto = \"9\"\n[[vamp]]\nfrom = \"2\"\nto = \"4\"\n"
                     "[[vamp]]\nfrom = \"5\"\nto = \"10\"\n"),
      ElementsAre("7:1: this vamp (\"5\" to \"10\") and the vamp of line 1 (\"1\" to \"9\") overlap in part; "
                  "loops must lie one inside the other or apart."));
}

TEST(CueErrors, PositionsAreCheckedEvenWhenTheAudioIsWrong) {
  EXPECT_THAT(ProblemsOfToml("audio_start = \"99\"\naudio_end = \"98\"\n[[caesura]]\nat = \"97\"\n"),
              ElementsAre("1:15: \"audio_start\": bar 99 does not exist: the song has bars 1 to 48.",
                          "2:13: \"audio_end\": bar 98 does not exist: the song has bars 1 to 48.",
                          "4:6: \"at\": bar 97 does not exist: the song has bars 1 to 48."));
}

TEST(CueErrors, BothEndsOfARangeAreTold) {
  EXPECT_THAT(ProblemsOfToml("[[cut]]\nfrom = \"98\"\nto = \"99\"\n"),
              ElementsAre("2:8: \"from\": bar 98 does not exist: the song has bars 1 to 48.",
                          "3:6: \"to\": bar 99 does not exist: the song has bars 1 to 48."));
}

struct Fine {
  const char* text;
  const char* why;
};
void PrintTo(const Fine& row, std::ostream* out) {
  *out << row.why;
}

class FineCues : public testing::TestWithParam<Fine> {};

TEST_P(FineCues, HaveNoProblem) {
  EXPECT_THAT(ProblemsOfToml(GetParam().text), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Cues, FineCues,
    testing::Values(
        Fine{"[[vamp]]\nfrom = \"9\"\nto = \"17\"\n[[repeat]]\nfrom = \"10\"\nto = \"12\"\n",
             "one inside the other"},
        Fine{"[[vamp]]\nfrom = \"9\"\nto = \"17\"\n[[repeat]]\nfrom = \"9\"\nto = \"12\"\n",
             "with one beginning"},
        Fine{"[[vamp]]\nfrom = \"9\"\nto = \"17\"\n[[repeat]]\nfrom = \"10\"\nto = \"17\"\n", "with one end"},
        Fine{"[[vamp]]\nfrom = \"9\"\nto = \"17\"\n[[repeat]]\nfrom = \"17\"\nto = \"20\"\n",
             "one after the other"},
        Fine{"[[caesura]]\nat = \"end\"\n", "a caesura on the end"},
        Fine{"audio_end = \"9\"\n[[caesura]]\nat = \"9\"\n", "a caesura on the end of the audio"},
        Fine{"audio_start = \"9\"\n[[caesura]]\nat = \"9\"\n", "a caesura on the start of the audio"},
        Fine{"[[vamp]]\nfrom = \"48\"\nto = \"end\"\n", "a loop that ends with the song"},
        Fine{"[[cut]]\nfrom = \"33\"\nto = \"end\"\n", "a cut to the end"},
        Fine{"[[cut]]\nfrom = \"9\"\nto = \"13\"\n[[caesura]]\nat = \"9\"\n[[vamp]]\nfrom = \"5\"\nto = "
             "\"9\"\n",
             "loop, cut and caesura at one tick"},
        Fine{"[[marker]]\nat = \"9\"\nname = \"a\"\n[[marker]]\nat = \"9\"\nname = \"b\"\n",
             "two markers at one tick"},
        Fine{"[[click]]\nfrom = \"1\"\nto = \"3\"\n[[click]]\nfrom = \"2\"\nto = \"4\"\n",
             "clicks that overlap"},
        Fine{"[[tempo]]\nat = \"9\"\nscale = 1\n[[transpose]]\nat = \"9\"\nsemitones = 1\n",
             "two kinds at one tick"},
        Fine{"[[cut]]\nfrom = \"9\"\nto = \"13\"\n[[cut]]\nfrom = \"13\"\nto = \"17\"\n", "a cut onto a cut"},
        Fine{"[[tempo]]\nat = \"1\"\nscale = 0.25\n[[tempo]]\nat = \"2\"\nscale = 4.0\n",
             "the limits of the scale"},
        Fine{"[[transpose]]\nat = \"1\"\nsemitones = -24\n[[transpose]]\nat = \"2\"\nsemitones = 24\n",
             "the limits of the transposition"}));

}  // namespace
