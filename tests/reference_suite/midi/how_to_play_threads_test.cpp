#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "suite/midi/how_to_play.h"
#include "suite/midi/song_log.h"
#include "suite/midi/timeline.h"
#include "suite/midi/transients.h"

namespace {

// Every operation from any thread: the values are always those of one moment.
TEST(HowToPlayThreads, QueriesBesideMovesSeeWholeValues) {
  CL::SongLog log;
  log.tempoScales.Add(CL::TempoScale(960, 0.5, 1));
  TL::Timeline timeline;
  timeline.SetMidiEndTicks(1920);
  Transients transients;
  HowToPlay howToPlay(transients);
  howToPlay.SetData(log, timeline, 0);

  std::atomic<bool> stop{false};
  std::atomic<int> wrong{0};
  std::thread reader([&] {
    while (!stop) {
      const double scale = howToPlay.GetTempoScaleValue();
      const double before = howToPlay.GetPreSeekTempoScale();
      if (scale != 1.0 && scale != 0.5 && scale != 2.0) ++wrong;
      if (before != 1.0 && before != 0.5 && before != 2.0) ++wrong;
      howToPlay.GetTickIndexOfNextDspEvent();
    }
  });
  std::thread performer([&] {
    while (!stop) {
      transients.SetTempoScale(2.0);
      transients.SetTempoScale(1.0);
    }
  });
  for (int i = 0; i < 20000; ++i) {
    howToPlay.AdvanceToTickIndex(1000);
    howToPlay.Seek(0);
    if (i % 1000 == 0) howToPlay.SetData(log, timeline, 0);
  }
  stop = true;
  reader.join();
  performer.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
