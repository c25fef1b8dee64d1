// Decodes one file into memory and ends: a whole program to time beside other whole programs.
#include <cstdlib>
#include <iostream>

#include "suite/audio/audio_sample_content.h"
#include "suite/audio/create.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: decode_file FILE\n";
    return 2;
  }
  // Never freed: ending the program does that.
  const tesk_audio::AudioSampleContent* const content = tesk_audio::CreateAudioSampleContent(argv[1], "");
  std::cout << content->GetSampleCount() << " frames\n" << std::flush;
  std::_Exit(0);
}
