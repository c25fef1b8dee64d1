// What sanitizers are told of the targets' deliberate and foreign oddities.
extern "C" {

// A loader's record that nobody waits for is left alone on purpose.
const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() {
  return "leak:StartFileLoaderThread\n";
}

}  // extern "C"
