// What sanitizers are told of the programs' deliberate oddities. Linked into every program that starts
// loaders. ORBEL_MEMORY_IS_REFUSED says that the program refuses memory to all its threads.

extern "C" {

// The record of a song that was decoded in advance and that nobody waits for is left alone on purpose: only
// who joins the thread may delete it. A stretcher of the library's that finds no memory while it is made
// forgets what it has got so far, which is no excuse for one that was given all it asked for.
const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() {
  return "leak:StartFileLoaderThread\n"
#ifdef ORBEL_MEMORY_IS_REFUSED
         "leak:RubberBand::allocate<\n"
         "leak:RubberBand::CompoundAudioCurve::\n"
         "leak:RubberBand::R2Stretcher::\n"
#endif
      ;
}

// The thread of such a record is neither joined nor detached, for the same reason. These four take the show
// control's lock and then the converter's, planning the other way round: both sides hold the read-samples
// lock first, so they never meet, but the detector does not see such a gate.
const char* __tsan_default_suppressions();
const char* __tsan_default_suppressions() {
  return "thread:StartFileLoaderThread\n"
         "deadlock:OBShowControl::SetJump\n"
         "deadlock:OBShowControl::GetJumpIsNext\n"
         "deadlock:OBShowControl::AddToSampleIndex\n"
         "deadlock:OBShowControl::RecoverAt_\n";
}

}  // extern "C"
