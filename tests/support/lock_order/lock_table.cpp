#include "tests/support/lock_order/lock_table.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

namespace test_support::lock_order {

namespace {

const char* const kHeading = "## Lock order";
const char* const kColumns = "| outer | inner | behind | where |";
const char* const kUnreached = "not reached by tests";

std::string Trim(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::vector<std::string> Split(const std::string& text, char at) {
  std::vector<std::string> parts;
  std::istringstream in(text);
  for (std::string part; std::getline(in, part, at);) parts.push_back(Trim(part));
  return parts;
}

void AddRow(const std::string& line, std::vector<AllowedPair>* table) {
  const std::vector<std::string> cells = Split(line.substr(1), '|');
  if (cells.size() != 4) throw std::runtime_error("not four cells: " + line);
  for (const std::string& inner : Split(cells[1], ',')) {
    if (cells[0].empty() || inner.empty()) throw std::runtime_error("a name is missing: " + line);
    const bool isReached = cells[3].find(kUnreached) == std::string::npos;
    table->push_back({cells[0], inner, cells[2], isReached});
  }
}

std::string Arrow(const std::string& outer, const std::string& inner) {
  return "\"" + outer + "\" -> \"" + inner + "\"";
}

const AllowedPair* Find(const std::vector<AllowedPair>& table, const std::string& outer,
                        const std::string& inner) {
  const auto found = std::find_if(table.begin(), table.end(), [&](const AllowedPair& pair) {
    return pair.outer == outer && pair.inner == inner;
  });
  return found == table.end() ? nullptr : &*found;
}

void AddRings(const std::vector<AllowedPair>& table, std::set<std::string>* rings) {
  std::map<std::string, std::set<std::string>> next;
  for (const AllowedPair& pair : table) {
    const AllowedPair* const opposite = Find(table, pair.inner, pair.outer);
    const bool isApart = opposite != nullptr && !pair.behind.empty() && pair.behind == opposite->behind;
    if (isApart && next[pair.inner].count(pair.outer) != 0) continue;
    next[pair.outer].insert(pair.inner);
  }
  // What has no inner lock left is innermost and part of no ring: taken away until nothing goes any more.
  for (bool changes = true; changes;) {
    changes = false;
    for (auto& [outer, inners] : next) {
      changes =
          std::erase_if(inners, [&](const std::string& inner) { return next.count(inner) == 0; }) != 0 ||
          changes;
    }
    changes = std::erase_if(next, [](const auto& entry) { return entry.second.empty(); }) != 0 || changes;
  }
  for (const auto& [outer, inners] : next) {
    for (const std::string& inner : inners) rings->insert("part of a ring: " + Arrow(outer, inner));
  }
}

}  // namespace

std::vector<AllowedPair> ReadLockTable(const std::string& documentPath) {
  std::ifstream in(documentPath);
  if (!in) throw std::runtime_error("cannot read " + documentPath);
  std::vector<AllowedPair> table;
  bool isUnderHeading = false;
  bool isInTable = false;
  for (std::string line; std::getline(in, line);) {
    if (line.rfind("## ", 0) == 0) isUnderHeading = line == kHeading;
    if (line.empty() || line[0] != '|') isInTable = false;
    if (isInTable && line.find("---") == std::string::npos) AddRow(line, &table);
    if (isUnderHeading && line == kColumns) isInTable = true;
  }
  if (table.empty()) throw std::runtime_error("no table of locks in " + documentPath);
  return table;
}

std::vector<std::string> FindUnallowed(const std::vector<Nesting>& seen,
                                       const std::vector<AllowedPair>& table) {
  std::vector<std::string> wrong;
  for (const Nesting& nesting : seen) {
    const std::string arrow = Arrow(nesting.outer, nesting.inner);
    const AllowedPair* const allowed = Find(table, nesting.outer, nesting.inner);
    if (allowed == nullptr) {
      wrong.push_back(arrow + " is not in the table");
    } else if (!allowed->behind.empty() && nesting.behind.count(allowed->behind) == 0) {
      wrong.push_back(arrow + " without \"" + allowed->behind + "\"");
    } else if (!allowed->isReached) {
      wrong.push_back(arrow + " is reached, and the table says that it is not");
    }
  }
  return wrong;
}

std::vector<std::string> FindUnreached(const std::vector<Nesting>& seen,
                                       const std::vector<AllowedPair>& table) {
  std::vector<std::string> unreached;
  for (const AllowedPair& pair : table) {
    const bool isSeen = std::any_of(seen.begin(), seen.end(), [&](const Nesting& nesting) {
      return nesting.outer == pair.outer && nesting.inner == pair.inner;
    });
    if (pair.isReached && !isSeen) unreached.push_back(Arrow(pair.outer, pair.inner) + " is never reached");
  }
  return unreached;
}

std::vector<std::string> FindRings(const std::vector<AllowedPair>& table) {
  std::set<std::string> rings;
  // Two opposites that are kept apart are no ring, and either of them may be part of one: once without the
  // second to come, once without the first.
  AddRings({table.begin(), table.end()}, &rings);
  AddRings({table.rbegin(), table.rend()}, &rings);
  return {rings.begin(), rings.end()};
}

std::set<std::pair<std::string, std::string>> Pairs(const std::vector<AllowedPair>& table) {
  std::set<std::pair<std::string, std::string>> pairs;
  for (const AllowedPair& pair : table) pairs.insert({pair.outer, pair.inner});
  return pairs;
}

}  // namespace test_support::lock_order
