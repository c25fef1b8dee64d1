#pragma once

#include <vector>

#include "tests/reference_suite/audio/support/offline_run.h"

// An offline run that also writes down which device frames each read became, so that a test can ask where a
// frame of the song ought to be heard.
struct AudibleRun : OfflineRun {
  using OfflineRun::OfflineRun;

  struct Piece {
    long long song = 0;  // first frame
    long long frames = 0;
    double output = 0.0;  // device frames before it
    double scale = 1.0;
  };

  // Starts, and plays to the end. `beforeStep` may be empty.
  void Play(const std::function<void()>& beforeStep = nullptr);
  // Where in `heard` this frame of the song belongs, each time it is played.
  std::vector<double> PlacesOf(long long frame) const;

  std::vector<Piece> pieces;
};

// ---- sounds, at 48 kHz, full scale 1
// Single samples of 0.9 at these frames.
std::shared_ptr<const std::vector<float>> Clicks(const std::vector<long long>& at, std::size_t frames);
// A sum of sines.
std::shared_ptr<const std::vector<float>> Tones(const std::vector<double>& hertz, double level,
                                                std::size_t frames);

// ---- measurements
// The loudest frame within `reach` of `place`, as its distance from there in milliseconds.
double LoudestNear(const std::vector<float>& heard, double place, int reach, double rateHz = 48000.0);
// Root of the mean square of [from, from + frames).
double Level(const std::vector<float>& heard, std::size_t from, std::size_t frames);
// The frequency of the strongest sine near `hertz`.
double PitchNear(const std::vector<float>& heard, std::size_t from, std::size_t frames, double hertz);
// The largest step from one sample to the next in [from, to), and the largest change of such a step.
double LargestStep(const std::vector<float>& heard, std::size_t from, std::size_t to);
double LargestBend(const std::vector<float>& heard, std::size_t from, std::size_t to);
