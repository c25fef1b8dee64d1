#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/lock_order/lock_order.h"

namespace test_support::lock_order {

// A pair of the document's table: `inner` may be taken while `outer` is held.
struct AllowedPair {
  std::string outer;
  std::string inner;
  std::string behind;     // a lock that is held as well, every time; empty: none is needed
  bool isReached = true;  // by the tests
};

// The table under "## Lock order" whose columns are outer, inner (names separated by commas), behind and
// where. Throws std::runtime_error when it is not there or a row is not understood.
std::vector<AllowedPair> ReadLockTable(const std::string& documentPath);

// What is wrong, in words; nothing when all is well: nestings that the table does not have, that lack the
// lock that they are to be behind, or that the table calls not reached.
std::vector<std::string> FindUnallowed(const std::vector<Nesting>& seen,
                                       const std::vector<AllowedPair>& table);
// The pairs that the table calls reached and nobody has seen.
std::vector<std::string> FindUnreached(const std::vector<Nesting>& seen,
                                       const std::vector<AllowedPair>& table);
// Rings of locks in the table. Two pairs that are both behind the same lock never meet and make none; a pair
// whose opposite is in the table too must have it so.
std::vector<std::string> FindRings(const std::vector<AllowedPair>& table);

std::set<std::pair<std::string, std::string>> Pairs(const std::vector<AllowedPair>& table);

}  // namespace test_support::lock_order
