#include "tests/fakes/journaling_gui_update.h"

#include <mutex>
#include <utility>

#include "suite/player_core/gui_update.h"
#include "tests/fakes/journal.h"

namespace fakes::gui_update {

namespace {

std::mutex mutex;
std::function<bool(unsigned*)> audibleTick;
std::function<void(const std::string&)> hook;
bool paused = true;

void Tell(const std::string& call) {
  std::function<void(const std::string&)> onCall;
  {
    const std::lock_guard lock(mutex);
    onCall = hook;
  }
  if (onCall) onCall(call);
  Write("gui." + call);
}

void SetPaused(bool isPaused) {
  const std::lock_guard lock(mutex);
  paused = isPaused;
}

}  // namespace

void Reset() {
  const std::lock_guard lock(mutex);
  hook = nullptr;
  paused = true;
}

bool AskAudibleTick(unsigned* tick) {
  std::function<bool(unsigned*)> ask;
  {
    const std::lock_guard lock(mutex);
    ask = audibleTick;
  }
  return ask(tick);
}

bool IsPaused() {
  const std::lock_guard lock(mutex);
  return paused;
}

void OnCall(std::function<void(const std::string&)> onCall) {
  const std::lock_guard lock(mutex);
  hook = std::move(onCall);
}

}  // namespace fakes::gui_update

namespace gui {

struct GuiUpdate::State {
  unsigned shown = 0;
};

GuiUpdate::GuiUpdate(Player& /*player*/, std::function<bool(unsigned*)> audibleTick)
    : exc::RLockable("GuiUpdate"), state_(std::make_unique<State>()) {
  const std::lock_guard lock(fakes::gui_update::mutex);
  fakes::gui_update::audibleTick = std::move(audibleTick);
}
GuiUpdate::~GuiUpdate() {
  fakes::Write("gui.Delete");
}

void GuiUpdate::StartUpdateGenerator() {
  fakes::gui_update::Tell("StartUpdateGenerator");
}
void GuiUpdate::Pause() {
  fakes::gui_update::Tell("Pause");
  fakes::gui_update::SetPaused(true);
}
void GuiUpdate::Unpause() {
  fakes::gui_update::Tell("Unpause");
  fakes::gui_update::SetPaused(false);
}
void GuiUpdate::ResetAndSeekToTickIndex(unsigned tickIndex) {
  fakes::gui_update::Tell("ResetAndSeekToTickIndex " + std::to_string(tickIndex));
}
void GuiUpdate::UpdateOnce() {
  fakes::gui_update::Tell("UpdateOnce");
}
unsigned GuiUpdate::GetTickIndex() {
  return state_->shown;
}
void GuiUpdate::SetSong(const tesk_midi::SongData* /*song*/) {}

}  // namespace gui
