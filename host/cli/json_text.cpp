#include "host/cli/json_text.h"
#include "host/session/results.h"

namespace orbel::host::cli {

nlohmann::ordered_json ToJson(const Place& place) {
  return {{"position", place.position},
          {"tick", place.tick},
          {"sample", place.sample},
          {"seconds", place.seconds}};
}

void Print(const nlohmann::ordered_json& json) {
  Results() << json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

}  // namespace orbel::host::cli
