// The offline output: who steps it, renders.
#include "reference_suite/audio/output/offline_output.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <stdexcept>

#include "exc/flag/ex_scope_flag.h"
#include "suite/audio/create.h"
#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/logged_exceptions.h"
#include "tests/reference_suite/audio/support/offline_run.h"
#include "tests/support/staircase_content.h"
#include "tests/support/throws_with_text.h"

namespace {

using tesk_audio::StepEvent;
using test_support::StaircaseContent;

TEST(OfflineOutput, TheSongIsRenderedFrameForFrame) {
  OfflineRun run(Songs{{.frames = 10'001}}, 5.0, 3.0);
  run.Start();
  EXPECT_TRUE(run.output->GetOutputIsRunning());
  EXPECT_EQ(run.Run(), 39);  // 38 reads and the end
  EXPECT_EQ(run.report.event, StepEvent::End);
  EXPECT_EQ(run.heard, Frames(0, 10'001));
  EXPECT_EQ(run.player.Log(), "stopped\n");
  EXPECT_FALSE(run.output->GetOutputIsRunning());
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 10'001);
}

TEST(OfflineOutput, EverythingRenderedCountsAsHeardAtOnce) {
  OfflineRun run(Songs{{}});
  run.Start();
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 0);
  run.Step();
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 264);
  run.output->Step(&run.report, [&](const float*, std::size_t count) {
    EXPECT_EQ(count, 264U);
    EXPECT_EQ(run.output->GetElapsedSampleCount(), 528) << "also while the frames are handed out";
  });
  run.output->Refill();
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 0);
}

TEST(OfflineOutput, StepsReportWhatTheyDid) {
  OfflineRun run(Songs{{.frames = 700, .caesuras = {600}, .jumps = {{300, {100}}}}});
  run.Start();
  const auto next = [&run] {
    EXPECT_TRUE(run.Step());
    return run.report;
  };
  tesk_audio::StepReport report = next();
  EXPECT_EQ(report.event, StepEvent::None);
  EXPECT_EQ(report.sampleIndex, 0);
  EXPECT_EQ(report.frames, 264);
  EXPECT_EQ(report.scale, 1.0L);
  EXPECT_EQ(report.transposition, 0);
  EXPECT_EQ(report.jumpFrom, 0);
  EXPECT_EQ(report.jumpTo, 0);
  EXPECT_EQ(next().frames, 36);
  report = next();
  EXPECT_EQ(report.event, StepEvent::Jump);
  EXPECT_EQ(report.sampleIndex, 100);
  EXPECT_EQ(report.frames, 200);
  EXPECT_EQ(report.jumpFrom, 300);
  EXPECT_EQ(report.jumpTo, 100);
  EXPECT_EQ(next().frames, 264);
  EXPECT_EQ(next().frames, 36);
  report = next();
  EXPECT_EQ(report.event, StepEvent::Caesura);
  EXPECT_EQ(report.sampleIndex, 600);
  EXPECT_EQ(report.frames, 0);
}

TEST(OfflineOutput, ACutToTheEndTellsItsJumpWithTheEnd) {
  OfflineRun run(Songs{{.frames = 700, .jumps = {{300, {700}}}}});
  run.Start();
  run.Run();
  EXPECT_EQ(run.report.event, StepEvent::End);
  EXPECT_EQ(run.report.jumpFrom, 300);
  EXPECT_EQ(run.report.jumpTo, 700);
  EXPECT_EQ(run.heard, Frames(0, 300));
}

TEST(OfflineOutput, ACaesuraStopsTheOutputBeforeThePlayerIsTold) {
  OfflineRun run(Songs{{.frames = 1000, .caesuras = {500}}});
  run.player.onCaesura = [&run] { EXPECT_FALSE(run.output->GetOutputIsRunning()); };
  run.Start();
  EXPECT_EQ(run.Run(), 3);
  EXPECT_EQ(run.player.Log(), "approaching stop\nclear approaching stop\ncaesura\n");
  EXPECT_EQ(run.heard, Frames(0, 500));
  EXPECT_FALSE(run.Step()) << "waits";
  run.player.Play();
  run.Run();
  EXPECT_EQ(run.heard, Frames(0, 1000)) << "goes on with the very next frame, without a fade";
}

TEST(OfflineOutput, ACaesuraThatIsPassedThroughPlaysOnAtOnce) {
  OfflineRun run(Songs{{.frames = 1000, .caesuras = {500}}}, 0.0, 3.0);
  run.player.goesOnAtCaesura = true;
  run.Start();
  run.Run();
  EXPECT_EQ(run.heard, Frames(0, 1000));
  EXPECT_EQ(run.player.Log(), "approaching stop\nclear approaching stop\ncaesura\nplay\nstopped\n");
}

TEST(OfflineOutput, AttaccaGoesOnWithoutAGap) {
  OfflineRun run(Songs{{.frames = 500, .isAttacca = true}, {.frames = 300}}, 5.0, 3.0);
  const StaircaseContent next(300, 48000.0, 1);
  run.player.onAttacca = [&] {
    std::string error;
    EXPECT_TRUE(run.output->SwitchContent(next, &error));
    EXPECT_TRUE(run.output->GetOutputIsRunning());
  };
  run.Start();
  run.Run(3);
  EXPECT_EQ(run.report.event, StepEvent::Attacca);
  EXPECT_EQ(run.report.frames, 0);
  run.Run();
  std::vector<float> expected = Frames(0, 500);
  AppendFrames(&expected, 0, 300, 1);
  EXPECT_EQ(run.heard, expected);
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 800) << "an attacca restarts nothing";
  EXPECT_EQ(run.player.Log(), "attacca\nstopped\n");
}

TEST(OfflineOutput, AttaccaAtTheEndOfTheShowStops) {
  OfflineRun run(Songs{{.frames = 500, .isAttacca = true}});
  run.Start();
  run.Run();
  EXPECT_EQ(run.report.event, StepEvent::End);
  EXPECT_EQ(run.player.Log(), "attacca\nstopped\n");
}

TEST(OfflineOutput, AttaccaWhoseLoadFailsStops) {
  OfflineRun run(Songs{{.frames = 500, .isAttacca = true}, {}});
  run.player.onAttacca = [] { throw std::runtime_error("the file is gone"); };
  logged_exceptions::Take();
  run.Start();
  run.Run();
  EXPECT_EQ(run.report.event, StepEvent::End);
  EXPECT_EQ(run.player.Log(), "attacca\nstopped\n");
  EXPECT_EQ(logged_exceptions::Take(), "reference_suite/audio/output: the file is gone\n");
}

TEST(OfflineOutput, NothingHappensBeforeStartAndAfterTheEnd) {
  OfflineRun run(Songs{{.frames = 100}});
  EXPECT_FALSE(run.Step());
  run.Start();
  run.Run();
  EXPECT_FALSE(run.Step());
}

TEST(OfflineOutput, PauseKeepsThePlaceAndTheCount) {
  OfflineRun run(Songs{{.frames = 2000}});
  run.Start();
  run.Step();
  run.output->Pause();
  EXPECT_FALSE(run.output->GetOutputIsRunning());
  EXPECT_FALSE(run.Step());
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 264);
  run.output->Start();
  run.Run();
  EXPECT_EQ(run.heard, Frames(0, 2000));
  EXPECT_EQ(run.player.Log(), "stopped\n");
}

TEST(OfflineOutput, StopNotifiesOnceAlsoFromPauseAndNeverWhenStopped) {
  OfflineRun run(Songs{{}});
  EXPECT_TRUE(run.output->Stop(true));
  EXPECT_EQ(run.player.Log(), "") << "stopped already";
  run.Start();
  EXPECT_TRUE(run.output->Stop(true));
  EXPECT_EQ(run.player.Log(), "stopped\n");
  EXPECT_TRUE(run.output->Stop(false));
  EXPECT_EQ(run.player.Log(), "stopped\n");
  run.output->Start();
  run.output->Pause();
  EXPECT_TRUE(run.output->Stop(false));
  EXPECT_EQ(run.player.Log(), "stopped\nstopped\n");
}

TEST(OfflineOutput, TheOutputDoesNotRunAnyMoreWhenThePlayerHearsThatItHasStopped) {
  OfflineRun run(Songs{{.frames = 100}});
  run.player.onStopped = [&run] { EXPECT_FALSE(run.output->GetOutputIsRunning()); };
  run.Start();
  run.Run();
  run.Start();
  run.output->Stop(true);
}

TEST(OfflineOutput, NoStepWhileASeekIsUnderWay) {
  OfflineRun run(Songs{{}});
  run.Start();
  {
    const exc::ExScopeFlag seeking(run.output->GetSeekFlag());
    EXPECT_FALSE(run.Step());
  }
  EXPECT_TRUE(run.Step());
}

TEST(OfflineOutput, NoStepWhileIdle) {
  OfflineRun run(Songs{{}});
  run.Start();
  run.output->Idle();
  EXPECT_FALSE(run.Step());
  run.output->Start();
  EXPECT_TRUE(run.Step());
  run.output->Idle();
  run.output->Refill();
  EXPECT_TRUE(run.Step());
}

TEST(OfflineOutput, ASeekWhilePlayingSplicesAndGoesOnCounting) {
  OfflineRun run(Songs{{.frames = 5000}}, 5.0, 0.0);
  run.Start();
  run.Step();
  run.player.SeekTo(4000);
  run.Run();
  std::vector<float> expected = Frames(0, 264);
  AppendFrames(&expected, 4000, 5000);
  EXPECT_EQ(run.heard, expected);
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 1264);
}

