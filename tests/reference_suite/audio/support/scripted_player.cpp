#include "tests/reference_suite/audio/support/scripted_player.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "exc/flag/ex_scope_flag.h"
#include "exc/lock/scope_lock.h"

using tesk_audio::SampleCount;

ScriptedPlayer::ScriptedPlayer(std::vector<Song> songs, unsigned channels)
    : channels_(channels),
      readSamplesLock_("ReadSamples"),
      lock_("ScriptedPlayer"),
      songs_(std::move(songs)) {
  for (Song& song : songs_) {
    if (song.audioFrames < 0) song.audioFrames = song.frames;
  }
}

ScriptedPlayer::~ScriptedPlayer() = default;

void ScriptedPlayer::SeekTo(long long sampleIndex) {
  const exc::ExScopeFlag flag(output_->GetSeekFlag());
  bool plays = false;
  {
    exc::ScopeLock reading(readSamplesLock_);
    exc::ScopeLock lock(lock_);
    index_ = sampleIndex;
    plays = plays_;
    if (!plays) planned_ = 0;
    std::erase_if(caesurasPassed_, [=](long long at) { return at >= sampleIndex; });
  }
  if (!plays) output_->Refill();
}

void ScriptedPlayer::RewindAndRefill() {
  {
    exc::ScopeLock reading(readSamplesLock_);
    exc::ScopeLock lock(lock_);
    index_ = planned_ = 0;
    jumpsDone_.clear();
    caesurasPassed_.clear();
  }
  output_->Refill();
}

void ScriptedPlayer::SetPlays(bool plays) {
  exc::ScopeLock lock(lock_);
  plays_ = plays;
  if (plays) hasStopped_ = waits_ = false;
}

std::string ScriptedPlayer::Log() {
  exc::ScopeLock lock(lock_);
  return log_;
}

void ScriptedPlayer::ClearLog() {
  exc::ScopeLock lock(lock_);
  log_.clear();
}

long long ScriptedPlayer::Planned() {
  exc::ScopeLock lock(lock_);
  return planned_;
}

long long ScriptedPlayer::Position() {
  exc::ScopeLock lock(lock_);
  return index_;
}

bool ScriptedPlayer::HasStopped() {
  exc::ScopeLock lock(lock_);
  return hasStopped_;
}

bool ScriptedPlayer::Waits() {
  exc::ScopeLock lock(lock_);
  return waits_;
}

void ScriptedPlayer::Write_(const std::string& line) {
  exc::ScopeLock lock(lock_);
  log_ += line + "\n";
}

void ScriptedPlayer::Play() {
  Write_("play");
  if (onPlay) onPlay();
  SetPlays(true);
  output_->Start();
  if (onPlayed) onPlayed();
}

bool ScriptedPlayer::CurrentSongIsAttacca() {
  if (onIsAttacca) onIsAttacca();
  exc::ScopeLock lock(lock_);
  return songs_[song_].isAttacca;
}

void ScriptedPlayer::AddToSampleIndex(long long samples) {
  exc::ScopeLock lock(lock_);
  index_ += samples;
  planned_ += samples;
}

const long long* ScriptedPlayer::DueJump_() {
  const auto jumps = songs_[song_].jumps.find(index_);
  if (go || jumps == songs_[song_].jumps.end()) return nullptr;
  const std::size_t done = jumpsDone_[index_];
  return done < jumps->second.size() ? &jumps->second[done] : nullptr;
}

long long ScriptedPlayer::FramesToNextCue_() {
  const Song& song = songs_[song_];
  long long next = song.frames;
  for (const long long at : song.caesuras) {
    if (at >= index_ && caesurasPassed_.count(at) == 0) next = std::min(next, at);
  }
  for (const auto& [at, targets] : song.jumps) {
    if (at > index_) next = std::min(next, at);
  }
  for (const auto& [at, scale] : song.scales) {
    if (at > index_) next = std::min(next, at);
  }
  for (const auto& [at, semitones] : song.transpositions) {
    if (at > index_) next = std::min(next, at);
  }
  return next - index_;
}

SampleCount ScriptedPlayer::GetNextReadSampleCount(SampleCount requested) {
  if (onPlan) onPlan();
  exc::ScopeLock lock(lock_);
  if (const long long* const target = DueJump_()) {
    ++jumpsDone_[index_];
    lastJump_ = index_;
    index_ = *target;
  }
  requested.SetUnscaled(std::clamp(FramesToNextCue_(), 0LL, requested.GetUnscaled()));
  return requested;
}

