#pragma once

#include <vector>

namespace exc {

// The keys of a map in its order, as a list of their own: the map may change while the list is walked.
template <typename Map>
std::vector<typename Map::key_type> get_keys(const Map& map) {
  std::vector<typename Map::key_type> keys;
  keys.reserve(map.size());
  for (const auto& entry : map) keys.push_back(entry.first);
  return keys;
}

}  // namespace exc
