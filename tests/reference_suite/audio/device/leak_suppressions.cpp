// What the leak checker is told of this program's deliberate oddity.
extern "C" {

// A device that the system grants no thread to close stays open for ever, and hears silence: waiting for it
// could take as long.
const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() {
  return "leak:tesk_audio::CloseDevice\n"
         "leak:tesk_audio::DeviceSearch::State::Open\n";
}

}  // extern "C"
