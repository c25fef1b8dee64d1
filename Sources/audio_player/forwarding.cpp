#include "Sources/audio_player/audio_player.h"
#include "suite/audio/audio_sample_output.h"

// ---- to the output, as far as there is one -------------------------------------------------------

void AudioPlayer::Idle() {
  if (tesk_audio::AudioSampleOutput* const output = Output_()) output->Idle();
}

void AudioPlayer::PrepareForExit() {
  if (tesk_audio::AudioSampleOutput* const output = Output_()) output->PrepareForExit();
}

// ---- to the show control -------------------------------------------------------------------------

void AudioPlayer::AddToSampleIndex(long long samples) {
  showControl_.AddToSampleIndex(samples);
}

tesk_audio::SampleCount AudioPlayer::GetNextReadSampleCount(tesk_audio::SampleCount requested) {
  return showControl_.GetNextReadSampleCount(requested);
}

void AudioPlayer::ProcessLoopEventsAtCurrentTickIndex() {
  GetShowControl().ProcessLoopEventsAtCurrentTickIndex();
}

long long AudioPlayer::GetSampleIndex() {
  return showControl_.GetSampleIndex();
}

long long AudioPlayer::GetNextCaesuraSampleIndex(long long sampleIndex) {
  return showControl_.GetNextCaesuraSampleIndex(sampleIndex);
}

long long AudioPlayer::GetLastJumpSampleIndex() {
  return showControl_.GetLastJumpSampleIndex();
}

long long AudioPlayer::GetJumpTargetSampleIndex() {
  return showControl_.GetJumpTargetSampleIndex();
}

bool AudioPlayer::GetJumpIsNext() {
  return showControl_.GetJumpIsNext();
}

bool AudioPlayer::GetCutToEndOfSongIsNext() {
  return showControl_.GetCutToEndOfSongIsNext();
}

void AudioPlayer::GetDspFactorsAtCurrentTickIndex(long double* scale, int* transposition) {
  showControl_.GetDspFactorsAtCurrentTickIndex(scale, transposition);
}

void AudioPlayer::GetDspFactorsAtCurrentSampleIndex(long double* scale, int* transposition) {
  showControl_.GetDspFactorsAtCurrentSampleIndex(scale, transposition);
}

void AudioPlayer::GetDspFactorsAt(long long sampleIndex, long double* scale, int* transposition) {
  showControl_.GetDspFactorsAt(sampleIndex, scale, transposition);
}

exc::ExLock& AudioPlayer::GetReadSamplesLock() {
  exc::ScopeLock lock(*this);
  return showControl_.GetReadSamplesLock();
}

void AudioPlayer::SkipAheadSamplesOnNextJump(unsigned samples) {
  showControl_.SkipAheadSamplesOnNextJump(samples);
}

void AudioPlayer::AdjustNextJumpSampleIndex(long long samples) {
  showControl_.AdjustNextJumpSampleIndex(samples);
}

// ---- to the base ---------------------------------------------------------------------------------

bool AudioPlayer::CurrentSongIsAttacca() {
  return Player::CurrentSongIsAttacca();
}

void AudioPlayer::SetTempoScale(double scale) {
  GetTransients().SetTempoScale(scale);
}

void AudioPlayer::SetTransposition(int semitones) {
  GetTransients().SetTransposition(semitones);
}

// ---- to nobody -----------------------------------------------------------------------------------

void AudioPlayer::SetTimeCodeCallback(std::function<void(double, double, double)> /*callback*/) {}

void AudioPlayer::SetFullFrameTimeCodeCallback(std::function<void(double)> /*callback*/) {}
