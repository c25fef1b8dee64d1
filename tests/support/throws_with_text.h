#pragma once

#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <typeinfo>

namespace test_support {

// Whether `action` throws exactly `Error`, not a class derived from it, with exactly this text.
template <typename Error, typename Action>
testing::AssertionResult ThrowsWithText(Action action, const std::string& text) {
  try {
    action();
  } catch (const std::exception& error) {
    if (typeid(error) != typeid(Error))
      return testing::AssertionFailure() << "another class: " << error.what();
    if (error.what() != text) return testing::AssertionFailure() << "another text: " << error.what();
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << "nothing was thrown";
}

}  // namespace test_support
