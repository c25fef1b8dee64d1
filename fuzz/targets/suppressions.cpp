// What sanitizers are told of the targets' deliberate and foreign oddities.
extern "C" {

// A loader's record that nobody waits for is left alone on purpose. libvorbisfile keeps its list of serial
// numbers when it refuses a file half way through the headers of a chain.
const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() {
  return "leak:StartFileLoaderThread\n"
         "leak:libvorbisfile.so\n";
}

}  // extern "C"
