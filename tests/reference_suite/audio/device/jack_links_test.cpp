#include "reference_suite/audio/device/jack_links.h"

#include <gtest/gtest.h>

#include "suite/audio/errors.h"
#include "tests/support/throws_with_text.h"

namespace {

using tesk_audio::JackLink;
using tesk_audio::JackLinks;
using Names = std::vector<std::string>;
using Links = std::set<JackLink>;

const Names kPlayback{"system:playback_1", "system:playback_2", "system:playback_3"};

TEST(JackLinks, WithoutWishesTheChannelsGoToThePhysicalOutputsInOrder) {
  JackLinks links({.channels = 2});
  EXPECT_EQ(links.Observe({}, kPlayback, kPlayback, 0.0),
            (Links{{0, "system:playback_1"}, {1, "system:playback_2"}}));
}

TEST(JackLinks, ASingleChannelIsHeardOnBothSides) {
  JackLinks links({.channels = 1});
  EXPECT_EQ(links.Observe({}, kPlayback, kPlayback, 0.0),
            (Links{{0, "system:playback_1"}, {0, "system:playback_2"}}));
}

TEST(JackLinks, OutputsAreTakenAsAskedAndThoseThatAreMissingArePassedOver) {
  JackLinks links({.channels = 2, .outputs = {3, 9}});
  EXPECT_EQ(links.Observe({}, kPlayback, kPlayback, 0.0), (Links{{0, "system:playback_3"}}));
  JackLinks more({.channels = 2, .outputs = {3, 2, 1}});
  EXPECT_EQ(more.Observe({}, kPlayback, kPlayback, 0.0),
            (Links{{0, "system:playback_3"}, {1, "system:playback_2"}, {0, "system:playback_1"}}));
}

TEST(JackLinks, WhereAnotherIsUnpluggedAnOutputStaysTheOneThatItWas) {
  JackLinks links({.channels = 1, .outputs = {1, 3}});
  const Links stage{{0, "stage:out_1"}, {0, "stage:out_3"}};
  const Names all{"stage:out_1",   "stage:out_2",   "stage:out_3",
                  "monitor:out_1", "monitor:out_2", "monitor:out_3"};
  EXPECT_EQ(links.Observe({}, all, all, 0.0), stage);
  links.Observe(stage, all, all, 0.1);
  const Names left{"monitor:out_1", "monitor:out_2", "monitor:out_3"};
  EXPECT_EQ(links.Observe({}, left, left, 0.2), Links{}) << "nobody is to hear it from the wrong place";
  links.Reopen();
  EXPECT_EQ(links.Observe({}, left, left, 5.0), Links{});
  EXPECT_EQ(links.Observe({}, all, all, 6.0), stage) << "plugged in again";
}

TEST(JackLinks, PatternsMatchWholeNamesAndReplaceThePhysicalOutputs) {
  JackLinks links({.channels = 2, .patterns = {"mixer:in_.", "tape:in_1"}});
  const Names inputs{"system:playback_1", "mixer:in_1", "mixer:in_2",
                     "mixer:in_3",        "tape:in_1",  "tape:in_11"};
  EXPECT_EQ(links.Observe({}, inputs, kPlayback, 0.0),
            (Links{{0, "mixer:in_1"}, {1, "mixer:in_2"}, {0, "tape:in_1"}}));
}

TEST(JackLinks, APatternWaitsForTheProgramThatItMeans) {
  JackLinks links({.channels = 2, .patterns = {"mixer:in_."}});
  EXPECT_EQ(links.Observe({}, kPlayback, kPlayback, 0.0), Links{});
  EXPECT_EQ(links.Observe({}, {"mixer:in_1"}, {}, 0.1), (Links{{0, "mixer:in_1"}}));
  EXPECT_EQ(links.Observe({{0, "mixer:in_1"}}, {"mixer:in_1", "mixer:in_2"}, {}, 0.2),
            (Links{{1, "mixer:in_2"}}));
}

// Otherwise both channels would sound on one side, and the other would be silent.
TEST(JackLinks, WhereAPortIsRenamedOrGoesTheOthersStillHearTheirOwnChannels) {
  JackLinks links({.channels = 2, .patterns = {"mixer:in_."}});
  const Names inputs{"mixer:in_1", "mixer:in_2", "mixer:in_3"};
  const Links all{{0, "mixer:in_1"}, {1, "mixer:in_2"}};
  EXPECT_EQ(links.Observe({}, inputs, {}, 0.0), all);
  links.Observe(all, inputs, {}, 0.1);
  const Links renamed{{0, "mixer:left"}, {1, "mixer:in_2"}};
  EXPECT_EQ(links.Observe(renamed, {"mixer:left", "mixer:in_2", "mixer:in_3"}, {}, 0.2), Links{});
  EXPECT_EQ(links.Observe({{1, "mixer:in_2"}}, {"mixer:in_2", "mixer:in_3"}, {}, 0.3), Links{});
  EXPECT_EQ(links.Observe({}, {"mixer:in_3"}, {}, 0.4), Links{});
  EXPECT_EQ(links.Observe({}, inputs, {}, 0.5), all) << "started again";
}

TEST(JackLinks, AProgramThatComesBackUnderAnotherNameIsConnectedInTheSameOrder) {
  JackLinks links({.channels = 2, .patterns = {"mixer.*:in_."}});
  links.Observe({}, {"mixer:in_1", "mixer:in_2"}, {}, 0.0);
  EXPECT_EQ(links.Observe({}, {"mixer-01:in_1", "mixer-01:in_2"}, {}, 1.0),
            (Links{{0, "mixer-01:in_1"}, {1, "mixer-01:in_2"}}));
}

TEST(JackLinks, APatternThatIsNoneIsRefusedWithItsText) {
  EXPECT_TRUE(test_support::ThrowsWithText<tesk_audio::TESKAudioError>(
      [] {
        tesk_audio::RequirePatterns({"mixer:.*", "mixer:(in"});
      },
      "\"mixer:(in\" is no regular expression for port names. For all inputs of a program give its name and "
      "\":.*\"."));
}

TEST(JackLinks, ANewServerHasEverythingConnectedAgain) {
  JackLinks links({.channels = 1, .outputs = {1}});
  links.Observe({}, kPlayback, kPlayback, 0.0);
  links.Observe({{0, "system:playback_1"}, {0, "by:hand"}}, {"system:playback_1", "by:hand"}, kPlayback, 1.0);
  links.Reopen();
  EXPECT_EQ(links.Observe({}, kPlayback, kPlayback, 2.0), (Links{{0, "system:playback_1"}}));
  EXPECT_EQ(links.Observe({{0, "system:playback_1"}}, {"system:playback_1", "by:hand"}, kPlayback, 3.0),
            (Links{{0, "by:hand"}}))
      << "as soon as its program is there again";
}

TEST(JackLinks, WhatIsDisconnectedByHandStaysSo) {
  JackLinks links({.channels = 1, .outputs = {1}});
  links.Observe({}, kPlayback, kPlayback, 0.0);
  links.Observe({{0, "system:playback_1"}}, kPlayback, kPlayback, 0.1);
  EXPECT_EQ(links.Observe({}, kPlayback, kPlayback, 5.0), Links{});
  EXPECT_EQ(links.Observe({}, kPlayback, kPlayback, 6.0), Links{});
  links.Reopen();
  EXPECT_EQ(links.Observe({}, kPlayback, kPlayback, 7.0), Links{});
}

TEST(JackLinks, WhatAServerTakesAwayInDyingIsRemembered) {
  JackLinks links({.channels = 1, .outputs = {1}});
  links.Observe({}, kPlayback, kPlayback, 0.0);
  links.Observe({{0, "system:playback_1"}}, kPlayback, kPlayback, 0.1);
  links.Observe({}, kPlayback, kPlayback, 0.2);
  links.Observe({}, {}, {}, 9.0);
  links.Reopen();
  EXPECT_EQ(links.Observe({}, kPlayback, kPlayback, 10.0), (Links{{0, "system:playback_1"}}));
}

TEST(JackLinks, AProgramThatLeavesAndComesBackIsConnectedAgain) {
  JackLinks links({.channels = 1, .patterns = {"mixer:in"}});
  links.Observe({}, {"mixer:in"}, {}, 0.0);
  links.Observe({{0, "mixer:in"}}, {"mixer:in"}, {}, 0.1);
  EXPECT_EQ(links.Observe({}, {}, {}, 5.0), Links{});
  EXPECT_EQ(links.Observe({}, {"mixer:in"}, {}, 9.0), (Links{{0, "mixer:in"}}));
  links.Observe({{0, "mixer:in"}}, {"mixer:in"}, {}, 9.1);
  links.Renew("mixer:in");
  EXPECT_EQ(links.Observe({}, {"mixer:in"}, {}, 9.2), (Links{{0, "mixer:in"}})) << "between two looks";
}

TEST(JackLinks, WhatIsTakenAwayIsMissingAfterASecondUntilItIsThereAgain) {
  JackLinks links({.channels = 2});
  const Links both{{0, "system:playback_1"}, {1, "system:playback_2"}};
  const Links left{{0, "system:playback_1"}};
  const Links right{{1, "system:playback_2"}};
  links.Observe({}, kPlayback, kPlayback, 0.0);
  links.Observe(both, kPlayback, kPlayback, 0.1);
  links.Observe(left, kPlayback, kPlayback, 5.0);
  links.Observe(left, kPlayback, kPlayback, 5.9);
  EXPECT_EQ(links.GetMissing(), Links{}) << "a server that goes down takes the links away first";
  links.Observe(left, kPlayback, kPlayback, 6.0);
  EXPECT_EQ(links.GetMissing(), right);
  EXPECT_EQ(links.GetRemembered(), left) << "taken away on purpose";
  links.Observe(left, kPlayback, kPlayback, 9.0);
  EXPECT_EQ(links.GetMissing(), right);
  links.Observe(both, kPlayback, kPlayback, 10.0);
  EXPECT_EQ(links.GetMissing(), Links{});
}

TEST(JackLinks, APortThatGoesAwayOrIsNeverReadyIsMissingToo) {
  JackLinks links({.channels = 1, .patterns = {"mixer:in_1"}});
  const Names inputs{"mixer:in_1"};
  const Links mixer{{0, "mixer:in_1"}};
  links.Observe({}, inputs, {}, 0.0);
  links.Observe({}, inputs, {}, 2.9);
  EXPECT_EQ(links.GetMissing(), Links{}) << "it may be on its way";
  links.Observe({}, inputs, {}, 3.0);
  EXPECT_EQ(links.GetMissing(), mixer) << "it has refused";
  links.Observe(mixer, inputs, {}, 4.0);
  EXPECT_EQ(links.GetMissing(), Links{});
  links.Observe({}, {}, {}, 5.0);
  links.Observe({}, {}, {}, 6.0);
  EXPECT_EQ(links.GetMissing(), mixer);
}

TEST(JackLinks, OnAnotherServerOnlyWhatIsRememberedIsMissing) {
  JackLinks links({.channels = 2});
  const Links both{{0, "system:playback_1"}, {1, "system:playback_2"}};
  links.Observe(both, kPlayback, kPlayback, 0.0);
  links.Observe({{0, "system:playback_1"}}, kPlayback, kPlayback, 1.0);
  links.Observe({{0, "system:playback_1"}}, kPlayback, kPlayback, 2.0);
  links.Reopen();
  EXPECT_EQ(links.GetMissing(), Links{});
  links.Observe({}, {}, {}, 10.0);
  links.Observe({}, {}, {}, 12.9);
  EXPECT_EQ(links.GetMissing(), Links{}) << "its ports may come later";
  links.Observe({}, {}, {}, 13.0);
  EXPECT_EQ(links.GetMissing(), (Links{{0, "system:playback_1"}}));
}

}  // namespace
