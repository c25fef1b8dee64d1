// What sanitizers are told of the programs' deliberate oddities. Linked into every program that starts
// loaders.

extern "C" {

// The record of a song that was decoded in advance and that nobody waits for is left alone on purpose: only
// who joins the thread may delete it.
const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() {
  return "leak:StartFileLoaderThread\n";
}

// The thread of such a record is neither joined nor detached, for the same reason. The converter's and the
// show control's locks are taken in both orders by design: both sides hold the read-samples lock first, so
// they never meet, but the detector does not see such a gate.
const char* __tsan_default_suppressions();
const char* __tsan_default_suppressions() {
  return "thread:StartFileLoaderThread\n"
         "deadlock:OBShowControl\n";
}

}  // extern "C"
