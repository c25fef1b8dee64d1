#include "suite/midi/change_log.h"

#include <gtest/gtest.h>

namespace {

CL::SongLog LogWithCaesuraAt(unsigned tick) {
  CL::SongLog log;
  log.caesuras.Add(CL::Caesura(tick, 0));
  return log;
}

TEST(ChangeLog, GivesEverySongItsLog) {
  CL::ChangeLog changeLog;
  changeLog.SetSongLog("2", LogWithCaesuraAt(20));
  changeLog.SetSongLog("10", LogWithCaesuraAt(100));
  EXPECT_EQ(changeLog.GetSongLog("2").caesuras[0].abs_time(), 20u);
  EXPECT_EQ(changeLog.GetSongLog("10").caesuras[0].abs_time(), 100u);
}

TEST(ChangeLog, SongWithoutEntryHasASharedEmptyLog) {
  CL::ChangeLog changeLog;
  changeLog.SetSongLog("2", LogWithCaesuraAt(20));
  const CL::SongLog& log = changeLog.GetSongLog("3");
  EXPECT_EQ(&log, &changeLog.GetSongLog("4"));
  EXPECT_FALSE(log.skip);
  EXPECT_EQ(log.attacca, 0);
  EXPECT_EQ(log.caesuras.GetSize(), 0u);
}

TEST(ChangeLog, LaterLogReplacesTheEarlier) {
  CL::ChangeLog changeLog;
  changeLog.SetSongLog("2", LogWithCaesuraAt(20));
  changeLog.SetSongLog("2", LogWithCaesuraAt(30));
  ASSERT_EQ(changeLog.GetSongLog("2").caesuras.GetSize(), 1u);
  EXPECT_EQ(changeLog.GetSongLog("2").caesuras[0].abs_time(), 30u);
}

}  // namespace
