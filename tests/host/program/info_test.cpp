#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/host/run_orbel.h"
#include "tests/host/show_files.h"

namespace host_tests {
namespace {

using testing::HasSubstr;

TEST(Info, TellsSongsInRunningOrderWithCuesInEveryUnit) {
  ShowFiles files;
  files.AddSong("2", "Polka", 2, "attacca = true\n");
  files.AddSong("1", "Waltz", 8,
                "[[vamp]]\nfrom = \"3\"\nto = \"5\"\n[[cut]]\nfrom = \"6\"\nto = \"7.3\"\n[[marker]]\nat = "
                "\"2\"\nname = \"Solo\"\n[[page]]\nat = \"4\"\nnumber = 7\n");
  files.Write("show.toml", "format = 1\ntitle = \"An Evening\"\norder = [\"2\", \"1\"]\n");
  const Ended run = Orbel({"info", files.Show()});
  EXPECT_EQ(run.status, 0) << run.messages;
  EXPECT_EQ(
      run.out,
      "An Evening\n"
      "\n"
      "2  Polka  0:02.000  attacca\n"
      "    data/2 Polka.obd: WAV, 8000 Hz, 1 channel, 16000 frames\n"
      "    start  1.1.0  tick     0  sample      0  0:00.000\n"
      "    tempo  1.1.0  tick     0  sample      0  0:00.000  240 quarters a minute\n"
      "    meter  1.1.0  tick     0  sample      0  0:00.000  4/4\n"
      "    end    3.1.0  tick  3840  sample  16000  0:02.000\n"
      "\n"
      "1  Waltz  0:08.000\n"
      "    data/1 Waltz.obd: WAV, 8000 Hz, 1 channel, 64000 frames\n"
      "    start  1.1.0  tick      0  sample      0  0:00.000\n"
      "    tempo  1.1.0  tick      0  sample      0  0:00.000  240 quarters a minute\n"
      "    meter  1.1.0  tick      0  sample      0  0:00.000  4/4\n"
      "    cue    2.1.0  tick   1920  sample   8000  0:01.000  marker: Solo\n"
      "    cue    3.1.0  tick   3840  sample  16000  0:02.000  vamp to 5.1.0: until go, left at the end "
      "of the pass\n"
      "    cue    4.1.0  tick   5760  sample  24000  0:03.000  page: 7\n"
      "    cue    6.1.0  tick   9600  sample  40000  0:05.000  cut to 7.3.0\n"
      "    end    9.1.0  tick  15360  sample  64000  0:08.000\n");
}

TEST(Info, SongLimitsItToOne) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 2);
  files.AddSong("2", "Polka", 2);
  const Ended run = Orbel({"info", files.Show(), "--song", "2"});
  EXPECT_THAT(run.out, HasSubstr("2  Polka"));
  EXPECT_THAT(run.out, testing::Not(HasSubstr("Waltz")));
}

TEST(Info, JsonHasEverything) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 8, "[[repeat]]\nfrom = \"3\"\nto = \"5\"\npasses = 4\n");
  files.WriteMidi(files.At("songs/2 Polka.mid"), 2);
  const Ended run = Orbel({"info", "--json", files.Show()});
  EXPECT_EQ(run.status, 0) << run.messages;
  const auto json = nlohmann::json::parse(run.out);
  const auto& song = json["songs"][0];
  EXPECT_EQ(song["number"], "1");
  EXPECT_EQ(song["name"], "Waltz");
  EXPECT_EQ(song["audio"]["frames"], 64000);
  EXPECT_EQ(song["audio"]["sampleRate"], 8000.0);
  EXPECT_EQ(song["tempos"][0]["quartersPerMinute"], 240.0);
  EXPECT_EQ(song["cues"][0]["kind"], "repeat");
  EXPECT_EQ(song["cues"][0]["detail"], "4 passes");
  EXPECT_EQ(song["cues"][0]["to"]["sample"], 32000);
  EXPECT_EQ(song["cues"][0]["line"], 2);
  EXPECT_EQ(song["end"]["seconds"], 8.0);
  EXPECT_TRUE(json["songs"][1]["audio"].is_null());
}

TEST(Info, AudioThatCannotBeReadIsSaidAndDoesNotHideTheRest) {
  ShowFiles files;
  files.AddSong("1", "Waltz", 2);
  files.Write("data/1 Waltz.obd", "no audio");
  const Ended run = Orbel({"info", files.Show()});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("    cannot be read: "));
  EXPECT_THAT(run.out, HasSubstr("    end "));
}

}  // namespace
}  // namespace host_tests
