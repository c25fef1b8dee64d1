#include "tests/support/cranked_output.h"

#include <utility>

#include "exc/lock/scope_lock.h"
#include "suite/audio/audio_sample_content.h"
#include "tests/fakes/journal.h"

namespace test_support {

CrankedOutput::CrankedOutput(const tesk_audio::AudioSampleContent& content,
                             tesk_audio::AudioPlayerOutputInterface& player)
    : player_(player), content_(&content), rateHz_(content.GetSampleRateHz()) {}

CrankedOutput::~CrankedOutput() {
  Record_("Delete");
}

double CrankedOutput::GetSampleRateHz() {
  Tell_("GetSampleRateHz");
  const std::lock_guard lock(mutex_);
  return rateHz_;
}

long long CrankedOutput::GetElapsedSampleCount() {
  Tell_("GetElapsedSampleCount");
  const std::lock_guard lock(mutex_);
  return elapsed_;
}

void CrankedOutput::Refill() {
  Record_("Refill");
  const std::lock_guard lock(mutex_);
  elapsed_ = 0;
}

void CrankedOutput::Start() {
  Record_("Start");
  const std::lock_guard lock(mutex_);
  running_ = true;
  paused_ = false;
}

void CrankedOutput::Pause() {
  Record_("Pause");
  const std::lock_guard lock(mutex_);
  running_ = false;
  paused_ = true;
}

bool CrankedOutput::Stop(bool wait) {
  Record_(wait ? "Stop(true)" : "Stop(false)");
  {
    const std::lock_guard lock(mutex_);
    if (stopsToRefuse_ > 0) {
      --stopsToRefuse_;
      return false;
    }
    if (ignoresStops_ || (!running_ && !paused_)) return true;
    running_ = false;
    paused_ = false;
  }
  if (wait) ReportStop();
  return true;
}

bool CrankedOutput::SwitchContent(const tesk_audio::AudioSampleContent& content, std::string* errorText) {
  Record_("SwitchContent");
  const std::lock_guard lock(mutex_);
  if (refusesContent_) {
    *errorText = refusal_;
    return false;
  }
  content_ = &content;
  return true;
}

void CrankedOutput::Idle() {
  Record_("Idle");
}

void CrankedOutput::PrepareForExit() {
  Record_("PrepareForExit");
}

bool CrankedOutput::GetOutputIsRunning() {
  Tell_("GetOutputIsRunning");
  const std::lock_guard lock(mutex_);
  return running_;
}

const tesk_audio::AudioSampleContent* CrankedOutput::GetContent() const {
  const std::lock_guard lock(mutex_);
  return content_;
}

void CrankedOutput::SetRunning(bool running) {
  const std::lock_guard lock(mutex_);
  running_ = running;
}

void CrankedOutput::SetElapsedSampleCount(long long count) {
  const std::lock_guard lock(mutex_);
  elapsed_ = count;
}

void CrankedOutput::SetSampleRateHz(double rateHz) {
  const std::lock_guard lock(mutex_);
  rateHz_ = rateHz;
}

void CrankedOutput::RefuseStops(int count) {
  const std::lock_guard lock(mutex_);
  stopsToRefuse_ = count;
}

void CrankedOutput::IgnoreStops(bool ignore) {
  const std::lock_guard lock(mutex_);
  ignoresStops_ = ignore;
}

void CrankedOutput::RefuseContent(const std::string& errorText) {
  const std::lock_guard lock(mutex_);
  refusesContent_ = true;
  refusal_ = errorText;
}

void CrankedOutput::AcceptContent() {
  const std::lock_guard lock(mutex_);
  refusesContent_ = false;
}

void CrankedOutput::OnCall(std::function<void(const std::string&)> hook) {
  const std::lock_guard lock(mutex_);
  hook_ = std::move(hook);
}

void CrankedOutput::ReportStop() {
  player_.NotifyOutputHasStopped();
}

std::vector<float> CrankedOutput::Turn(long long frames) {
  exc::ScopeLock lock(player_.GetReadSamplesLock());
  tesk_audio::SampleCount count = player_.GetNextReadSampleCount(tesk_audio::SampleCount(frames, 1.0L));
  if (count.GetUnscaled() == 0) return {};
  lastReadIndex_ = player_.GetSampleIndex();
  std::vector<float> buffer(static_cast<std::size_t>(frames) * content_->GetChannelCount());
  player_.ReadSamples(&count, buffer.data());
  buffer.resize(static_cast<std::size_t>(count.GetUnscaled()) * content_->GetChannelCount());
  return buffer;
}

void CrankedOutput::Record_(const std::string& call) {
  Tell_(call);
  fakes::Write("output." + call);
}

void CrankedOutput::Tell_(const std::string& call) {
  std::function<void(const std::string&)> hook;
  {
    const std::lock_guard lock(mutex_);
    hook = hook_;
  }
  if (hook) hook(call);
}

}  // namespace test_support
