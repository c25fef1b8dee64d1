#pragma once

#include <string>
#include <type_traits>

#include "suite/core/event.h"

namespace reference_core {

// A number the same way in every locale: numbers are read by people and by tests, never by rules of a
// country.
std::string NumberText(double number);

// Puts an event's one readable piece together: "Tempo(abs_time=960, microseconds_per_quarter=500000)".
class EventText {
 public:
  explicit EventText(const cmn::TESKEvent& event);

  EventText& With(const char* name, const std::string& value);
  template <typename T>
  requires std::is_arithmetic_v<T> EventText& With(const char* name, T value) {
    if constexpr (std::is_integral_v<T>) {
      return With(name, std::to_string(value));
    } else {
      return With(name, NumberText(value));
    }
  }

  // The whole text.
  std::string Get() const { return text_ + ")"; }

 private:
  std::string text_;
};

}  // namespace reference_core
