#include "suite/core/gui_dispatcher.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "suite/core/log_sink.h"

namespace {

using notify::GuiDispatcher;
using notify::GuiListener;

// Writes down what it hears.
class Recorder : public GuiListener {
 public:
  std::string heard;
  std::function<void()> onStarted;

  void OnPlaybackStarted() override {
    heard += "started ";
    if (onStarted) onStarted();
  }
  void OnPlaybackPaused() override { heard += "paused "; }
  void OnPlaybackStopped() override { heard += "stopped "; }
  void OnPlayerException() override { heard += "exception "; }
  void OnSongLoaded(const std::string& song) override { heard += "loaded:" + song + " "; }
  void OnLoadingProgress(const std::string& song, double fraction) override {
    std::ostringstream text;
    text << "progress:" << song << ":" << fraction << " ";
    heard += text.str();
  }
  void OnPosition(const notify::PositionUpdate& update) override {
    heard += "position:" + update.songNumber + ":" + std::to_string(update.tickIndex) + " ";
  }
  void OnCaesura(const std::string& song, unsigned tick) override {
    heard += "caesura:" + song + ":" + std::to_string(tick) + " ";
  }
  void OnLoopPass(const notify::LoopUpdate& update) override {
    heard += "pass:" + update.songNumber + ":" + std::to_string(update.pass) + " ";
  }
};

TEST(GuiDispatcher, CarriesEveryNotificationToEveryListener) {
  GuiDispatcher dispatcher;
  Recorder first;
  Recorder second;
  dispatcher.AddListener(&first);
  dispatcher.AddListener(&second);
  dispatcher.SendPlaybackStarted();
  dispatcher.SendPlaybackPaused();
  dispatcher.SendPlaybackStopped();
  dispatcher.SendPlayerExceptionNotification();
  dispatcher.SendSongLoaded("2a");
  dispatcher.SendLoadingProgress("3", 0.5);
  notify::PositionUpdate position;
  position.songNumber = "3";
  position.tickIndex = 960;
  dispatcher.SendPosition(position);
  dispatcher.SendCaesura("3", 1920);
  notify::LoopUpdate pass;
  pass.songNumber = "3";
  pass.pass = 2;
  dispatcher.SendLoopPass(pass);
  EXPECT_EQ(
      first.heard,
      "started paused stopped exception loaded:2a progress:3:0.5 position:3:960 caesura:3:1920 pass:3:2 ");
  EXPECT_EQ(second.heard, first.heard);
}

TEST(GuiDispatcher, AListenerAddedTwiceHearsOnce) {
  GuiDispatcher dispatcher;
  Recorder recorder;
  dispatcher.AddListener(&recorder);
  dispatcher.AddListener(&recorder);
  dispatcher.AddListener(nullptr);
  dispatcher.SendPlaybackPaused();
  EXPECT_EQ(recorder.heard, "paused ");
}

TEST(GuiDispatcher, ARemovedListenerHearsNothing) {
  GuiDispatcher dispatcher;
  Recorder recorder;
  dispatcher.AddListener(&recorder);
  dispatcher.RemoveListener(&recorder);
  dispatcher.RemoveListener(&recorder);
  dispatcher.SendPlaybackPaused();
  EXPECT_EQ(recorder.heard, "");
}

TEST(GuiDispatcher, AListenerMayTakeItselfOutWhileItIsCalled) {
  GuiDispatcher dispatcher;
  Recorder recorder;
  recorder.onStarted = [&] { dispatcher.RemoveListener(&recorder); };
  dispatcher.AddListener(&recorder);
  dispatcher.SendPlaybackStarted();
  dispatcher.SendPlaybackStarted();
  EXPECT_EQ(recorder.heard, "started ");
}

TEST(GuiDispatcher, AListenerThatAnotherOneTakesOutIsNotCalledAnyMore) {
  GuiDispatcher dispatcher;
  Recorder first;
  auto second = std::make_unique<Recorder>();
  first.onStarted = [&] {
    dispatcher.RemoveListener(second.get());
    second.reset();
  };
  dispatcher.AddListener(&first);
  dispatcher.AddListener(second.get());
  dispatcher.SendPlaybackStarted();
  EXPECT_EQ(second, nullptr);
}

TEST(GuiDispatcher, TheLockIsNotHeldWhileListenersAreCalled) {
  GuiDispatcher dispatcher;
  Recorder recorder;
  Recorder other;
  recorder.onStarted = [&] { std::thread([&] { dispatcher.AddListener(&other); }).join(); };
  dispatcher.AddListener(&recorder);
  dispatcher.SendPlaybackStarted();
  dispatcher.SendPlaybackPaused();
  EXPECT_EQ(other.heard, "paused ");
}

TEST(GuiDispatcher, RemoveListenerWaitsForACallUnderWay) {
  GuiDispatcher dispatcher;
  Recorder recorder;
  std::atomic<int> calls{0};
  std::atomic<bool> go{false};
  std::atomic<bool> hasReturned{false};
  recorder.onStarted = [&] {
    if (++calls > 1) return;
    while (!go) std::this_thread::yield();
  };
  dispatcher.AddListener(&recorder);
  std::thread sender([&] { dispatcher.SendPlaybackStarted(); });
  while (calls == 0) std::this_thread::yield();
  std::thread remover([&] {
    dispatcher.RemoveListener(&recorder);
    hasReturned = true;
  });
  // Once the listener is out of the table only the call under way can hold RemoveListener back.
  for (int before = 0; before != calls;) {
    before = calls;
    dispatcher.SendPlaybackStarted();
  }
  for (int i = 0; i < 100; ++i) {
    EXPECT_FALSE(hasReturned);
    std::this_thread::yield();
  }
  go = true;
  remover.join();
  sender.join();
}

TEST(GuiDispatcher, WhatAListenerThrowsIsLoggedAndTheOthersAreCalled) {
  GuiDispatcher dispatcher;
  std::vector<std::string> lines;
  tesk_log::SetSink([&](const std::string& line) { lines.push_back(line); });
  Recorder first;
  Recorder second;
  Recorder third;
  first.onStarted = [] { throw std::runtime_error("listener broke"); };
  second.onStarted = [] { throw 7; };
  for (Recorder* recorder : {&first, &second, &third}) dispatcher.AddListener(recorder);
  dispatcher.SendPlaybackStarted();
  tesk_log::SetSink({});
  EXPECT_EQ(third.heard, "started ");
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0].find("ERROR: listener broke (reference_suite/core/gui_dispatcher.cpp:"), 0U) << lines[0];
  EXPECT_EQ(lines[1].find("ERROR: A listener threw. (reference_suite/core/gui_dispatcher.cpp:"), 0U)
      << lines[1];
}

