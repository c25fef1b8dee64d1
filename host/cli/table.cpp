#include "host/cli/table.h"

#include <algorithm>

namespace orbel::host::cli {
namespace {

constexpr char kGap[] = "  ";

std::size_t Width(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](char byte) { return (static_cast<unsigned char>(byte) & 0xc0) != 0x80; }));
}

}  // namespace

std::string Table::ToText(const std::string& indent) const {
  std::vector<std::size_t> widths;
  for (const auto& row : rows_) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t column = 0; column < row.size(); ++column) {
      widths[column] = std::max(widths[column], Width(row[column]));
    }
  }
  std::string text;
  for (const auto& row : rows_) {
    std::string line = indent;
    for (std::size_t column = 0; column < row.size(); ++column) {
      const std::string padding(widths[column] - Width(row[column]), ' ');
      const bool right = std::count(rightAligned_.begin(), rightAligned_.end(), column) > 0;
      line += (column == 0 ? "" : kGap) + (right ? padding + row[column] : row[column] + padding);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
  }
  return text;
}

}  // namespace orbel::host::cli
