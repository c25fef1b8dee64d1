#include "host/session/device_setup.h"

#include <map>
#include <optional>

#include "host/session/failure.h"
#include "host/session/shown_text.h"
#include "reference_suite/audio/decode/decoding_stop.h"
#include "reference_suite/audio/decode/library_words.h"
#include "reference_suite/audio/device/bounded_look.h"
#include "reference_suite/audio/device/file_device.h"
#include "reference_suite/audio/device/jack_client.h"
#include "reference_suite/audio/device/jack_links.h"
#include "reference_suite/audio/device/list_devices.h"
#include "reference_suite/audio/encode/sound_file_writer.h"
#include "reference_suite/audio/output/offline_output.h"
#include "reference_suite/audio/output/output_meters.h"
#include "reference_suite/audio/output/output_settings.h"
#include "suite/audio/errors.h"

namespace orbel::host {
namespace {

void Configure(tesk_audio::DeviceKind device, const OutputChoice& choice) {
  tesk_audio::OutputSettings settings;
  settings.device = device;
  settings.deviceName = choice.device;
  settings.periodFrames = choice.periodFrames;
  settings.outputs = choice.outputs;
  settings.connect = choice.connect;
  if (choice.onDeviceLoss == "hold") settings.onDeviceLoss = tesk_audio::DeviceLossPolicy::Hold;
  if (choice.onDeviceLoss == "end") settings.onDeviceLoss = tesk_audio::DeviceLossPolicy::End;
  settings.rateHz = choice.rateHz;
  settings.aheadMs = choice.aheadMs;
  settings.crossfadeMs = choice.crossfadeMs;
  settings.fadeMs = choice.fadeMs;
  settings.stretch =
      choice.stretch == "finer" ? tesk_audio::StretchQuality::Finer : tesk_audio::StretchQuality::Faster;
  tesk_audio::ConfigureOutput(settings);
}

Step::Event ToEvent(tesk_audio::StepEvent event) {
  switch (event) {
    case tesk_audio::StepEvent::Jump:
      return Step::Event::Jump;
    case tesk_audio::StepEvent::Caesura:
      return Step::Event::Caesura;
    case tesk_audio::StepEvent::End:
      return Step::Event::End;
    case tesk_audio::StepEvent::Attacca:
      return Step::Event::Attacca;
    case tesk_audio::StepEvent::None:
      break;
  }
  return Step::Event::None;
}

class WrittenSoundFile : public SoundFile {
 public:
  WrittenSoundFile(const std::string& path, tesk_audio::SoundFileFormat format, double rateHz,
                   unsigned channels)
      : writer_(path, format, rateHz, channels) {}
  void Write(const float* frames, std::size_t frameCount) override { writer_.Write(frames, frameCount); }
  void Commit() override { writer_.Commit(); }

