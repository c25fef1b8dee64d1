#include "host/cli/table.h"

#include <gtest/gtest.h>

namespace orbel::host::cli {
namespace {

TEST(Table, ColumnsLineUpByCharacters) {
  Table table({1});
  table.Add({"ä", "1", "end"});
  table.Add({"long", "200"});
  EXPECT_EQ(table.ToText("  "),
            "  ä       1  end\n"
            "  long  200\n");
}

TEST(Table, WithoutRowsIsEmpty) {
  EXPECT_EQ(Table().ToText("  "), "");
}

}  // namespace
}  // namespace orbel::host::cli
