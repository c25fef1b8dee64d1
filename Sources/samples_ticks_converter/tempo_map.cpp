#include <stdexcept>

#include "Sources/samples_ticks_converter/sample_math.h"
#include "Sources/samples_ticks_converter/samples_ticks_converter.h"
#include "exc/lock/scope_lock.h"
#include "suite/midi/song_data.h"

SamplesTicksConverter::SamplesTicksConverter() : RLockable("SamplesTicksConverter") {}

SamplesTicksConverter::~SamplesTicksConverter() = default;

void SamplesTicksConverter::SetData(const tesk_midi::SongData& song, TickIndex audioStart) {
  exc::ScopeLock lock(*this);
  audioStart_ = audioStart;
  tempoEvents_.clear();
  for (const TL::Tempo& tempo : song.GetTimeline().GetTempos()) {
    tempoEvents_[tempo.abs_time()].TickTime(tempo.tick_time(song.GetPulsesPerQuarterNote()));
  }
  if (tempoEvents_.count(0) == 0) {
    IndexSegments_();
    throw std::logic_error("this->tempoEvents_ does not contain events at tick time 0.");
  }
  CreateTempoEventsMap_();
}

void SamplesTicksConverter::SetSampleRate(long double rate) {
  exc::ScopeLock lock(*this);
  // A NaN on either side compares unequal, and so counts as a change.
  const bool unchanged = rate == sampleRate_;
  sampleRate_ = rate;
  if (!unchanged) CreateTempoEventsMap_();
}

TickIndex SamplesTicksConverter::GetAudioStart() {
  exc::ScopeLock lock(*this);
  return audioStart_;
}

void SamplesTicksConverter::CreateTempoEventsMap_() {
  tempoEvents_.try_emplace(audioStart_);
  IndexSegments_();
  FillInCarriedTempos_();
  CountSamples_();
  IndexSegments_();
}

void SamplesTicksConverter::IndexSegments_() {
  segments_.Clear();
  for (const auto& [tick, tempo] : tempoEvents_) {
    const double secondsPerTick = tempo.SecondsPerTick();
    segments_.Add({tick, tempo.Samples(), secondsPerTick,
                   samples_ticks_converter::SamplesPerTick(secondsPerTick, sampleRate_)});
  }
}

// An entry that stands there for the audio start alone takes the tempo of the entry before it.
void SamplesTicksConverter::FillInCarriedTempos_() {
  double tickTime = tempoEvents_.at(0).TickTime();
  double tempoScale = 1.0;
  for (auto& [tick, tempo] : tempoEvents_) {
    if (tempo.HasTickTime()) {
      tickTime = tempo.TickTime();
    } else {
      tempo.TickTime(tickTime);
    }
    if (tempo.HasTempoScale()) {
      tempoScale = tempo.TempoScale();
    } else {
      tempo.TempoScale(tempoScale);
    }
  }
}

// Each segment's length is rounded on its own, by the same computation that converts ticks inside it, so that
// an entry's own tick converts to the entry's samples.
void SamplesTicksConverter::CountSamples_() {
  SampleCount total = 0;
  TickIndex previousTick = audioStart_;
  double secondsPerTick = 0.0;
  for (auto entry = tempoEvents_.find(audioStart_); entry != tempoEvents_.end(); ++entry) {
    total = ComputeSampleCount_(total, entry->first - previousTick, secondsPerTick);
    secondsPerTick = entry->second.SecondsPerTick();
    previousTick = entry->first;
    entry->second.Samples(total);
  }
}
