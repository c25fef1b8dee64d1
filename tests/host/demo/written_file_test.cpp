#include "host/demo/written_file.h"

#include <gtest/gtest.h>

#include "host/demo/demo_error.h"
#include "tests/host/demo/scratch_folder.h"
#include "tests/host/demo/write_faults.h"

namespace {

namespace fs = std::filesystem;
using orbel::host::DemoError;
using orbel::host::demo::WriteFile;
using write_faults::Provoke;

const std::vector<std::uint8_t> kBytes{'a', 'b', 'c', 'd'};

class WrittenFile : public testing::Test {
 protected:
  fs::path Path() const { return folder_.Path() / "file"; }

  std::string Failure() const {
    try {
      WriteFile(Path(), kBytes);
    } catch (const DemoError& error) {
      return error.what();
    }
    return "written";
  }

  // What is there after a failure: the old file and nothing else.
  void ExpectOldFileOnly() const {
    EXPECT_EQ(FilesIn(folder_.Path()), std::vector<std::string>{"file"});
    EXPECT_EQ(BytesOfFile(Path()), std::vector<std::uint8_t>({'o', 'l', 'd'}));
  }

  ScratchFolder folder_;
};

TEST_F(WrittenFile, HoldsItsBytesAndLeavesNothingBeside) {
  WriteFile(Path(), kBytes);
  EXPECT_EQ(BytesOfFile(Path()), kBytes);
  EXPECT_EQ(FilesIn(folder_.Path()), std::vector<std::string>{"file"});
}

TEST_F(WrittenFile, TakesThePlaceOfAnOldOne) {
  PutFile(Path(), "something much longer");
  WriteFile(Path(), kBytes);
  EXPECT_EQ(BytesOfFile(Path()), kBytes);
}

TEST_F(WrittenFile, MayBeEmpty) {
  WriteFile(Path(), {});
  EXPECT_EQ(FilesIn(folder_.Path()), std::vector<std::string>{"file"});
}

TEST_F(WrittenFile, GoesOnAfterAnInterruption) {
  const Provoke interruption({.interruptedWrites = 2});
  WriteFile(Path(), kBytes);
  EXPECT_EQ(BytesOfFile(Path()), kBytes);
}

TEST_F(WrittenFile, AFullDiskIsToldAndTheOldFileStays) {
  PutFile(Path(), "old");
  {
    const Provoke fullDisk({.room = 3});
    EXPECT_EQ(Failure(),
              Path().string() +
                  ": not written (No space left on device, 1 of 4 bytes are missing); make room on the "
                  "disk and write the demo again.");
  }
  ExpectOldFileOnly();
}

TEST_F(WrittenFile, ADiskThatFailsAtTheEndIsTold) {
  PutFile(Path(), "old");
  {
    const Provoke fault({.failSync = true});
    EXPECT_EQ(Failure(),
              Path().string() +
                  ": not written (Input/output error); see that the folder may be written, or choose "
                  "another one.");
  }
  ExpectOldFileOnly();
}

TEST_F(WrittenFile, ACloseThatFailsIsTold) {
  PutFile(Path(), "old");
  {
    const Provoke fault({.failClose = true});
    EXPECT_EQ(Failure(),
              Path().string() +
                  ": not written (Disk quota exceeded); make room on the disk and write the demo again.");
  }
  ExpectOldFileOnly();
}

TEST_F(WrittenFile, ANameThatIsNotGivenIsTold) {
  PutFile(Path(), "old");
  {
    const Provoke fault({.failRename = true});
    EXPECT_EQ(Failure(),
              Path().string() +
                  ": not written (Permission denied); see that the folder may be written, or choose "
                  "another one.");
  }
  ExpectOldFileOnly();
}

TEST_F(WrittenFile, AFolderThatIsMissingIsTold) {
  try {
    WriteFile(folder_.Path() / "none" / "file", kBytes);
    FAIL() << "written";
  } catch (const DemoError& error) {
    EXPECT_EQ(error.what(),
              (folder_.Path() / "none" / "file").string() +
                  ": not written (No such file or directory); see that the folder may be written, or "
                  "choose another one.");
  }
}

TEST_F(WrittenFile, IsNeverWrittenThroughALink) {
  PutFile(folder_.Path() / "precious", "precious");
  fs::create_symlink(folder_.Path() / "precious", folder_.Path() / "file.part");
  EXPECT_EQ(Failure(), Path().string() + ": not written: " + Path().string() +
                           ".part, as it is called until it is complete, is a link; remove that, or choose "
                           "another name.");
  EXPECT_EQ(BytesOfFile(folder_.Path() / "precious").size(), 8u);
  EXPECT_FALSE(fs::exists(Path()));
}

}  // namespace
