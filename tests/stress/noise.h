#pragma once

#include <map>
#include <mutex>
#include <streambuf>
#include <string>

namespace stress {

// Takes what the program logs and writes to the console while it lives, and counts lines that differ in
// nothing but numbers and names in quotes as one. Threads: ANY.
class Noise {
 public:
  Noise();
  ~Noise();
  Noise(const Noise&) = delete;
  Noise& operator=(const Noise&) = delete;

  std::map<std::string, int> Logged();
  std::map<std::string, int> Written();

 private:
  class Lines : public std::streambuf {
   public:
    explicit Lines(Noise* noise) : noise_(noise) {}

   protected:
    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* text, std::streamsize count) override;

   private:
    void Put_(char character);

    Noise* noise_;
    std::string line_;
  };

  void Count_(std::map<std::string, int>* lines, const std::string& line);

  std::mutex mutex_;
  std::map<std::string, int> logged_;
  std::map<std::string, int> written_;
  Lines console_;
  std::streambuf* before_;
};

}  // namespace stress
