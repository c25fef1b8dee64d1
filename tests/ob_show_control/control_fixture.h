#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Sources/ob_show_control/ob_show_control.h"
#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "suite/midi/show_data.h"
#include "suite/midi/transients.h"
#include "suite/player_core/active_song_number.h"
#include "suite/player_core/gui_update.h"
#include "tests/support/tempo_songs.h"

namespace test_support {

// A show control whose insides a test may set up: what the base would have found out about the song's cues.
class OpenShowControl : public OBShowControl {
 public:
  using OBShowControl::OBShowControl;

  // Each counts, and is this class's own: whoever asks another one than the virtual operation is seen.
  unsigned GetEndTickIndex() override;
  void OnCaesuraStop() override;
  void ResetControlVariables() override;
  void SetJump(unsigned tickIndex, exc::ExLock& lock, bool skipAhead) override;

  // Control position and control stream; the samples stay.
  void PlaceTick(unsigned tick);
  void PlaceTickAlone(unsigned tick) { SetTickIndex(tick); }
  void AddLoop(const LoopEvent& loop);
  void AddCaesura(unsigned tick);
  void RemoveCaesuras();
  std::pair<double, int> GetStoredDspFactors();

  std::atomic<int> endQueries{0};
  std::atomic<unsigned> tickAtEndQuery{0};  // where the control position was at the last one
  std::atomic<int> caesuraStops{0};
  std::atomic<int> variableResets{0};
  std::atomic<int> jumps{0};
  std::optional<unsigned> endTick;  // answered instead of the song's
};

// A song of 24 samples per tick (48,000 frames per second), 1,000 ticks long, that plays from its start.
class ControlTest : public testing::Test {
 protected:
  ControlTest();

  // Loads a song; its positions are at its start and the journal is empty afterwards.
  void Load(const SongTicks& ticks, const std::vector<TempoAt>& tempos = {{0, 500'000}});
  // Both positions on the first sample of `tick`, or `extra` samples after it; the sample count is 0.
  void Place(unsigned tick, long long extra = 0);
  // The next read, unscaled.
  long long Plan(long long request, long double scale = 1.0L);
  // The next read for a request of `scaled` samples at `scale`, which may be a fraction of an unscaled one.
  tesk_audio::SampleCount PlanScaled(long long scaled, long double scale);
  // Plans and reads exactly what was planned.
  long long Read(long long request);

  // The registry of elapsed samples, "COUNT: TICK" each.
  std::vector<std::string> Registrations();
  // Whether another thread could take both locks now.
  bool LocksAreFree();

  SamplesTicksConverter converter;
  ActiveSongNumber activeSongNumber;
  tesk_midi::ShowData showData;
  Transients transients;
  gui::GuiUpdate guiUpdate;
  std::function<bool()> caesuraSeek;
  int caesuraSeeks = 0;
  std::optional<tesk_midi::SongData> song;
  std::unique_ptr<OpenShowControl> control;
};

using Journal = std::vector<std::string>;

// The text of an assertion of this folder.
std::string Failed(const std::string& condition, int line);

}  // namespace test_support
