#include <gtest/gtest.h>

#include "tests/host/show_files.h"
#include "tests/host/terminal_program.h"

namespace host_tests {
namespace {

// The bar that is shown before `words`, which begin there.
int BarBefore(const std::string& screen, std::size_t words) {
  return std::stoi(screen.substr(screen.rfind("bar ", words) + 4));
}

TEST(Terminal, NothingPlaysBeforeGoAndTheKeysDriveTheShow) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 60, "[[vamp]]\nfrom = \"2\"\nto = \"40\"\n");
  files.AddSong("2", "Polka", 60);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "null"});
  EXPECT_TRUE(
      orbel.Shows("space go   p play/pause   s stop   a once more   n b songs   left right places   up down "
                  "tempo   + - key   0 as written   q quit"));
  EXPECT_TRUE(orbel.Shows("1 Waltz   bar 1.1   240 bpm   stopped   next: 40.1 vamp back to 2.1"));
  orbel.Type(" ");
  EXPECT_TRUE(orbel.ShowsLike("bar (?!1\\.)\\S+   240 bpm   playing   next: 40.1 vamp back to 2.1"));
  orbel.Type(" ");
  EXPECT_TRUE(orbel.Shows("go: the loop is left"));
  EXPECT_TRUE(orbel.Shows("playing   next: 61.1 end"));
  orbel.Type("p");
  EXPECT_TRUE(orbel.Shows("paused"));
  orbel.Type("p");
  EXPECT_TRUE(orbel.Shows("playing"));
  orbel.Type("s");
  EXPECT_TRUE(orbel.Shows("1 Waltz   bar 1.1   240 bpm   stopped"));
  orbel.Type("n");
  EXPECT_TRUE(orbel.Shows("2 Polka   bar 1.1   240 bpm   stopped   next: 61.1 end"));
  orbel.Type("b");
  EXPECT_TRUE(orbel.Shows("1 Waltz   bar 1.1   240 bpm   stopped"));
  orbel.Type("\x1b[C");
  EXPECT_TRUE(orbel.Shows("1 Waltz   bar 2.1"));
  orbel.Type("\x1b[D");
  EXPECT_TRUE(orbel.Shows("1 Waltz   bar 1.1"));
  orbel.Type("q");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
  EXPECT_TRUE(orbel.IsAsBefore());
}

// Two seconds, two bars, are rendered ahead of what is heard.
TEST(Terminal, PausedItStandsWhereTheListenerIs) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 60);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "null", "--ahead", "2000"});
  EXPECT_TRUE(orbel.Shows("bar 1.1   240 bpm   stopped"));
  orbel.Type("p");
  ASSERT_TRUE(orbel.ShowsLike("bar (?!1\\.)\\S+   240 bpm   playing"));
  orbel.Type("p");
  ASSERT_TRUE(orbel.Shows("   240 bpm   paused"));
  const std::string& screen = orbel.GetScreen();
  const std::size_t paused = screen.find("bpm   paused");
  const int played = BarBefore(screen, screen.rfind("bpm   playing", paused));
  EXPECT_GE(BarBefore(screen, paused), played);
  EXPECT_LE(BarBefore(screen, paused), played + 1);
  orbel.Type("\x1b[D");
  EXPECT_TRUE(orbel.Shows("bar 1.1   240 bpm   ")) << "where a seek has led";
  orbel.Type("q");
  orbel.Type("q");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST(Terminal, QuitWhilePlayingItStandsWhereTheListenerIs) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 60);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "null", "--ahead", "2000"});
  EXPECT_TRUE(orbel.Shows("bar 1.1   240 bpm   stopped"));
  orbel.Type("p");
  ASSERT_TRUE(orbel.ShowsLike("bar (?!1\\.)\\S+   240 bpm   playing"));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
  const std::string& screen = orbel.GetScreen();
  const int played = BarBefore(screen, screen.rfind("bpm   playing"));
  const int stopped = BarBefore(screen, screen.rfind("bpm   stopped"));
  EXPECT_GE(stopped, played);
  EXPECT_LE(stopped, played + 1);
}

TEST(Terminal, WhereNothingCanBeWrittenOverLinesStandUnderEachOther) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 60);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "null"}, "dumb");
  EXPECT_TRUE(orbel.Shows("1 Waltz   bar 1.1   240 bpm   stopped"));
  orbel.Type(" ");
  EXPECT_TRUE(orbel.Shows("240 bpm   playing   next: 61.1 end"));
  orbel.Type("p");
  EXPECT_TRUE(orbel.Shows("paused"));
  orbel.Type("q");
  orbel.Type("q");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
  EXPECT_EQ(orbel.GetScreen().find('\x1b'), std::string::npos) << orbel.GetScreen();
  OrbelInATerminal render({"render", files.Show(), "-o", files.Beside("out.wav")}, "dumb");
  EXPECT_TRUE(render.Shows("frames"));
  EXPECT_EQ(render.WaitForEnd(), 0);
  EXPECT_EQ(render.GetScreen().find('\x1b'), std::string::npos) << render.GetScreen();
}

