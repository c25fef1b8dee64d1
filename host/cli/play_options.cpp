#include "host/cli/play_options.h"

#include <CLI/CLI.hpp>

#include "host/cli/between.h"
#include "suite/audio/sample_rates.h"

namespace orbel::host::cli {

void AddSoundOptions(CLI::App& verb, PlayOptions& options) {
  OutputChoice& sound = options.sound;
  verb.add_option("--output", options.output,
                  "jack; desktop: PulseAudio or ALSA; null: a clock without sound; file: a sound file, as\n"
                  "--device names it, faster than real time where nobody sits at the keys;\n"
                  "auto: the first that answers, then or later, and a clock as long as none does")
      ->check(CLI::IsMember({"auto", "jack", "desktop", "null", "file"}))
      ->capture_default_str();
  verb.add_option("--device", sound.device,
                  "The JACK server, or the output of the desktop, if it is not the usual one; the name of\n"
                  "the file: .wav, .flac or .ogg")
      ->type_name("NAME");
  verb.add_option("--rate", sound.rateHz, "Frames per second of the songs; default: those of the device")
      ->check(Between(tesk_audio::kLeastSampleRateHz, tesk_audio::kMostSampleRateHz));
  verb.add_option("--period", sound.periodFrames,
                  "Frames that the device takes at a time; a JACK server decides for itself")
      ->check(WholeBetween(16, 8192))
      ->capture_default_str();
  verb.add_option("--ahead", sound.aheadMs, "Milliseconds rendered ahead of the device")
      ->check(Between(1.0, 2000.0))
      ->capture_default_str();
  verb.add_option("--channels", sound.outputs,
                  "Outputs of the device for channel 1, 2, ..., for instance 3,4; default: the first ones")
      ->delimiter(',')
      ->check(WholeBetween(1, 1024));
  verb.add_option(
          "--connect", sound.connect,
          "JACK alone: a regular expression for the ports to play to instead, which hear channel 1, 2, ...\n"
          "in their order, for instance \"mixer:in_.*\"; given more than once, each from channel 1 on")
      ->allow_extra_args(false);
  verb.add_option("--on-device-loss", sound.onDeviceLoss,
                  "When the device fails: run-on (the show goes on unheard), hold (pause), end")
      ->check(CLI::IsMember({"run-on", "hold", "end"}))
      ->capture_default_str();
  verb.add_option("--stretch", sound.stretch, "Other tempos and keys: faster, or finer in pitch and level")
      ->check(CLI::IsMember({"faster", "finer"}))
      ->capture_default_str();
  verb.add_option("--crossfade", sound.crossfadeMs,
                  "Milliseconds at jumps; 0 splices bit-exactly what is played as recorded.\n"
                  "At other tempos and in other keys from 5 to 10, whatever is given")
      ->check(Between(0.0, 1000.0))
      ->capture_default_str();
  verb.add_option("--fade", sound.fadeMs,
                  "Milliseconds on start, pause, stop and seeks;\n"
                  "out no longer than what has been rendered ahead")
      ->check(Between(0.0, 1000.0))
      ->capture_default_str();
}

}  // namespace orbel::host::cli
