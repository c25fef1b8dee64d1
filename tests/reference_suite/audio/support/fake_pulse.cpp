// Takes the place of PulseAudio's own library: answers as the test wants, on the thread that asks.
#include "tests/reference_suite/audio/support/fake_pulse.h"

FakePulse fakePulse;

extern "C" void* pa_context_get_server_info(void* context, FakePulse::Answer answer, void* argument) {
  if (fakePulse.refuses) return nullptr;
  fakePulse.answer = [=](const void* info) { answer(context, info, argument); };
  return &fakePulse;
}

extern "C" void pa_operation_set_state_callback(void* operation, FakePulse::Ended ended, void* argument) {
  fakePulse.end = [=] { ended(operation, argument); };
}
