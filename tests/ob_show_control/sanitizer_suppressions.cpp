// What the thread sanitizer is told of the deliberate oddity of this folder.

extern "C" {

// Planning takes the converter's lock and then the show control's; these take them the other way round, by
// contract. Both sides hold the read-samples lock first, so they never meet; the detector does not see such a
// gate.
const char* __tsan_default_suppressions();
const char* __tsan_default_suppressions() {
  return "deadlock:OBShowControl::SetJump\n"
         "deadlock:OBShowControl::GetJumpIsNext\n"
         "deadlock:OBShowControl::AddToSampleIndex\n"
         "deadlock:OBShowControl::RecoverAt_\n";
}

}  // extern "C"
