// What sanitizers are told of the programs' deliberate oddities. Linked into every program that starts
// loaders.

extern "C" {

// The record of a song that was decoded in advance and that nobody waits for is left alone on purpose: only
// who joins the thread may delete it.
const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() {
  return "leak:StartFileLoaderThread\n";
}

// The thread of such a record is neither joined nor detached, for the same reason.
const char* __tsan_default_suppressions();
const char* __tsan_default_suppressions() {
  return "thread:StartFileLoaderThread\n";
}

}  // extern "C"
