#pragma once

namespace tesk_audio {

// What songs can have, and shows be played and rendered at, in frames per second.
inline constexpr int kLeastSampleRateHz = 8'000;
inline constexpr int kMostSampleRateHz = 384'000;

}  // namespace tesk_audio
