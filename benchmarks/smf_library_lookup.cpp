// The same conversions by libsmf, beside ours in the same run. Linked in where that library is installed.
// Its header includes glib's inside extern "C", which C++ refuses unless they have been read before.
#include <glib.h>
#include <smf.h>

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

constexpr int kTicksPerChange = 480;
constexpr double kRate = 44100.0;

class SmfLibrary : public benchmark::Fixture {
 public:
  void SetUp(const benchmark::State& state) override {
    const int count = static_cast<int>(state.range(0));
    song_ = smf_new();
    if (smf_set_ppqn(song_, 480) != 0) std::abort();
    smf_track_t* const track = smf_track_new();
    smf_add_track(song_, track);
    for (int index = 0; index < count; ++index) {
      const int tempo = 400'000 + index % 7 * 10'000;
      const auto byte = [tempo](int shift) { return static_cast<unsigned char>(tempo >> shift); };
      unsigned char message[] = {0xff, 0x51, 3, byte(16), byte(8), byte(0)};
      smf_event_t* const event = smf_event_new_from_pointer(message, sizeof message);
      smf_track_add_event_pulses(track, event, index * kTicksPerChange);
    }
    lastTick_ = count * kTicksPerChange - 1;
    lastSeconds_ = Seconds_(lastTick_);
    std::mt19937 random(1);
    for (int index = 0; index < 4096; ++index)
      ticks_.push_back(static_cast<int>(random() % (lastTick_ + 1U)));
  }
  void TearDown(const benchmark::State&) override {
    smf_delete(song_);
    ticks_.clear();
  }

 protected:
  double Seconds_(int tick) const {
    const smf_tempo_t* const tempo = smf_get_tempo_by_pulses(song_, tick);
    return tempo->time_seconds +
           (tick - tempo->time_pulses) * (tempo->microseconds_per_quarter_note / (song_->ppqn * 1000000.0));
  }
  int Tick_(double seconds) const {
    const smf_tempo_t* const tempo = smf_get_tempo_by_seconds(song_, seconds);
    return tempo->time_pulses + static_cast<int>((seconds - tempo->time_seconds) * (song_->ppqn * 1000000.0) /
                                                 tempo->microseconds_per_quarter_note);
  }

  smf_t* song_ = nullptr;
  int lastTick_ = 0;
  double lastSeconds_ = 0.0;
  std::vector<int> ticks_;
};

BENCHMARK_DEFINE_F(SmfLibrary, SecondsToTicksAtRandom)(benchmark::State& state) {
  std::size_t at = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(Tick_(lastSeconds_ * ticks_[at++ % 4096] / (lastTick_ + 1.0)));
  }
}
BENCHMARK_DEFINE_F(SmfLibrary, SecondsToTicksInTheMiddle)(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Tick_(lastSeconds_ / 2));
}
BENCHMARK_DEFINE_F(SmfLibrary, SecondsToTicksNearTheEnd)(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Tick_(lastSeconds_ - 100.0 / kRate));
}
BENCHMARK_DEFINE_F(SmfLibrary, TicksToSecondsAtRandom)(benchmark::State& state) {
  std::size_t at = 0;
  for (auto _ : state) benchmark::DoNotOptimize(Seconds_(ticks_[at++ % 4096]));
}
BENCHMARK_DEFINE_F(SmfLibrary, TicksToSecondsInTheMiddle)(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Seconds_(lastTick_ / 2));
}
BENCHMARK_DEFINE_F(SmfLibrary, TicksToSecondsNearTheEnd)(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Seconds_(lastTick_ - 3));
}

BENCHMARK_REGISTER_F(SmfLibrary, SecondsToTicksAtRandom)->RangeMultiplier(10)->Range(1, 10'000);
BENCHMARK_REGISTER_F(SmfLibrary, SecondsToTicksInTheMiddle)->RangeMultiplier(10)->Range(1, 10'000);
BENCHMARK_REGISTER_F(SmfLibrary, SecondsToTicksNearTheEnd)->RangeMultiplier(10)->Range(1, 10'000);
BENCHMARK_REGISTER_F(SmfLibrary, TicksToSecondsAtRandom)->RangeMultiplier(10)->Range(1, 10'000);
BENCHMARK_REGISTER_F(SmfLibrary, TicksToSecondsInTheMiddle)->RangeMultiplier(10)->Range(1, 10'000);
BENCHMARK_REGISTER_F(SmfLibrary, TicksToSecondsNearTheEnd)->RangeMultiplier(10)->Range(1, 10'000);

}  // namespace
