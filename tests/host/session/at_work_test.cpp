#include "host/session/at_work.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace orbel::host {
namespace {

TEST(AtWork, TellsTheShowAndThenTheSongWithItsFile) {
  NoteShow("my\x1bshow");
  EXPECT_EQ(AtWork(), "my\\x1bshow");
  NoteSong("2", "data/2 Polka\n.obd");
  EXPECT_EQ(AtWork(), "my\\x1bshow: song 2 (data/2 Polka\\x0a.obd)");
  NoteSong("3", "data/3 Galop.obd");
  EXPECT_EQ(AtWork(), "my\\x1bshow: song 3 (data/3 Galop.obd)");
  NoteSong("", "");
  EXPECT_EQ(AtWork(), "my\\x1bshow");
}

TEST(AtWork, ASongIsForgottenWhenItIsDoneAndKeptWhenItFailed) {
  NoteShow("show");
  { const AtSong song("2", "data/2 Polka.obd"); }
  EXPECT_EQ(AtWork(), "show");
  try {
    const AtSong song("2", "data/2 Polka.obd");
    throw std::runtime_error("no");
  } catch (const std::runtime_error&) {
    // What was thrown is not what is looked at.
  }
  EXPECT_EQ(AtWork(), "show: song 2 (data/2 Polka.obd)");
}

TEST(AtWork, NamesThatAreTooLongAreCutOff) {
  NoteShow(std::string(900, 's'));
  NoteSong("2", std::string(900, 'f'));
  EXPECT_EQ(AtWork().size(), 1024U);
  EXPECT_EQ(AtWork().substr(0, 920), std::string(900, 's') + ": song 2 (" + std::string(10, 'f'));
}

}  // namespace
}  // namespace orbel::host
