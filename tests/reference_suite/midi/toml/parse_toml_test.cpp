#include "reference_suite/midi/toml/parse_toml.h"

#include <gtest/gtest.h>

#include <cmath>
#include <locale>

namespace {

using tesk_midi::ParseToml;
using tesk_midi::TextPlace;
using tesk_midi::TomlEntry;
using tesk_midi::TomlKind;
using tesk_midi::TomlNode;
using tesk_midi::TomlSyntaxError;

std::string At(TextPlace place) {
  return "@" + std::to_string(place.line) + ":" + std::to_string(place.column);
}

// Every key with its place, and every value with its own: "a@1:1=2@1:5".
std::string Picture(const TomlNode& node) {
  std::string text;
  switch (node.kind) {
    case TomlKind::Boolean:
      text = node.boolean ? "true" : "false";
      break;
    case TomlKind::Integer:
      text = std::to_string(node.integer);
      break;
    case TomlKind::Float:
      text = "float";
      break;
    case TomlKind::String:
      text = "'" + node.text + "'";
      break;
    case TomlKind::DateTime:
      text = "time";
      break;
    case TomlKind::Array:
      for (const TomlNode& element : node.elements) text += (text.empty() ? "" : ", ") + Picture(element);
      text = "[" + text + "]";
      break;
    case TomlKind::Table:
      for (const TomlEntry& entry : node.entries) {
        text += (text.empty() ? "" : " ") + entry.key + At(entry.place) + "=" + Picture(entry.value);
      }
      text = "{" + text + "}";
      break;
  }
  return text + At(node.place);
}

std::string Refusal(const std::string& text) {
  try {
    ParseToml(text);
  } catch (const TomlSyntaxError& error) {
    return At(error.GetPlace()) + " " + error.what();
  }
  return "read";
}

TEST(ParseToml, EveryKindWithItsPlace) {
  EXPECT_EQ(Picture(ParseToml("a = true\nb = -7\nc=1.5\n  d = \"x\"\ne = 1979-05-27\nf = 07:32:00\n"
                              "g = 1979-05-27T07:32:00Z\nh = [1, 'y']\ni = { tick = 3 }\n")),
            "{a@1:1=true@1:5 b@2:1=-7@2:5 c@3:1=float@3:3 d@4:3='x'@4:7 e@5:1=time@5:5 f@6:1=time@6:5 "
            "g@7:1=time@7:5 h@8:1=[1@8:6, 'y'@8:9]@8:5 i@9:1={tick@9:7=3@9:14}@9:5}@1:1");
}

TEST(ParseToml, EmptyTextIsAnEmptyTable) {
  EXPECT_TRUE(ParseToml("").entries.empty());
  EXPECT_TRUE(ParseToml("# a comment\n\n").entries.empty());
}

TEST(ParseToml, KeysComeInTheOrderOfTheFile) {
  EXPECT_EQ(Picture(ParseToml("z = 1\na = 2\nm = 3\n")), "{z@1:1=1@1:5 a@2:1=2@2:5 m@3:1=3@3:5}@1:1");
}

TEST(ParseToml, TablesOfAListBeginAtTheirBrackets) {
  EXPECT_EQ(Picture(ParseToml("[[vamp]]\nto = 2\n\n  [[vamp]]\n")),
            "{vamp@1:3=[{to@2:1=2@2:6}@1:1, {}@4:3]@1:1}@1:1");
}

TEST(ParseToml, LinesOfAnyKindAreCounted) {
  EXPECT_EQ(Picture(ParseToml("a = 1\r\nb = 2\r\n")), "{a@1:1=1@1:5 b@2:1=2@2:5}@1:1");
}

TEST(ParseToml, ColumnsCountCharacters) {
  EXPECT_EQ(Picture(ParseToml("a = [\"ü\", 1]\n")), "{a@1:1=['ü'@1:6, 1@1:11]@1:5}@1:1");
}

TEST(ParseToml, NumbersAreReadAlikeInEveryLocale) {
  class Comma : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Comma));
  const TomlNode table = ParseToml("scale = 0.95\nbig = 1234567\nexp = 12.5e-1\n");
  std::locale::global(before);
  EXPECT_EQ(table.entries[0].value.number, 0.95);
  EXPECT_EQ(table.entries[1].value.integer, 1234567);
  EXPECT_EQ(table.entries[2].value.number, 1.25);
}

TEST(ParseToml, FloatsThatAreNoNumbersArrive) {
  EXPECT_TRUE(std::isnan(ParseToml("a = nan").entries[0].value.number));
  EXPECT_TRUE(std::isinf(ParseToml("a = -inf").entries[0].value.number));
}

struct Row {
  const char* text;
  const char* refusal;
};
void PrintTo(const Row& row, std::ostream* out) {
  *out << testing::PrintToString(row.text);
}

class BrokenToml : public testing::TestWithParam<Row> {};

TEST_P(BrokenToml, IsRefusedWithItsPlace) {
  EXPECT_EQ(Refusal(GetParam().text), GetParam().refusal);
}

INSTANTIATE_TEST_SUITE_P(
    Syntax, BrokenToml,
    testing::Values(
        Row{"format = 1\ntitle = \n", "@2:9 Error while parsing key-value pair: expected value, saw '\\n'"},
        Row{"a = 1\na = 2\n",
            "@2:5 Error while parsing key-value pair: cannot redefine existing integer 'a'"},
        Row{"[[vamp]\nto = 2\n", "@1:8 Error while parsing table header: expected ']', saw '\\n'"},
        Row{"a = \"open\n",
            "@1:10 Error while parsing string: unescaped control characters other than TAB (U+0009) are "
            "explicitly prohibited"},
        Row{"a = 1.2.3\n",
            "@1:8 Error while parsing floating-point: expected decimal digit or exponent, saw '.'"},
        Row{"a = \"\xff\"\n", "@1:5 Encountered invalid utf-8 sequence"}));

// Texts that the library holds to be impossible.
INSTANTIATE_TEST_SUITE_P(Impossible, BrokenToml,
                         testing::Values(Row{"a = 1\n[[\x15vamp]]", "@2:3 unexpected character"},
                                         Row{"a = 1\n  [=]\n", "@2:4 unexpected character"},
                                         Row{"[[ü", "@1:3 unexpected character"},
                                         Row{"# ü\n\"ü\" = 1\n[ü]\nb = 2", "@3:2 unexpected character"}));

TEST(BrokenToml, LettersOutsideQuotesThatTheLibraryHasNoTableFor) {
  EXPECT_EQ(Refusal("a =ü 1"), "@1:4 Error while parsing value: could not determine value type");
  EXPECT_EQ(Refusal("ü = 1"),
            "@1:1 Error while parsing root table: expected keys, tables, whitespace or comments, saw 'ü'");
  EXPECT_EQ(Refusal("a = 1ϧ"), "@1:6 Error while parsing decimal integer: expected digit, saw 'ϧ'");
}

TEST(BrokenToml, DeepNestingIsRefused) {
  EXPECT_EQ(Refusal("a = " + std::string(300, '[')),
            "@1:261 Error while parsing value: exceeded maximum nested value depth of 256 "
            "(TOML_MAX_NESTED_VALUES)");
}

}  // namespace
