#pragma once

#include <exception>
#include <string>

namespace orbel::host {

// Whether an error says that the system refused a thread or memory: the same may be granted a moment later.
// Threads    ANY.
bool IsRefusalOfTheMoment(const std::exception& error);

// Whether that was a thread, and not memory.
bool IsRefusalOfAThread(const std::exception& error);

// What it says; of a want of memory, which has no words of its own, ours.
std::string InWords(const std::exception& error);

// What it was, as an operator reads it.
std::string WhatWasRefused(const std::exception& error);

// The same as the reason why a show is not played, with what to do about it.
std::string WhyNotPlayed(const std::exception& error);

}  // namespace orbel::host
