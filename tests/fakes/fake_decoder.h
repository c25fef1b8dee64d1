#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/support/staircase_content.h"

// A decoder with switches, in place of tesk_audio::CreateAudioSampleContent. Every path decodes to a
// staircase unless a switch says otherwise. Threads: ANY.
namespace fakes::decoder {

enum class ErrorKind { OggVorbis, Content, Audio, Runtime, OutOfMemory, NotAnException };

// All switches off, nothing recorded. Ends with every held loader let go.
void Reset();

// Decoding of `path` throws.
void FailDecode(const std::string& path, ErrorKind kind, const std::string& text);
void DecodeAgain(const std::string& path);
// What `path` decodes to.
void SetContent(const std::string& path, unsigned frames, double rateHz = 44100.0, unsigned channels = 1);
// `path` decodes to what the function makes.
void SetContent(const std::string& path, std::function<tesk_audio::AudioSampleContent*()> make);

// Decoding of `path` waits until it is let go.
void HoldLoader(const std::string& path);
void ReleaseLoader(const std::string& path);
// Waits until a loader has come to a held path. False when none comes in time.
bool WaitUntilHeld(const std::string& path);

struct Call {
  std::string path;
  std::string argument;
  bool operator==(const Call&) const = default;
};
std::vector<Call> GetCalls();
// How often `path` was asked for.
int CountCalls(const std::string& path);

}  // namespace fakes::decoder
