#include "suite/utility/path.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace path = exc::path;

TEST(PathJoin, PutsOneSlashWhereThePartsMeet) {
  EXPECT_EQ(path::Join("show", "data"), "show/data");
  EXPECT_EQ(path::Join("show/", "data"), "show/data");
  EXPECT_EQ(path::Join("show", "/data"), "show/data");
  EXPECT_EQ(path::Join("show//", "//data"), "show/data");
  EXPECT_EQ(path::Join("/", "data"), "/data");
  EXPECT_EQ(path::Join("/srv/shows/a", "data", "1 Opening Night.obd"),
            "/srv/shows/a/data/1 Opening Night.obd");
}

TEST(PathJoin, LeavesTheRestOfThePartsAlone) {
  EXPECT_EQ(path::Join("//a//b", "c//d/"), "//a//b/c//d/");
  EXPECT_EQ(path::Join("a", "/"), "a/");
  EXPECT_EQ(path::Join("a", ".."), "a/..");
}

TEST(PathJoin, LeavesEmptyPartsOut) {
  EXPECT_EQ(path::Join("", "data"), "data");
  EXPECT_EQ(path::Join("show", ""), "show");
  EXPECT_EQ(path::Join("", ""), "");
  EXPECT_EQ(path::Join("show", "", "file"), "show/file");
}

struct NameRow {
  const char* path;
  const char* base;
  const char* extension;
  const char* why;
};
void PrintTo(const NameRow& row, std::ostream* out) {
  *out << row.path << " (" << row.why << ")";
}

class NameTable : public testing::TestWithParam<NameRow> {};

TEST_P(NameTable, BaseAndExtensionMakeTheLastComponent) {
  EXPECT_EQ(path::basename_no_ext(GetParam().path), GetParam().base);
  EXPECT_EQ(path::extension(GetParam().path), GetParam().extension);
}

INSTANTIATE_TEST_SUITE_P(
    Names, NameTable,
    testing::Values(NameRow{"2 Intro.obd", "2 Intro", ".obd", "a song's file"},
                    NameRow{"data/2 Intro.obd", "2 Intro", ".obd", "the last component counts"},
                    NameRow{"3 Song.OBD", "3 Song", ".OBD", "case is kept"},
                    NameRow{"3 Song", "3 Song", "", "no extension"},
                    NameRow{"Act 1. Dance.obd", "Act 1. Dance", ".obd", "only the last dot counts"},
                    NameRow{"a.tar.gz", "a.tar", ".gz", "only the last dot counts"},
                    NameRow{"a.", "a", ".", "an empty extension is one"},
                    NameRow{"folder.d/file", "file", "", "a dot in a folder's name does not count"},
                    NameRow{"folder.d/", "", "", "no last component"}, NameRow{"", "", "", "nothing"},
                    NameRow{".obd", ".obd", "", "a hidden name"},
                    NameRow{"x/.obd", ".obd", "", "a hidden name"},
                    NameRow{".hidden.obd", ".hidden", ".obd", "a hidden name with an extension"},
                    NameRow{"..", "..", "", "the folder above"},
                    NameRow{"...x", "...x", "", "leading dots"}));
