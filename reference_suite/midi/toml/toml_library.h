#pragma once

namespace tesk_midi {

// Thrown where the TOML library meets what it holds to be impossible.
struct TomlLibraryBroken {};

[[noreturn]] inline void ThrowTomlLibraryBroken() {
  throw TomlLibraryBroken();
}

}  // namespace tesk_midi

// The library takes some damaged texts for impossible: "[[" and a control character, or a letter such as a
// Greek one outside quotes. It asserts then, and with NDEBUG, or in its tables of characters, its behaviour
// is undefined. Here its assertions throw in every build, and a character that its tables do not know is none
// of theirs.
#undef NDEBUG
#define TOML_ASSERT(condition) ((condition) ? static_cast<void>(0) : ::tesk_midi::ThrowTomlLibraryBroken())

// It comes as headers that cost seconds to compile: parse_toml.cpp alone includes this.
#define TOML_ENABLE_FORMATTERS 0
#include <toml++/impl/forward_declarations.h>

#undef TOML_UNREACHABLE
#define TOML_UNREACHABLE return false
#include <toml++/impl/unicode.h>

#undef TOML_UNREACHABLE
#define TOML_UNREACHABLE ::tesk_midi::ThrowTomlLibraryBroken()
#include <toml++/toml.h>
