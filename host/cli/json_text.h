#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/session/song_clock.h"

namespace orbel::host::cli {

// A place as an object: position, tick, sample, seconds.
nlohmann::ordered_json ToJson(const Place& place);

// Writes a result to standard output. Bytes that are not UTF-8, as file names may hold them, are replaced.
void Print(const nlohmann::ordered_json& json);

}  // namespace orbel::host::cli