// Counts how often playback started.
class Counter : public GuiListener {
 public:
  void OnPlaybackStarted() override { ++calls; }
  std::atomic<int> calls{0};
};

TEST(GuiDispatcher, ListenersComeAndGoWhileOthersSend) {
  constexpr int kOwnSends = 3;
  GuiDispatcher dispatcher;
  Counter throughout;
  dispatcher.AddListener(&throughout);
  std::atomic<bool> stop{false};
  std::atomic<int> sends{0};
  std::vector<std::thread> senders;
  for (int i = 0; i < 2; ++i) {
    senders.emplace_back([&] {
      while (!stop) {
        dispatcher.SendPlaybackStarted();
        ++sends;
      }
    });
  }
  int ownSends = 0;
  for (int i = 0; i < 200; ++i) {
    Counter passing;
    const int before = throughout.calls;
    dispatcher.AddListener(&passing);
    for (int k = 0; k < kOwnSends; ++k) dispatcher.SendPlaybackStarted();
    ownSends += kOwnSends;
    dispatcher.RemoveListener(&passing);
    const int heard = passing.calls;
    EXPECT_GE(heard, kOwnSends) << "all that was sent while it listened";
    // A message on its way when the counting began may have reached the other listener already: one a sender.
    EXPECT_LE(heard, throughout.calls - before + 2) << "each message once";
    const int later = sends + 4;
    while (sends < later) std::this_thread::yield();
    EXPECT_EQ(passing.calls, heard) << "and nothing behind its removal";
  }
  stop = true;
  for (std::thread& sender : senders) sender.join();
  EXPECT_EQ(throughout.calls, sends + ownSends);
}

TEST(GuiDispatcher, TheProcessHasOne) {
  Recorder recorder;
  notify::guiDispatcher.AddListener(&recorder);
  notify::guiDispatcher.SendPlaybackPaused();
  notify::guiDispatcher.RemoveListener(&recorder);
  EXPECT_EQ(recorder.heard, "paused ");
}

// A listener that overrides nothing may be told everything.
TEST(GuiListener, EveryOperationHasADefault) {
  GuiDispatcher dispatcher;
  GuiListener listener;
  dispatcher.AddListener(&listener);
  dispatcher.SendPlaybackStarted();
  dispatcher.SendPlaybackPaused();
  dispatcher.SendPlaybackStopped();
  dispatcher.SendPlayerExceptionNotification();
  dispatcher.SendSongLoaded("1");
  dispatcher.SendLoadingProgress("1", 1.0);
  dispatcher.SendPosition({});
  dispatcher.SendCaesura("1", 0);
  dispatcher.SendLoopPass({});
}

}  // namespace
