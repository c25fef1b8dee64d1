#include "Sources/file_loader/report_exception.h"

#include <gtest/gtest.h>

#include "tests/fakes/fake_log.h"

namespace {

TEST(ReportException, GoesToTheLogWithThisFoldersSource) {
  fakes::TakeLogEntries();
  file_loader::ReportException("no bow", 12);
  EXPECT_EQ(fakes::TakeLogEntries(), (std::vector<fakes::LogEntry>{{"no bow", "Sources/file_loader", 12}}));
}

TEST(ReportException, ThatFailsItselfIsLost) {
  fakes::TakeLogEntries();
  fakes::FailLogging(true);
  file_loader::ReportException("no memory", 12);
  fakes::FailLogging(false);
  EXPECT_TRUE(fakes::TakeLogEntries().empty());
}

}  // namespace