constexpr long long kFade = 144;  // 3 ms

double GainIn(long long frame) {
  return frame < kFade ? static_cast<double>(frame + 1) / kFade : 1.0;
}

// From frame `at` of what was heard on: song frame `to` and what follows it fade in, `from` and what follows
// that fade out.
void ExpectFadesOver(const OfflineRun& run, long long at, long long from, long long to) {
  ASSERT_GE(static_cast<long long>(run.heard.size()), at + 2 * kFade);
  for (long long i = 0; i < 2 * kFade; ++i) {
    const double expected =
        ScriptedPlayer::Sample(to + i) * GainIn(i) + ScriptedPlayer::Sample(from + i) * (1.0 - GainIn(i));
    ASSERT_NEAR(run.heard[static_cast<std::size_t>(at + i)], expected, 0.001) << i;
  }
  EXPECT_EQ(run.heard[static_cast<std::size_t>(at + kFade)], ScriptedPlayer::Sample(to + kFade));
}

TEST(OfflineOutput, ASeekFadesOverFromWhatWouldHaveComeNext) {
  OfflineRun run(Songs{{.frames = 5000}}, 0.0, 3.0);
  run.Start();
  run.Step();
  EXPECT_EQ(run.heard, Frames(0, 264)) << "no fade at the first frame of a refill";
  run.player.SeekTo(4000);
  run.Run();
  ExpectFadesOver(run, 264, 264, 4000);
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 1264) << "what faded out is not counted";
}