TEST(Terminal, BehindTheLastPlaceRightSaysSoAndMovesNothing) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 60, "[[caesura]]\nat = \"2\"\n");
  OrbelInATerminal orbel({"play", files.Show(), "--output", "null"});
  EXPECT_TRUE(orbel.Shows("1 Waltz   bar 1.1"));
  orbel.Type("\x1b[C");
  EXPECT_TRUE(orbel.Shows("bar 2.1   240 bpm   waiting at a caesura"));
  orbel.Type("\x1b[C");
  EXPECT_TRUE(orbel.Shows("no place behind this one"));
  EXPECT_TRUE(orbel.Shows("bar 2.1   240 bpm   waiting at a caesura"));
  orbel.Type("\x1b[D");
  EXPECT_TRUE(orbel.Shows("1 Waltz   bar 1.1"));
  orbel.Type("q");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST(Terminal, ThePassOfAVampIsShownFromTheSecondOn) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 60, "[[vamp]]\nfrom = \"2\"\nto = \"4\"\n");
  OrbelInATerminal orbel({"play", files.Show(), "--output", "null"});
  EXPECT_TRUE(orbel.Shows("stopped   next: 4.1 vamp back to 2.1\r\n"));
  orbel.Type("p");
  EXPECT_TRUE(orbel.Shows("playing   next: 4.1 vamp back to 2.1\r\n"));
  EXPECT_TRUE(orbel.Shows("playing   next: 4.1 vamp back to 2.1 (pass 2)\r\n"));
  EXPECT_TRUE(orbel.Shows("playing   next: 4.1 vamp back to 2.1 (pass 3)\r\n"));
  orbel.Type("s");
  EXPECT_TRUE(orbel.Shows("stopped   next: 4.1 vamp back to 2.1\r\n"));
  orbel.Type("q");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST(Terminal, TempoAndKeyAreTheKeysToo) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 60);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "null"});
  EXPECT_TRUE(orbel.Shows("bar 1.1   240 bpm   stopped"));
  orbel.Type("\x1b[A\x1b[A");
  EXPECT_TRUE(orbel.Shows("tempo 1.02"));
  EXPECT_TRUE(orbel.Shows("bar 1.1   244.8 bpm (x1.02)   stopped"));
  orbel.Type("\x1b[B\x1b[B\x1b[B");
  EXPECT_TRUE(orbel.Shows("tempo 0.99"));
  EXPECT_TRUE(orbel.Shows("237.6 bpm (x0.99)   stopped"));
  orbel.Type("--+");
  EXPECT_TRUE(orbel.Shows("transpose -1"));
  EXPECT_TRUE(orbel.Shows("237.6 bpm (x0.99) -1 semitone   stopped"));
  orbel.Type("p");
  EXPECT_TRUE(orbel.ShowsLike("bar (?!1\\.)\\S+   237.6 bpm \\(x0.99\\) -1 semitone   playing"));
  orbel.Type("0");
  EXPECT_TRUE(orbel.Shows("tempo and key as written"));
  EXPECT_TRUE(orbel.Shows("240 bpm   playing"));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST(Terminal, TheSoundHasALineOfItsOwn) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 60);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "null"});
  EXPECT_TRUE(orbel.Shows("stopped   next: 61.1 end\r\n\r\x1b[Kunderruns 0 frames  xruns 0  peak "));
  EXPECT_TRUE(orbel.Shows(" dB  ring "));
  EXPECT_TRUE(orbel.Shows(" ms  latency 0 ms  load "));
  EXPECT_TRUE(orbel.Shows(" %\x1b[A\r"));
  orbel.Type("q");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST(Terminal, ACaesuraWaitsForGo) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 2, "[[caesura]]\nat = \"1.3\"\n");
  OrbelInATerminal orbel({"play", files.Show(), "--output", "null"});
  EXPECT_TRUE(orbel.Shows("stopped   next: 1.3 caesura"));
  orbel.Type(" ");
  EXPECT_TRUE(orbel.Shows("bar 1.3   240 bpm   waiting at a caesura   next: 3.1 end"));
  orbel.Type(" ");
  EXPECT_TRUE(orbel.Shows("playing   next: 3.1 end"));
  EXPECT_TRUE(orbel.Shows("ended"));
  orbel.Type(" ");
  EXPECT_TRUE(orbel.Shows("the show is over; p plays the last song again"));
  orbel.Type("p");
  EXPECT_TRUE(orbel.Shows("bar 1.3   240 bpm   waiting at a caesura")) << "from the start to there";
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST(Terminal, PlayGoesOnFromACaesuraThatASeekHasReached) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 60, "[[caesura]]\nat = \"50\"\n");
  OrbelInATerminal orbel({"play", files.Show(), "--output", "null"});
  EXPECT_TRUE(orbel.Shows("stopped   next: 50.1 caesura"));
  orbel.Type("p");
  EXPECT_TRUE(orbel.Shows("playing   next: 50.1 caesura"));
  orbel.Type("\x1b[C");
  EXPECT_TRUE(orbel.Shows("bar 50.1   240 bpm   waiting at a caesura"));
  orbel.Type("p");
  EXPECT_TRUE(orbel.Shows("playing   next: 61.1 end"));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST(Terminal, QuittingWhilePlayingTakesASecondTime) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 60);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "null"});
  EXPECT_TRUE(orbel.Shows("stopped"));
  orbel.Type("p");
  EXPECT_TRUE(orbel.Shows("playing"));
  orbel.Type("q");
  EXPECT_TRUE(orbel.Shows("playing: q once more ends it"));
  orbel.Type("\x03");  // Ctrl-C counts as the second time as well
  EXPECT_EQ(orbel.WaitForEnd(), 0);
  EXPECT_TRUE(orbel.IsAsBefore());
}

