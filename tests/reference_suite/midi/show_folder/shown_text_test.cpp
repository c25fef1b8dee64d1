#include "reference_suite/midi/show_folder/shown_text.h"

#include <gtest/gtest.h>

namespace {

using tesk_midi::Quoted;
using tesk_midi::ShownText;
using tesk_midi::TextFromMidi;

struct Row {
  std::string text;
  const char* shown;
  const char* why;
};
void PrintTo(const Row& row, std::ostream* out) {
  *out << row.why;
}

class ShownTexts : public testing::TestWithParam<Row> {};

TEST_P(ShownTexts, CommandNoTerminal) {
  EXPECT_EQ(ShownText(GetParam().text), GetParam().shown);
  EXPECT_EQ(ShownText(GetParam().shown), GetParam().shown) << "shown twice";
}

INSTANTIATE_TEST_SUITE_P(Utf8, ShownTexts,
                         testing::Values(Row{"", "", "nothing"}, Row{"3 Waltz", "3 Waltz", "plain"},
                                         Row{"Straße", "Straße", "two bytes"},
                                         Row{"日本", "日本", "three bytes"}, Row{"🎵", "🎵", "four bytes"},
                                         Row{"\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF", "the last code point"},
                                         Row{"\xC2\xA0", "\xC2\xA0", "the first above the upper controls"}));

INSTANTIATE_TEST_SUITE_P(
    Controls, ShownTexts,
    testing::Values(Row{"a\x1b[31m", "a\\x1b[31m", "escape"}, Row{"a\nb", "a\\x0ab", "line end"},
                    Row{std::string("\0", 1), "\\x00", "zero"}, Row{"\x7f", "\\x7f", "delete"},
                    Row{"\xC2\x9B", "\\xc2\\x9b", "the one-character escape of the upper controls"}));

INSTANTIATE_TEST_SUITE_P(
    NotUtf8, ShownTexts,
    testing::Values(Row{"\xff\xfe.wav", "\\xff\\xfe.wav", "no lead bytes"},
                    Row{"\x80", "\\x80", "a lone continuation"}, Row{"\xC3", "\\xc3", "cut short"},
                    Row{"\xC3(", "\\xc3(", "no continuation"},
                    Row{"\xE2\x82", "\\xe2\\x82", "three bytes cut short"},
                    Row{"\xC0\xAF", "\\xc0\\xaf", "two bytes for what needs one"},
                    Row{"\xE0\x80\xAF", "\\xe0\\x80\\xaf", "three bytes for what needs one"},
                    Row{"\xF0\x80\x80\xAF", "\\xf0\\x80\\x80\\xaf", "four bytes for what needs one"},
                    Row{"\xED\xA0\x80", "\\xed\\xa0\\x80", "a surrogate"},
                    Row{"\xF4\x90\x80\x80", "\\xf4\\x90\\x80\\x80", "past the last code point"},
                    Row{"\xEE\x80\x80", "\xEE\x80\x80", "right above the surrogates"}));

TEST(Quoted, PutsTheShownTextInQuotes) {
  EXPECT_EQ(Quoted("a\nb"), "\"a\\x0ab\"");
}

TEST(TextFromMidi, Utf8StaysAndOtherBytesAreLatin1) {
  EXPECT_EQ(TextFromMidi("Straße"), "Straße");
  EXPECT_EQ(TextFromMidi("Stra\xDF"
                         "e"),
            "Straße");
  EXPECT_EQ(TextFromMidi("\x1b\xDF"), "\\x1bß");
  EXPECT_EQ(TextFromMidi("\x9B\xDF"), "\\xc2\\x9bß");
}

}  // namespace