TEST(OfflineOutput, ASeekInTheMiddleOfAFadeCutsNothingOff) {
  OfflineRun run(Songs{{.frames = 5000, .caesuras = {2050}}}, 0.0, 3.0);
  run.Start();
  run.Step();
  run.player.SeekTo(2000);
  run.Step();  // ends at the caesura, after 50 frames
  ASSERT_EQ(run.heard.size(), 314U);
  run.player.SeekTo(4000);
  run.Step();
  // Of the first place the last two thirds of its fade are left; the second one has none.
  for (long long i = 0; i < kFade; ++i) {
    const double first = ScriptedPlayer::Sample(264 + 50 + i) * (1.0 - GainIn(50 + i));
    ASSERT_NEAR(run.heard[static_cast<std::size_t>(314 + i)],
                ScriptedPlayer::Sample(4000 + i) * GainIn(i) + first, 0.001)
        << i;
  }
}

TEST(OfflineOutput, OfWhatStandsBehindACaesuraNothingFadesOut) {
  OfflineRun run(Songs{{.frames = 5000, .caesuras = {300}}}, 0.0, 3.0);
  run.Start();
  run.Step();
  run.player.SeekTo(4000);
  run.Step();
  // 36 frames are left before the caesura: the fade is as long.
  for (long long i = 0; i < kFade; ++i) {
    const double out = i < 36 ? 1.0 - static_cast<double>(i + 1) / 36.0 : 0.0;
    ASSERT_NEAR(run.heard[static_cast<std::size_t>(264 + i)],
                ScriptedPlayer::Sample(4000 + i) * GainIn(i) + ScriptedPlayer::Sample(264 + i) * out, 0.001)
        << i;
  }
}