 private:
  tesk_audio::SoundFileWriter writer_;
};

tesk_audio::SoundFileFormat FormatOf(const std::string& format) {
  static const std::map<std::string, tesk_audio::SoundFileFormat> kFormats{
      {"float", tesk_audio::SoundFileFormat::Float},
      {"pcm24", tesk_audio::SoundFileFormat::Pcm24},
      {"pcm16", tesk_audio::SoundFileFormat::Pcm16},
      {"flac", tesk_audio::SoundFileFormat::Flac},
      {"ogg", tesk_audio::SoundFileFormat::OggVorbis}};
  const auto known = kFormats.find(format);
  if (known == kFormats.end()) {
    throw Failure("there is no format \"" + format + "\"; give float, pcm24, pcm16, flac or ogg", kUsage);
  }
  return known->second;
}

struct Kind {
  std::string name;
  std::string format;  // that --format asks for it with
};

Kind KindOf(tesk_audio::SoundFileFormat format) {
  if (format == tesk_audio::SoundFileFormat::Flac) return {"FLAC", "flac"};
  if (format == tesk_audio::SoundFileFormat::OggVorbis) return {"Ogg Vorbis", "ogg"};
  return {"WAV", "float"};
}

}  // namespace

void UseLiveOutput(const OutputChoice& choice) {
  tesk_audio::DeviceKind kind = tesk_audio::DeviceKind::Null;
  if (choice.output == "jack") kind = tesk_audio::DeviceKind::Jack;
  if (choice.output == "auto") kind = tesk_audio::DeviceKind::Any;
  if (choice.output == "desktop") kind = tesk_audio::DeviceKind::Desktop;
  if (choice.output == "file") kind = tesk_audio::DeviceKind::File;
  Configure(kind, choice);
}

std::vector<DeviceLine> LookAtDevices(const std::string& jackServer, const Say& say) {
  const auto line = [](const char* output, const tesk_audio::DeviceInfo& info) {
    return DeviceLine{output,      info.name,    info.answers,     info.problem,
                      info.rateHz, info.outputs, info.periodFrames};
  };
  std::vector<DeviceLine> lines{line("jack", tesk_audio::LookAtJackInTime(jackServer, say))};
  for (const tesk_audio::DeviceInfo& info : tesk_audio::LookAtDesktopInTime(say))
    lines.push_back(line("desktop", info));
  lines.push_back({"null", "a clock without sound", true, "", 0.0, 0, 0});
  lines.push_back({"file", "a sound file: --device FILE", true, "", 0.0, 0, 0});
  return lines;
}

void RequirePortPatterns(const std::vector<std::string>& patterns) {
  try {
    tesk_audio::RequirePatterns(patterns);
  } catch (const tesk_audio::TESKAudioError& error) {
    throw Failure(error.what(), kUsage);
  }
}

void KeepDecodersQuiet() {
  tesk_audio::KeepLibrariesQuiet();
}

std::vector<std::string> TakeSoundSystemLines() {
  std::vector<std::string> lines = tesk_audio::TakeJackMessages();
  for (std::string& line : lines) line.insert(0, "JACK: ");
  return lines;
}

bool ReadMeters(Meters* meters) {
  return tesk_audio::ReadOutputMeters(meters);
}

SilentOutput::SilentOutput() {
  tesk_audio::HoldLiveOutputs();
}

SilentOutput::~SilentOutput() {
  tesk_audio::ReleaseLiveOutputs();
}

struct BrokenOffDecoding::Stop {
  tesk_audio::DecodingStop decoding;
};

BrokenOffDecoding::BrokenOffDecoding() : stop_(std::make_unique<Stop>()) {}

BrokenOffDecoding::~BrokenOffDecoding() = default;

struct KeptSoundFile::Hold {
  tesk_audio::KeptFile file;
};

KeptSoundFile::KeptSoundFile() : hold_(std::make_unique<Hold>()) {}

KeptSoundFile::~KeptSoundFile() = default;

void PlayIntoFile(double seconds) {
  tesk_audio::LetFileDeviceTake(seconds);
}

void FinishFile() {
  tesk_audio::FinishFileDevice();
}

void UseOfflineOutput(const OutputChoice& choice) {
  Configure(tesk_audio::DeviceKind::Offline, choice);
}

bool RenderStep(Step* step, const FrameSink& sink) {
  tesk_audio::StepReport report;
  if (!tesk_audio::StepOfflineOutput(&report, sink)) return false;
  step->event = ToEvent(report.event);
  step->sample = report.sampleIndex;
  step->frames = report.frames;
  step->outputFrames = report.outputFrames;
  step->jumpFrom = report.jumpFrom;
  step->jumpTo = report.jumpTo;
  step->scale = static_cast<double>(report.scale);
  step->transposition = report.transposition;
  return true;
}

void MixFadeOut(float* frames, std::size_t frameCount) {
  tesk_audio::MixOfflineTail(frames, frameCount);
}

std::size_t FadeOutFrames() {
  return tesk_audio::GetOfflineTailFrames();
}

unsigned RenderChannels() {
  return tesk_audio::GetOfflineChannelCount();
}

double RenderRateHz() {
  return tesk_audio::GetOfflineSampleRateHz();
}

bool NamesASoundFile(const std::string& path) {
  return tesk_audio::FormatOfName(path).has_value();
}

std::string WhatNameHides(const std::string& path, const std::string& format) {
  const std::optional<tesk_audio::SoundFileFormat> named = tesk_audio::FormatOfName(path);
  if (!named) return "";
  const Kind asked = KindOf(*named);
  const Kind is = KindOf(FormatOf(format));
  if (asked.name == is.name) return "";
  return Shown(path) + ": becomes " + is.name + ", whatever it is called; --format " + asked.format +
         " makes it " + asked.name;
}

std::unique_ptr<SoundFile> CreateSoundFile(const std::string& path, const std::string& format, double rateHz,
                                           unsigned channels) {
  return std::make_unique<WrittenSoundFile>(path, FormatOf(format), rateHz, channels);
}

}  // namespace orbel::host