TEST(Terminal, QuittingWhereASongGoesOnFromTakesASecondTimeToo) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 60, "[[caesura]]\nat = \"1.3\"\n");
  for (const bool pauses : {false, true}) {
    OrbelInATerminal orbel({"play", files.Show(), "--output", "null"});
    EXPECT_TRUE(orbel.Shows("stopped"));
    orbel.Type("p");
    EXPECT_TRUE(orbel.Shows("waiting at a caesura"));
    if (pauses) {
      orbel.Type(" ");
      EXPECT_TRUE(orbel.Shows("playing"));
      orbel.Type("p");
      EXPECT_TRUE(orbel.Shows("paused"));
    }
    orbel.Type("q");
    EXPECT_TRUE(
        orbel.Shows(pauses ? "paused: q once more ends it" : "waiting at a caesura: q once more ends it"));
    orbel.Type("q");
    EXPECT_EQ(orbel.WaitForEnd(), 0);
  }
}

TEST(Terminal, KeysThatWouldHoldTheProgramDoNothing) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 60);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "null"});
  EXPECT_TRUE(orbel.Shows("stopped"));
  orbel.Type("\x1a\x1c\x13p");  // Ctrl-Z, Ctrl-\, Ctrl-S
  EXPECT_TRUE(orbel.Shows("playing"));
  orbel.Type("qq");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
  EXPECT_TRUE(orbel.IsAsBefore());
}

TEST(Terminal, ALineOfTheAudioLibraryTakesThePlaceOfTheStatusLine) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 4);
  files.AddSong("2", "Polka", 4);
  WriteWav(files.At("data/2 Polka.obd"), std::vector<float>(4 * 16000, 0.0F), 16000);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "null"});
  EXPECT_TRUE(orbel.Shows("\r\x1b[Jwarning: data/2 Polka.obd: its 16000 Hz are resampled to 8000 Hz.\r\n"));
  EXPECT_TRUE(orbel.Shows("\r\x1b[K1 Waltz   bar 1.1   240 bpm   stopped   next: 5.1 end"));
  orbel.Type("q");
  EXPECT_EQ(orbel.WaitForEnd(), 0);
}

TEST(Terminal, WhenItGoesAwayTheShowGoesOnToItsEnd) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 2);
  OrbelInATerminal orbel({"play", files.Show(), "--output", "null"});
  EXPECT_TRUE(orbel.Shows("stopped"));
  orbel.Type("p");
  EXPECT_TRUE(orbel.Shows("playing"));
  orbel.CloseTerminal();
  EXPECT_EQ(orbel.WaitForEnd(), 0) << "by itself, and not by the signal";
}

TEST(Terminal, ARenderShowsItsProgressOnOneLine) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 8);
  OrbelInATerminal orbel({"render", files.Show(), "-o", files.Beside("out.wav")});
  EXPECT_TRUE(orbel.Shows("\r\x1b[K[####"));
  EXPECT_TRUE(orbel.Shows("] song 1  0:0"));
  EXPECT_EQ(orbel.WaitForEnd(), 0) << orbel.GetScreen();
}

}  // namespace
}  // namespace host_tests
