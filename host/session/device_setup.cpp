#include "host/session/device_setup.h"

#include "reference_suite/audio/output/offline_output.h"
#include "reference_suite/audio/output/output_settings.h"

namespace orbel::host {
namespace {

void Configure(tesk_audio::DeviceKind device, const OutputChoice& choice) {
  tesk_audio::OutputSettings settings;
  settings.device = device;
  settings.rateHz = choice.rateHz;
  settings.aheadMs = choice.aheadMs;
  settings.crossfadeMs = choice.crossfadeMs;
  settings.fadeMs = choice.fadeMs;
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

}  // namespace

void UseClockWithoutSound(const OutputChoice& choice) {
  Configure(tesk_audio::DeviceKind::Null, choice);
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
  step->jumpFrom = report.jumpFrom;
  step->jumpTo = report.jumpTo;
  step->scale = static_cast<double>(report.scale);
  step->transposition = report.transposition;
  return true;
}

unsigned RenderChannels() {
  return tesk_audio::GetOfflineChannelCount();
}

double RenderRateHz() {
  return tesk_audio::GetOfflineSampleRateHz();
}

}  // namespace orbel::host
