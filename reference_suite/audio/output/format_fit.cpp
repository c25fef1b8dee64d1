#include "reference_suite/audio/output/format_fit.h"

#include <locale>
#include <sstream>

namespace tesk_audio {

namespace {

std::string Named(double rateHz, unsigned channels) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text.precision(10);
  text << rateHz << " Hz with " << channels << (channels == 1 ? " channel" : " channels");
  return text.str();
}

}  // namespace

bool FormatFits(const AudioSampleContent& content, double rateHz, unsigned channels, std::string* errorText) {
  if (content.GetSampleRateHz() == rateHz && content.GetChannelCount() == channels) return true;
  if (errorText != nullptr) {
    *errorText = "The audio has " + Named(content.GetSampleRateHz(), content.GetChannelCount()) +
                 ", and the output runs at " + Named(rateHz, channels) +
                 ". Convert the audio file, or let the show begin with another rate.";
  }
  return false;
}

}  // namespace tesk_audio