TEST(OfflineOutput, APauseFadesOutIntoTheSilenceAndTheMusicFadesInAgain) {
  OfflineRun run(Songs{{.frames = 5000}}, 0.0, 3.0);
  run.Start();
  run.Step();
  run.output->Pause();
  EXPECT_EQ(run.output->GetTailFrames(), static_cast<std::size_t>(kFade));
  std::vector<float> silence(100);
  run.output->MixTail(silence.data(), 100);
  for (long long i = 0; i < 100; ++i) {
    ASSERT_NEAR(silence[static_cast<std::size_t>(i)], ScriptedPlayer::Sample(264 + i) * (1.0 - GainIn(i)),
                0.001)
        << i;
  }
  run.output->MixTail(silence.data(), 100);
  EXPECT_EQ(run.output->GetTailFrames(), 0U);
  run.output->Start();
  run.Step();
  for (long long i = 0; i < 264; ++i) {
    ASSERT_NEAR(run.heard[static_cast<std::size_t>(264 + i)], ScriptedPlayer::Sample(264 + i) * GainIn(i),
                0.001)
        << i;
  }
  EXPECT_EQ(run.heard[264 + kFade], ScriptedPlayer::Sample(264 + kFade));
}

TEST(OfflineOutput, AStopFadesOutUnderWhatComesNext) {
  OfflineRun run(Songs{{.frames = 5000}}, 0.0, 3.0);
  run.Start();
  run.Step();
  run.output->Stop(true);
  run.output->Stop(true);
  run.Start();
  run.Run();
  for (long long i = 0; i < 264; ++i) {
    ASSERT_NEAR(run.heard[static_cast<std::size_t>(264 + i)],
                ScriptedPlayer::Sample(i) + ScriptedPlayer::Sample(264 + i) * (1.0 - GainIn(i)), 0.001)
        << "the first frames after a refill do not fade in; frame " << i;
  }
}

TEST(OfflineOutput, NothingFadesOutAtTheEndAtACaesuraAndWhenThePlayerGoes) {
  OfflineRun ending(Songs{{.frames = 1000, .caesuras = {500}}}, 0.0, 3.0);
  ending.Start();
  ending.Run();
  EXPECT_EQ(ending.output->GetTailFrames(), 0U) << "a caesura";
  ending.player.Play();
  ending.Run();
  EXPECT_EQ(ending.output->GetTailFrames(), 0U) << "the end";
  OfflineRun leaving(Songs{{.frames = 1000}}, 0.0, 3.0);
  leaving.Start();
  leaving.Step();
  leaving.output->PrepareForExit();
  EXPECT_EQ(leaving.output->GetTailFrames(), 0U);
}

