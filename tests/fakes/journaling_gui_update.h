#pragma once

#include <functional>
#include <string>

// The generator of position updates without its thread: what it is told goes to the journal as
// "gui.OPERATION". Threads: ANY.
namespace fakes::gui_update {

void Reset();
// The question that the last generator made was given: the audible tick.
bool AskAudibleTick(unsigned* tick);
bool IsPaused();
// Called at the beginning of every operation, with its name.
void OnCall(std::function<void(const std::string&)> hook);

}  // namespace fakes::gui_update
