#include <utility>

#include "Sources/ob_show_control/ob_show_control.h"

OBShowControl::OBShowControl(ActiveSongNumber& activeSongNumber, tesk_midi::ShowData& showData,
                             CL::ChangeLog* changeLog, SamplesTicksConverter& converter,
                             gui::GuiUpdate& guiUpdate, Transients& transients,
                             std::function<bool()> caesuraSeek)
    : ShowControl(activeSongNumber, showData, changeLog),
      samplesTicksConverter_(converter),
      guiUpdate_(guiUpdate),
      howToPlay_(transients),
      caesuraSeekCallback_(std::move(caesuraSeek)) {}

OBShowControl::~OBShowControl() = default;

bool OBShowControl::FollowsClock() {
  return false;
}

void OBShowControl::FollowClock(bool /*follow*/) {}

gui::GuiUpdate& OBShowControl::GetGuiUpdate() {
  return guiUpdate_;
}

HowToPlay& OBShowControl::GetHowToPlay() {
  return howToPlay_;
}
