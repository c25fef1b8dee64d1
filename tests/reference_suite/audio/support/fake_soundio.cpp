#include "tests/reference_suite/audio/support/fake_soundio.h"

namespace {

FakeSystem* theSystem = nullptr;

}  // namespace

FakeSystem::FakeSystem() {
  theSystem = this;
}

FakeSystem::~FakeSystem() {
  theSystem = nullptr;
}

void FakeSystem::Add(const std::string& name, const std::string& id) {
  outputs.push_back({name, id, {}});
  for (Output& output : outputs) {
    output.device.name = output.name.data();
    output.device.id = output.id.data();
  }
}

extern "C" {

SoundIo* soundio_create(void) {
  return &theSystem->soundio;
}
void soundio_destroy(SoundIo*) {}
int soundio_connect_backend(SoundIo* soundio, SoundIoBackend backend) {
  soundio->current_backend = backend;
  return 0;
}
const char* soundio_backend_name(SoundIoBackend) {
  return "Fake";
}
const char* soundio_strerror(int) {
  return "no";
}
void soundio_flush_events(SoundIo* soundio) {
  if (theSystem->dies) soundio->on_backend_disconnect(soundio, SoundIoErrorBackendDisconnected);
}
int soundio_output_device_count(SoundIo*) {
  return theSystem->isBare ? 0 : static_cast<int>(theSystem->outputs.size());
}
int soundio_default_output_device_index(SoundIo*) {
  return theSystem->usual;
}
SoundIoDevice* soundio_get_output_device(SoundIo*, int index) {
  return &theSystem->outputs.at(static_cast<std::size_t>(index)).device;
}
void soundio_device_unref(SoundIoDevice*) {}
int soundio_device_nearest_sample_rate(SoundIoDevice*, int rate) {
  return rate;
}
bool soundio_device_supports_layout(SoundIoDevice*, const SoundIoChannelLayout*) {
  return true;
}
const SoundIoChannelLayout* soundio_channel_layout_get_default(int channels) {
  theSystem->layout.channel_count = channels;
  return &theSystem->layout;
}
SoundIoOutStream* soundio_outstream_create(SoundIoDevice* device) {
  theSystem->opened = device->id;
  theSystem->stream = {};
  return &theSystem->stream;
}
void soundio_outstream_destroy(SoundIoOutStream* stream) {
  if (theSystem->onDestroy) theSystem->onDestroy();
  if (theSystem->asksToTheLast) stream->write_callback(stream, 0, 256);
}
int soundio_outstream_open(SoundIoOutStream*) {
  return 0;
}
int soundio_outstream_start(SoundIoOutStream*) {
  if (theSystem->onStart) theSystem->onStart();
  return 0;
}
int soundio_outstream_begin_write(SoundIoOutStream*, SoundIoChannelArea** areas, int* frames) {
  if (theSystem->beginError != 0) return theSystem->beginError;
  theSystem->written.assign(2 * static_cast<std::size_t>(*frames), -1.0F);
  for (std::size_t channel = 0; channel < 2; ++channel) {
    theSystem->areas[channel].ptr = reinterpret_cast<char*>(theSystem->written.data() + channel);
    theSystem->areas[channel].step = 2 * sizeof(float);
  }
  *areas = theSystem->areas;
  return 0;
}
int soundio_outstream_end_write(SoundIoOutStream*) {
  return theSystem->endError;
}
int soundio_outstream_get_latency(SoundIoOutStream*, double* seconds) {
  *seconds = 0.02;
  return 0;
}

}  // extern "C"
