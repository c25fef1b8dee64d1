#include "reference_suite/core/event_text.h"

#include <charconv>

#include "suite/core/event_codes.h"

namespace reference_core {

std::string NumberText(double number) {
  char text[32];
  const std::to_chars_result result = std::to_chars(text, text + sizeof text, number);
  return std::string(text, result.ptr);
}

EventText::EventText(const cmn::TESKEvent& event)
    : text_(codes::editNameByTeskEventCode(event.GetEventCode()) +
            "(abs_time=" + std::to_string(event.abs_time())) {}

EventText& EventText::With(const char* name, const std::string& value) {
  text_ += std::string(", ") + name + "=" + value;
  return *this;
}

}  // namespace reference_core
