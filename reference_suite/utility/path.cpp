#include "suite/utility/path.h"

#include <cstddef>

namespace exc::path {

namespace {

std::string LastComponent(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// Where the extension of a component begins; its size when it has none.
std::size_t ExtensionBegin(const std::string& component) {
  const std::size_t dot = component.rfind('.');
  const std::size_t nameBegin = component.find_first_not_of('.');
  const bool hasExtension = dot != std::string::npos && nameBegin != std::string::npos && nameBegin < dot;
  return hasExtension ? dot : component.size();
}

}  // namespace

std::string Join(const std::string& first, const std::string& second) {
  if (first.empty()) return second;
  if (second.empty()) return first;
  const std::size_t firstEnd = first.find_last_not_of('/');
  const std::size_t secondBegin = second.find_first_not_of('/');
  const std::string head = firstEnd == std::string::npos ? "" : first.substr(0, firstEnd + 1);
  const std::string tail = secondBegin == std::string::npos ? "" : second.substr(secondBegin);
  return head + "/" + tail;
}

std::string Join(const std::string& first, const std::string& second, const std::string& third) {
  return Join(Join(first, second), third);
}

std::string extension(const std::string& path) {
  const std::string component = LastComponent(path);
  return component.substr(ExtensionBegin(component));
}

std::string basename_no_ext(const std::string& path) {
  const std::string component = LastComponent(path);
  return component.substr(0, ExtensionBegin(component));
}

}  // namespace exc::path