long long ScriptedPlayer::GetSampleIndex() {
  if (onPosition) onPosition();
  return Position();
}

long long ScriptedPlayer::GetNextCaesuraSampleIndex(long long sampleIndex) {
  exc::ScopeLock lock(lock_);
  for (const long long at : songs_[song_].caesuras) {
    if (at >= sampleIndex && caesurasPassed_.count(at) == 0) return at;
  }
  return -1;
}

void ScriptedPlayer::NotifyApproachingStop() {
  if (onApproachingStop) onApproachingStop();
  Write_("approaching stop");
}

long long ScriptedPlayer::GetLastJumpSampleIndex() {
  exc::ScopeLock lock(lock_);
  return lastJump_;
}

long long ScriptedPlayer::GetJumpTargetSampleIndex() {
  exc::ScopeLock lock(lock_);
  return target_;
}

bool ScriptedPlayer::GetJumpIsNext() {
  exc::ScopeLock lock(lock_);
  const long long* const target = DueJump_();
  if (target == nullptr || !songs_[song_].announcesJumps) return false;
  target_ = *target;
  return true;
}

void ScriptedPlayer::LoadNextSongAttacca() {
  Write_("attacca");
  if (onAttacca) onAttacca();
  exc::ScopeLock reading(readSamplesLock_);
  exc::ScopeLock lock(lock_);
  if (song_ + 1 == songs_.size()) throw std::out_of_range("No song after 2.");
  ++song_;
  index_ = 0;
  jumpsDone_.clear();
  caesurasPassed_.clear();
  attaccaHasOccurred_ = true;
}

bool ScriptedPlayer::OnCaesuraStop() {
  Write_("caesura");
  if (onCaesura) onCaesura();
  {
    exc::ScopeLock reading(readSamplesLock_);
    exc::ScopeLock lock(lock_);
    caesurasPassed_.insert(index_);
    planned_ = 0;
    plays_ = false;
  }
  output_->Refill();
  exc::ScopeLock lock(lock_);
  waits_ = !goesOnAtCaesura;
  return goesOnAtCaesura;
}

void ScriptedPlayer::NotifyOutputHasStopped() {
  Write_("stopped");
  if (onStopped) onStopped();
  exc::ScopeLock lock(lock_);
  plays_ = false;
  hasStopped_ = true;
}

long long ScriptedPlayer::Read_(long long from, long long* count, float* buffer) {
  *count = std::clamp(songs_[song_].audioFrames - from, 0LL, *count);
  const auto& sound = songs_[song_].sound;
  for (long long frame = from; frame < from + *count; ++frame) {
    for (unsigned channel = 0; channel < channels_; ++channel) {
      *buffer++ = sound ? (*sound)[static_cast<std::size_t>(frame)] : Sample(frame, static_cast<int>(song_));
    }
  }
  return *count;
}

long long ScriptedPlayer::ReadSamplesAt(long long sampleIndex, long long* ioCount, void* buffer) {
  exc::ScopeLock lock(lock_);
  return Read_(sampleIndex, ioCount, static_cast<float*>(buffer));
}

long long ScriptedPlayer::ReadSamples(SampleCount* ioPacketCount, void* buffer) {
  exc::ScopeLock lock(lock_);
  long long count = ioPacketCount->GetUnscaled();
  const long long result = Read_(index_, &count, static_cast<float*>(buffer));
  ioPacketCount->SetUnscaled(count);
  AddToSampleIndex(count);
  return result;
}

void ScriptedPlayer::GetDspFactorsAtCurrentTickIndex(long double* scale, int* transposition) {
  GetDspFactorsAtCurrentSampleIndex(scale, transposition);
}

void ScriptedPlayer::GetDspFactorsAtCurrentSampleIndex(long double* scale, int* transposition) {
  GetDspFactorsAt(GetSampleIndex(), scale, transposition);
}

void ScriptedPlayer::GetDspFactorsAt(long long sampleIndex, long double* scale, int* transposition) {
  exc::ScopeLock lock(lock_);
  *scale = 1.0L;
  *transposition = 0;
  for (const auto& [at, value] : songs_[song_].scales) {
    if (at <= sampleIndex) *scale = value;
  }
  for (const auto& [at, value] : songs_[song_].transpositions) {
    if (at <= sampleIndex) *transposition = value;
  }
  *scale *= liveScale;
  *transposition += liveSemitones;
}

bool ScriptedPlayer::GetAttaccaHasOccurred() {
  exc::ScopeLock lock(lock_);
  return std::exchange(attaccaHasOccurred_, false);
}
