#pragma once

#include <string>
#include <vector>

namespace orbel::host::cli {

// Rows of text in columns that line up. Width is counted in characters, not in bytes.
class Table {
 public:
  // `rightAligned`: the columns, from 0, that hold numbers.
  explicit Table(std::vector<std::size_t> rightAligned = {}) : rightAligned_(std::move(rightAligned)) {}

  void Add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }
  // Every row on a line of its own, `indent` before it.
  std::string ToText(const std::string& indent) const;

 private:
  std::vector<std::size_t> rightAligned_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace orbel::host::cli
