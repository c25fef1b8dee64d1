#pragma once

#include <string>
#include <vector>

namespace tesk_audio {

class AudioSampleContent;
class AudioSampleOutput;
class AudioPlayerOutputInterface;

// Decodes a whole audio file into memory. `argument`: "rate=R" resamples to R frames per second while
// decoding, "rate=R,channels=N" also refuses a file that has other channels; empty takes the file as it is.
// Threads: ANY. Throws OggVorbisDecodeError, AudioSampleContentError or TESKAudioError. The caller owns the
// result.
AudioSampleContent* CreateAudioSampleContent(const std::string& path, const std::string& argument);

// The output for this content's format on the configured device; from then on it calls `player`. Throws
// TESKAudioError when the device refuses. The caller owns the result; `content` outlives it or is switched.
AudioSampleOutput* CreateAudioSampleOutput(const AudioSampleContent& content,
                                           AudioPlayerOutputInterface& player);

// Opens an audio file, reads its header and its end, and closes it again: what decoding would refuse at once
// is refused here, with the same errors. Quick, whatever the length; what was found is remembered for as long
// as the file does not change.
struct AudioFileInfo {
  long long frames = 0;  // at the file's rate; -1 when only decoding can tell
  double sampleRateHz = 0.0;
  unsigned channels = 0;
  std::string format;  // "Ogg Vorbis", "WAV", "FLAC", ...
};
AudioFileInfo ProbeAudioFile(const std::string& path);

// Opens many, on several cores at once, so that ProbeAudioFile knows them; few, or all on a single core, are
// left for whoever asks for them, and so is what is wrong with a file. Threads: ANY; those that it starts
// have ended when it returns.
void ProbeAudioFiles(const std::vector<std::string>& paths);

}  // namespace tesk_audio
