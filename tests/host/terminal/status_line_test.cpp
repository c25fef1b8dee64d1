#include "host/terminal/status_line.h"

#include <gtest/gtest.h>

namespace orbel::host::terminal {
namespace {

const StageStatus kStatus{"1 Ouvertüre", "12.3", 132.04, "playing", "13.1 vamp back to 9.1", ""};

TEST(StatusLine, SaysSongPlaceTempoStateAndWhatComesNext) {
  EXPECT_EQ(StatusLine(kStatus, 200),
            "1 Ouvertüre   bar 12.3   132 bpm   playing   next: 13.1 vamp back to 9.1");
}

TEST(StatusLine, SaysByHowMuchTempoAndKeyAreNotAsWritten) {
  StageStatus status = kStatus;
  status.tempo = 145.2;
  status.tempoScale = 1.1;
  status.transposition = -1;
  EXPECT_EQ(StatusLine(status, 40), "1 Ouvertüre   bar 12.3   145.2 bpm (x1.1");
  status.tempoScale = 1.0;
  EXPECT_EQ(StatusLine(status, 51), "1 Ouvertüre   bar 12.3   145.2 bpm -1 semitone   pl");
  status.transposition = 2;
  EXPECT_EQ(StatusLine(status, 51), "1 Ouvertüre   bar 12.3   145.2 bpm +2 semitones   p");
}

TEST(StatusLine, EndsWithWhatTheSoundIsUpToWhenThereIsSomethingToSay) {
  StageStatus status = kStatus;
  status.sound = "silent: JACK is gone";
  EXPECT_EQ(
      StatusLine(status, 200),
      "1 Ouvertüre   bar 12.3   132 bpm   playing   next: 13.1 vamp back to 9.1   silent: JACK is gone");
}

TEST(StatusLine, ALongNameGivesWayToWhatChanges) {
  StageStatus status = kStatus;
  status.song = "12 Die Fledermäuse auf dem Dach des Stadttheaters, zweiter Teil";
  EXPECT_EQ(StatusLine(status, 79),
            "12 Die Fledermä...   bar 12.3   132 bpm   playing   next: 13.1 vamp back to 9.1");
  EXPECT_EQ(StatusLine(status, 75),
            "12 Die Fled...   bar 12.3   132 bpm   playing   next: 13.1 vamp back to 9.1");
  EXPECT_EQ(StatusLine(status, 40), "12 Die Fl...   bar 12.3   132 bpm   play");
}

TEST(StatusLine, IsCutToTheWidthInCharactersAndNeverInsideOne) {
  EXPECT_EQ(StatusLine(kStatus, 9), "1 Ouvertü");
  EXPECT_EQ(StatusLine(kStatus, 8), "1 Ouvert");
  EXPECT_EQ(StatusLine(kStatus, 0), "");
}

}  // namespace
}  // namespace orbel::host::terminal