// At half the tempo, where what comes next is what the stretcher would have given.
TEST(OfflineOutput, ASeekAtAnotherTempoFadesOverToo) {
  const auto tone = std::make_shared<std::vector<float>>(20'000);
  for (std::size_t i = 0; i < tone->size(); ++i) {
    (*tone)[i] = static_cast<float>(std::sin(static_cast<double>(i) * 0.02));
  }
  OfflineRun run(Songs{{.frames = 20'000, .scales = {{0, 0.5L}}, .sound = tone}}, 0.0, 3.0);
  OfflineRun straight(Songs{{.frames = 20'000, .scales = {{0, 0.5L}}, .sound = tone}}, 0.0, 3.0);
  for (OfflineRun* each : {&run, &straight}) {
    each->Start();
    each->Run(20);
  }
  const auto at = static_cast<long long>(run.heard.size());
  run.player.SeekTo(10'003);
  run.Run(2);
  straight.Run(2);
  for (long long i = 0; i < kFade; ++i) {
    const double out =
        static_cast<double>(straight.heard[static_cast<std::size_t>(at + i)]) * (1.0 - GainIn(i));
    ASSERT_NEAR(run.heard[static_cast<std::size_t>(at + i)], out, 1.05 * GainIn(i)) << i;
  }
  EXPECT_NEAR(run.heard[static_cast<std::size_t>(at)], straight.heard[static_cast<std::size_t>(at)], 0.02);
}

TEST(OfflineOutput, WithoutFadesEverySampleIsLeftAsItIs) {
  OfflineRun run(Songs{{.frames = 5000}}, 0.0, 0.0);
  run.Start();
  run.Step();
  run.output->Pause();
  run.output->Start();
  run.Step();
  run.output->Stop(true);
  run.output->Start();
  run.Run();
  EXPECT_EQ(run.heard, Frames(0, 5000));
}

TEST(OfflineOutput, AnExceptionOfTheSinkEndsTheStepAndTheFramesAreGone) {
  OfflineRun run(Songs{{.frames = 5000}});
  run.Start();
  EXPECT_THROW(
      run.output->Step(&run.report, [](const float*, std::size_t) { throw std::runtime_error("full"); }),
      std::runtime_error);
  run.Step();
  EXPECT_EQ(run.heard, Frames(264, 528));
}

TEST(OfflineOutput, AStretchedReadIsReportedInSongFramesAndInOutputFrames) {
  OfflineRun run(Songs{{.frames = 5000, .scales = {{264, 2.0L}}, .transpositions = {{528, -3}}}});
  run.Start();
  run.Step();
  EXPECT_EQ(run.report.outputFrames, 264);
  run.Step();
  EXPECT_EQ(run.report.frames, 264);
  EXPECT_EQ(run.report.outputFrames, 132);
  EXPECT_EQ(run.report.scale, 2.0L);
  EXPECT_EQ(run.report.transposition, 0);
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 528) << "counted unscaled";
  run.Step();
  EXPECT_EQ(run.report.transposition, -3);
  run.Run();
  EXPECT_EQ(run.heard.size(), 264 + (5000 - 264) / 2);
  EXPECT_EQ(run.output->GetElapsedSampleCount(), 5000);
}

TEST(OfflineOutput, PrepareForExitStopsAndTells) {
  OfflineRun run(Songs{{}});
  run.Start();
  run.output->PrepareForExit();
  EXPECT_EQ(run.player.Log(), "stopped\n");
}

TEST(OfflineOutput, AnotherRateOrOtherChannelsAreRefusedNamingBothFormats) {
  OfflineRun run(Songs{{}}, 0.0, 0.0, 48000.0, 2);
  std::string error;
  EXPECT_FALSE(run.output->SwitchContent(StaircaseContent(10, 44100.0, 2), &error));
  EXPECT_EQ(error,
            "The audio has 44100 Hz with 2 channels, and the output runs at 48000 Hz with 2 channels. "
            "Convert the audio file, or let the show begin with another rate.");
  EXPECT_FALSE(run.output->SwitchContent(StaircaseContent(10, 48000.0, 1), &error));
  EXPECT_EQ(error,
            "The audio has 48000 Hz with 1 channel, and the output runs at 48000 Hz with 2 channels. Convert "
            "the audio file, or let the show begin with another rate.");
  EXPECT_FALSE(run.output->SwitchContent(StaircaseContent(10, 48000.0, 1), nullptr));
  EXPECT_TRUE(run.output->SwitchContent(StaircaseContent(10, 48000.0, 2), &error));
}

TEST(OfflineOutput, TheFunctionsStepTheOutputThatWasCreatedLast) {
  tesk_audio::StepReport report;
  const auto drop = [](const float*, std::size_t) {};
  EXPECT_FALSE(tesk_audio::StepOfflineOutput(&report, drop)) << "there is none";
  EXPECT_EQ(tesk_audio::GetOfflineChannelCount(), 0U);
  EXPECT_EQ(tesk_audio::GetOfflineSampleRateHz(), 0.0);
  EXPECT_EQ(tesk_audio::GetOfflineTailFrames(), 0U);
  OfflineRun first(Songs{{.frames = 1000}}, 0.0, 0.0, 44100.0, 1);
  {
    OfflineRun second(Songs{{.frames = 1000}}, 0.0, 0.0, 48000.0, 2);
    EXPECT_EQ(tesk_audio::GetOfflineChannelCount(), 2U);
    EXPECT_EQ(tesk_audio::GetOfflineSampleRateHz(), 48000.0);
    first.Start();
    EXPECT_FALSE(tesk_audio::StepOfflineOutput(&report, drop)) << "the second does not run";
  }
  EXPECT_EQ(tesk_audio::GetOfflineChannelCount(), 1U);
  EXPECT_EQ(tesk_audio::GetOfflineSampleRateHz(), 44100.0);
  EXPECT_TRUE(tesk_audio::StepOfflineOutput(&report, drop));
  EXPECT_EQ(report.frames, 256);
  float silence = 0.0F;
  tesk_audio::MixOfflineTail(&silence, 1);
  EXPECT_EQ(silence, 0.0F) << "without fades there is no tail";
}

}  // namespace
