#include "reference_suite/audio/device/alsa_cards.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace {

TEST(AlsaHasCards, AnyOfThemCounts) {
  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() / ("orbel_cards_" + std::to_string(::getpid()));
  EXPECT_FALSE(tesk_audio::AlsaHasCards(folder.string())) << "no such folder";
  std::filesystem::create_directories(folder);
  for (const char* const name : {"timer", "seq", "pcmC1D0p"}) std::ofstream(folder / name) << "";
  EXPECT_FALSE(tesk_audio::AlsaHasCards(folder.string()));
  std::ofstream(folder / "controlC1") << "";
  EXPECT_TRUE(tesk_audio::AlsaHasCards(folder.string())) << "a card without a first one";
  std::filesystem::remove_all(folder);
}

}  // namespace
