// How long do the conversions between samples and ticks take, by the number of tempo changes in the song: in
// the middle, near the end, at random places and while playing, and with a heap that other things were taken
// from and given back to?
#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "suite/midi/song_data.h"

namespace {

constexpr unsigned kTicksPerChange = 480;
constexpr long long kRead = 64;  // frames between two places while playing

tesk_midi::SongData SongWithTempos(unsigned count) {
  cmn::SequenceTemplate<TL::Tempo> tempos;
  for (unsigned index = 0; index < count; ++index) {
    tempos.Add(TL::Tempo(index * kTicksPerChange, 400'000 + index % 7 * 10'000));
  }
  TL::Timeline timeline;
  timeline.SetTempos(tempos);
  timeline.SetMidiEndTicks(count * kTicksPerChange);
  return tesk_midi::SongData("1", "Benchmark", 480, timeline);
}

// Leaves holes of all sizes all over the heap while it lives.
class UsedHeap {
 public:
  UsedHeap() {
    std::mt19937 random(2);
    for (int index = 0; index < 200'000; ++index)
      blocks_.push_back(std::make_unique<std::string>(random() % 200, 'x'));
    // In no order: what the heap gives back next lies anywhere.
    std::shuffle(blocks_.begin(), blocks_.end(), random);
    blocks_.resize(blocks_.size() / 2);
  }

 private:
  std::vector<std::unique_ptr<std::string>> blocks_;
};

class Lookup : public benchmark::Fixture {
 public:
  void SetUp(const benchmark::State& state) override {
    const auto count = static_cast<unsigned>(state.range(0));
    if (state.range(1) != 0) heap_ = std::make_unique<UsedHeap>();
    converter_ = std::make_unique<SamplesTicksConverter>();
    converter_->SetData(SongWithTempos(count), 0);
    lastTick_ = count * kTicksPerChange - 1;
    last_ = converter_->TicksToSamples(lastTick_);
    // Drawn beforehand: the generator would cost as much as the conversion.
    std::mt19937_64 random(1);
    for (int index = 0; index < 4096; ++index) {
      samples_.push_back(std::uniform_int_distribution<long long>(0, last_)(random));
      ticks_.push_back(std::uniform_int_distribution<unsigned>(0, lastTick_)(random));
    }
  }
  void TearDown(const benchmark::State&) override {
    converter_.reset();
    heap_.reset();
    samples_.clear();
    ticks_.clear();
  }

 protected:
  std::unique_ptr<UsedHeap> heap_;
  std::unique_ptr<SamplesTicksConverter> converter_;
  long long last_ = 0;
  unsigned lastTick_ = 0;
  std::vector<long long> samples_;
  std::vector<unsigned> ticks_;
};

BENCHMARK_DEFINE_F(Lookup, SamplesToTicksInTheMiddle)(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(converter_->SamplesToTicksInteger(last_ / 2, nullptr));
}
BENCHMARK_DEFINE_F(Lookup, SamplesToTicksNearTheEnd)(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(converter_->SamplesToTicksInteger(last_ - 100, nullptr));
}
BENCHMARK_DEFINE_F(Lookup, SamplesToTicksAtRandom)(benchmark::State& state) {
  std::size_t at = 0;
  for (auto _ : state)
    benchmark::DoNotOptimize(converter_->SamplesToTicksInteger(samples_[at++ % 4096], nullptr));
}
BENCHMARK_DEFINE_F(Lookup, SamplesToTicksWhilePlaying)(benchmark::State& state) {
  long long sample = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(converter_->SamplesToTicksInteger(sample, nullptr));
    sample = sample + kRead > last_ ? 0 : sample + kRead;
  }
}
BENCHMARK_DEFINE_F(Lookup, SamplesToTicksRoundedAtRandom)(benchmark::State& state) {
  std::size_t at = 0;
  for (auto _ : state)
    benchmark::DoNotOptimize(converter_->SamplesToTicksRounded(samples_[at++ % 4096], nullptr));
}
BENCHMARK_DEFINE_F(Lookup, SamplesToTicksRoundedWhilePlaying)(benchmark::State& state) {
  long long sample = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(converter_->SamplesToTicksRounded(sample, nullptr));
    sample = sample + kRead > last_ ? 0 : sample + kRead;
  }
}
BENCHMARK_DEFINE_F(Lookup, TicksToSamplesInTheMiddle)(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(converter_->TicksToSamples(lastTick_ / 2));
}
BENCHMARK_DEFINE_F(Lookup, TicksToSamplesNearTheEnd)(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(converter_->TicksToSamples(lastTick_ - 3));
}
BENCHMARK_DEFINE_F(Lookup, TicksToSamplesAtRandom)(benchmark::State& state) {
  std::size_t at = 0;
  for (auto _ : state) benchmark::DoNotOptimize(converter_->TicksToSamples(ticks_[at++ % 4096]));
}
BENCHMARK_DEFINE_F(Lookup, TicksToSamplesWhilePlaying)(benchmark::State& state) {
  unsigned tick = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(converter_->TicksToSamples(tick));
    tick = tick == lastTick_ ? 0 : tick + 1;
  }
}
// As many as a planned read asks for, four in each direction.
BENCHMARK_DEFINE_F(Lookup, EightWhilePlaying)(benchmark::State& state) {
  long long sample = 0;
  for (auto _ : state) {
    for (int index = 0; index < 4; ++index) {
      const unsigned tick = converter_->SamplesToTicksInteger(sample + index, nullptr);
      benchmark::DoNotOptimize(converter_->TicksToSamples(tick));
    }
    sample = sample + kRead + 4 > last_ ? 0 : sample + kRead;
  }
}

void MapSizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgNames({"tempos", "used_heap"})->ArgsProduct({{1, 10, 100, 1'000, 10'000}, {0, 1}});
}
BENCHMARK_REGISTER_F(Lookup, SamplesToTicksInTheMiddle)->Apply(MapSizes);
BENCHMARK_REGISTER_F(Lookup, SamplesToTicksNearTheEnd)->Apply(MapSizes);
BENCHMARK_REGISTER_F(Lookup, SamplesToTicksAtRandom)->Apply(MapSizes);
BENCHMARK_REGISTER_F(Lookup, SamplesToTicksWhilePlaying)->Apply(MapSizes);
BENCHMARK_REGISTER_F(Lookup, SamplesToTicksRoundedAtRandom)->Apply(MapSizes);
BENCHMARK_REGISTER_F(Lookup, SamplesToTicksRoundedWhilePlaying)->Apply(MapSizes);
BENCHMARK_REGISTER_F(Lookup, TicksToSamplesInTheMiddle)->Apply(MapSizes);
BENCHMARK_REGISTER_F(Lookup, TicksToSamplesNearTheEnd)->Apply(MapSizes);
BENCHMARK_REGISTER_F(Lookup, TicksToSamplesAtRandom)->Apply(MapSizes);
BENCHMARK_REGISTER_F(Lookup, TicksToSamplesWhilePlaying)->Apply(MapSizes);
BENCHMARK_REGISTER_F(Lookup, EightWhilePlaying)->Apply(MapSizes);

}  // namespace
