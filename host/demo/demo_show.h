#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>

#include "host/demo/demo_error.h"

namespace orbel::host {

// Told before each file is made and once at the end.
struct DemoProgress {
  std::size_t done = 0;  // files
  std::size_t total = 0;
  std::string file;  // what is being made, from the folder of the show; empty at the end
};

using DemoProgressFunction = std::function<void(const DemoProgress&)>;

// Writes the demo show into `folder`, which is made if it is missing. It must be empty, or hold nothing but
// an earlier demo, which is written over. Each file appears whole under its name or not at all.
//
// Threads    the caller's; takes some seconds. `progress` may be empty; what it throws ends the writing.
// Errors     DemoError, complete sentences: a folder that holds anything else, or that cannot be written.
void WriteDemoShow(const std::filesystem::path& folder, const DemoProgressFunction& progress = {});

}  // namespace orbel::host
