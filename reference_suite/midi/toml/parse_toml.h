#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "reference_suite/midi/toml/toml_node.h"

namespace tesk_midi {

// Text that is not TOML. what() is the reader's reason, without the place.
class TomlSyntaxError : public std::runtime_error {
 public:
  TomlSyntaxError(TextPlace place, const std::string& reason) : std::runtime_error(reason), place_(place) {}
  TextPlace GetPlace() const { return place_; }

 private:
  TextPlace place_;
};

// The table that a TOML text is. Numbers are read alike whatever the process's locale is. Throws
// TomlSyntaxError. Threads: ANY.
TomlNode ParseToml(std::string_view text);

}  // namespace tesk_midi
