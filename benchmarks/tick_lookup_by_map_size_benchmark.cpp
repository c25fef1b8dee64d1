// How long does the tick of a sample take to find, by the number of tempo changes in the song?
#include <benchmark/benchmark.h>

#include <memory>
#include <random>

#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "suite/midi/song_data.h"

namespace {

constexpr unsigned kTicksPerChange = 480;

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

class Lookup : public benchmark::Fixture {
 public:
  void SetUp(const benchmark::State& state) override {
    const auto count = static_cast<unsigned>(state.range(0));
    converter_ = std::make_unique<SamplesTicksConverter>();
    converter_->SetData(SongWithTempos(count), 0);
    last_ = converter_->TicksToSamples(count * kTicksPerChange - 1);
  }

 protected:
  std::unique_ptr<SamplesTicksConverter> converter_;
  long long last_ = 0;
};

BENCHMARK_DEFINE_F(Lookup, AtTheFirstSample)(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(converter_->SamplesToTicksInteger(0, nullptr));
}

BENCHMARK_DEFINE_F(Lookup, AtTheLastSample)(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(converter_->SamplesToTicksInteger(last_, nullptr));
}

BENCHMARK_DEFINE_F(Lookup, AtRandomSamples)(benchmark::State& state) {
  std::mt19937_64 random(1);
  std::uniform_int_distribution<long long> samples(0, last_);
  for (auto _ : state) benchmark::DoNotOptimize(converter_->SamplesToTicksInteger(samples(random), nullptr));
}

BENCHMARK_DEFINE_F(Lookup, OfASampleAtRandomTicks)(benchmark::State& state) {
  std::mt19937 random(1);
  std::uniform_int_distribution<unsigned> ticks(0,
                                                static_cast<unsigned>(state.range(0)) * kTicksPerChange - 1);
  for (auto _ : state) benchmark::DoNotOptimize(converter_->TicksToSamples(ticks(random)));
}

BENCHMARK_REGISTER_F(Lookup, AtTheFirstSample)->RangeMultiplier(10)->Range(1, 10'000);
BENCHMARK_REGISTER_F(Lookup, AtTheLastSample)->RangeMultiplier(10)->Range(1, 10'000);
BENCHMARK_REGISTER_F(Lookup, AtRandomSamples)->RangeMultiplier(10)->Range(1, 10'000);
BENCHMARK_REGISTER_F(Lookup, OfASampleAtRandomTicks)->RangeMultiplier(10)->Range(1, 10'000);

}  // namespace
