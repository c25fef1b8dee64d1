#include "reference_suite/audio/text/shown_path.h"

#include <gtest/gtest.h>

namespace {

struct Row {
  const char* path;
  const char* shown;
  const char* why;
};

class ShownPathTable : public testing::TestWithParam<Row> {};

TEST_P(ShownPathTable, ShowsTheName) {
  EXPECT_EQ(tesk_audio::ShownPath(GetParam().path), GetParam().shown) << GetParam().why;
}

INSTANTIATE_TEST_SUITE_P(
    Names, ShownPathTable,
    testing::Values(Row{"", "", "nothing"}, Row{"data/1 Song.obd", "data/1 Song.obd", "plain"},
                    Row{"\x1b[2J", "\\x1b[2J", "a command to the terminal"},
                    Row{"a\nb", "a\\x0ab", "a line end"}, Row{"\x7f", "\\x7f", "delete"},
                    Row{"\xc2\x9b", "\\xc2\\x9b", "a command in two bytes"},
                    Row{"\xc2\xa0", "\xc2\xa0", "the first character behind those"},
                    Row{"Th\xc3\xa9\xc3\xa2tre", "Th\xc3\xa9\xc3\xa2tre", "two bytes"},
                    Row{"\xe2\x99\xaf", "\xe2\x99\xaf", "three bytes"},
                    Row{"\xf0\x9d\x84\x9e", "\xf0\x9d\x84\x9e", "four bytes"},
                    Row{"\xff\xfe", "\\xff\\xfe", "never UTF-8"}, Row{"\xc3", "\\xc3", "cut off"},
                    Row{"\xc3(", "\\xc3(", "not continued"},
                    Row{"\x80", "\\x80", "a continuation of nothing"},
                    Row{"\xc0\xaf", "\\xc0\\xaf", "overlong, two bytes"},
                    Row{"\xe0\x80\xaf", "\\xe0\\x80\\xaf", "overlong, three bytes"},
                    Row{"\xf0\x80\x80\xaf", "\\xf0\\x80\\x80\\xaf", "overlong, four bytes"},
                    Row{"\xed\xa0\x80", "\\xed\\xa0\\x80", "half of a surrogate pair"},
                    Row{"\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80", "behind the last character"}));

}  // namespace
