#pragma once

namespace tesk_audio {
class AudioSampleContent;
}

namespace orbel::host {

// How a jump sounds that is spliced without a cross-fade.
struct Seam {
  double step = 0.0;     // between the last frame before the jump and the first after it, full scale is 1
  double ownStep = 0.0;  // the music's own largest step around both places

  bool Clicks() const;
};

// The jump that is taken before frame `from` is played and goes on at frame `to`. The channel that is worst
// off counts. Frames outside the audio are silence.
Seam MeasureSeam(const tesk_audio::AudioSampleContent& content, long long from, long long to);

}  // namespace orbel::host
