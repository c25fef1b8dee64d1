#pragma once

#include <memory>
#include <string>
#include <vector>

#include "suite/audio/audio_sample_content.h"
#include "suite/audio/create.h"

// A content owned by the test, as the player owns it.
inline std::unique_ptr<tesk_audio::AudioSampleContent> Decode(const std::string& path,
                                                              const std::string& argument = "") {
  return std::unique_ptr<tesk_audio::AudioSampleContent>(
      tesk_audio::CreateAudioSampleContent(path, argument));
}

// All of its samples, interleaved.
inline std::vector<float> Samples(const tesk_audio::AudioSampleContent& content) {
  long long count = content.GetSampleCount();
  std::vector<float> samples(static_cast<std::size_t>(count) * content.GetChannelCount());
  content.Read(0, &count, samples.data());
  return samples;
}
