// Between the library that plays to PulseAudio for us and PulseAudio's own, of which a test's takes the
// place.
#include "reference_suite/audio/device/pulse_audio.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

#include "tests/reference_suite/audio/support/fake_pulse.h"

namespace {

// As PulseAudio's library lays it out.
struct ServerInfo {
  const char* userName = "user";
  const char* hostName = "host";
  const char* serverVersion = "16.1";
  const char* serverName = "pulseaudio";
  struct {
    int format = 5;
    std::uint32_t rateHz = 48'000;
    std::uint8_t channels = 2;
  } sampleSpec;
  const char* outputName = "stage";
  const char* inputName = "microphone";
  std::uint32_t cookie = 4711;
  struct {
    std::uint8_t channels = 2;
    int places[32] = {1, 2};
  } channelMap;
};

// What the library gets to see. It takes the names as they come.
struct Seen {
  void* context = nullptr;
  std::string outputName;
  std::string inputName;
  std::uint32_t rateHz = 0;
  std::uint32_t cookie = 0;
  int secondPlace = 0;
};

void Look(void* context, const ServerInfo* info, void* seen) {
  *static_cast<std::optional<Seen>*>(seen) =
      Seen{context,      info->outputName,          info->inputName, info->sampleSpec.rateHz,
           info->cookie, info->channelMap.places[1]};
}

}  // namespace

extern "C" void* pa_context_get_server_info(void* context, void (*callback)(void*, const ServerInfo*, void*),
                                            void* argument);

namespace {

class PulseAudio : public testing::Test {
 protected:
  PulseAudio() { fakePulse = {}; }

  // As the library does, and the server answers.
  Seen Ask(const ServerInfo* info) {
    operation_ = pa_context_get_server_info(&context_, &Look, &seen_);
    EXPECT_EQ(operation_, &fakePulse);
    EXPECT_FALSE(seen_.has_value()) << "before there is an answer";
    fakePulse.answer(info);
    fakePulse.end();
    return seen_.value_or(Seen{});
  }

  int context_ = 0;
  void* operation_ = nullptr;
  std::optional<Seen> seen_;
};

TEST_F(PulseAudio, WhatAServerTellsOfItselfIsHandedOn) {
  const ServerInfo info;
  const Seen seen = Ask(&info);
  EXPECT_EQ(seen.context, &context_);
  EXPECT_EQ(seen.outputName, "stage");
  EXPECT_EQ(seen.inputName, "microphone");
  EXPECT_EQ(seen.rateHz, 48'000U);
  EXPECT_EQ(seen.cookie, 4711U);
  EXPECT_EQ(seen.secondPlace, 2);
}

TEST_F(PulseAudio, AServerWithoutAnOutputOrAnInputHasNamesAllTheSame) {
  ServerInfo info;
  info.outputName = nullptr;
  EXPECT_EQ(Ask(&info).outputName, "");
  EXPECT_EQ(seen_->inputName, "microphone");
  seen_.reset();
  info.outputName = "stage";
  info.inputName = nullptr;
  EXPECT_EQ(Ask(&info).inputName, "");
  EXPECT_EQ(seen_->outputName, "stage");
}

TEST_F(PulseAudio, AServerThatDiesWhileItIsAskedTellsNothingAndHasNamesAllTheSame) {
  const Seen seen = Ask(nullptr);
  EXPECT_TRUE(seen_.has_value());
  EXPECT_EQ(seen.outputName, "");
  EXPECT_EQ(seen.inputName, "");
  EXPECT_EQ(seen.rateHz, 0U);
}

// What was kept for the answer is freed, which the address sanitizer would miss.
TEST_F(PulseAudio, WhatIsCancelledIsNotAnswered) {
  pa_context_get_server_info(&context_, &Look, &seen_);
  fakePulse.end();
  EXPECT_FALSE(seen_.has_value());
}

TEST_F(PulseAudio, WhereThereIsNothingToAskThereIsNoAnswer) {
  fakePulse.refuses = true;
  EXPECT_EQ(pa_context_get_server_info(&context_, &Look, &seen_), nullptr);
  EXPECT_FALSE(seen_.has_value());
}

TEST_F(PulseAudio, IsNotAskedWhereItDoesNotRun) {
  ::unsetenv("PULSE_SERVER");
  ::setenv("XDG_RUNTIME_DIR", "/nowhere", 1);
  EXPECT_FALSE(tesk_audio::PulseAudioRuns());
  ::setenv("PULSE_SERVER", "elsewhere", 1);
  EXPECT_TRUE(tesk_audio::PulseAudioRuns());
}

}  // namespace
