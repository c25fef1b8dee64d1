#pragma once

#include <stdexcept>
#include <streambuf>
#include <string>
#include <thread>
#include <vector>

// Keeps every write to a stream as a piece of its own and counts flushes.
class CountingBuffer : public std::streambuf {
 public:
  std::vector<std::string> writes;
  int flushes = 0;

 protected:
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    writes.emplace_back(text, static_cast<std::size_t>(size));
    return size;
  }
  int_type overflow(int_type c) override {
    if (!traits_type::eq_int_type(c, traits_type::eof()))
      writes.emplace_back(1, traits_type::to_char_type(c));
    return traits_type::not_eof(c);
  }
  int sync() override {
    ++flushes;
    return 0;
  }
};

// Lets other threads run in the middle of what it takes.
class SlowBuffer : public std::streambuf {
 public:
  std::string text;

 protected:
  std::streamsize xsputn(const char* piece, std::streamsize size) override {
    for (std::streamsize i = 0; i < size; ++i) {
      text += piece[i];
      if (i % 20 == 10) std::this_thread::yield();
    }
    return size;
  }
};

// A console that is gone.
class FailingBuffer : public std::streambuf {
 protected:
  std::streamsize xsputn(const char* /*text*/, std::streamsize /*size*/) override {
    throw std::runtime_error("console is gone");
  }
};
