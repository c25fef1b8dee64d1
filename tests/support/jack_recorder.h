#pragma once

#include <jack/jack.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace test_support {

// A client that keeps what arrives at its ports in_1, in_2, ..., from the first frame that is not silent on
// the first of them.
// Each silence on that one, however long, is kept as a single frame.
class JackRecorder {
 public:
  // Room for that many frames; what comes after them is lost.
  JackRecorder(const std::string& server, std::size_t frames, unsigned ports = 1,
               const std::string& name = "recorder");
  ~JackRecorder();
  JackRecorder(const JackRecorder&) = delete;
  JackRecorder& operator=(const JackRecorder&) = delete;

  // Everything so far; port 0 is in_1.
  std::vector<float> GetFrames(unsigned port = 0) const;
  std::size_t GetCount() const { return count_; }
  bool IsFull() const { return count_ == room_; }
  // How many frames there are, and when the period of the last came, in seconds of the monotonic clock.
  struct Newest {
    std::size_t count = 0;
    double seconds = 0.0;
  };
  Newest GetNewest() const;
  // Frames of all silences between the first and the last sound.
  long long GetSilence() const { return silence_; }
  // From now on the next frame that is not silent is the first.
  void Restart() { restart_ = true; }

  // Without a clock, as fast as the clients are. Returns when the server has switched, and every client has
  // been through a period since.
  void SetFreewheel(bool freewheels);
  // The ports that play to in_1.
  std::vector<std::string> GetSources(unsigned port = 0) const;
  void Disconnect(const std::string& source, unsigned port = 0);
  void Connect(const std::string& source, unsigned port = 0);
  // Of others.
  void DisconnectPorts(const std::string& source, const std::string& target);
  void ConnectPorts(const std::string& source, const std::string& target);
  bool HasPort(const std::string& name) const;

 private:
  void Process_(jack_nframes_t frames);

  std::size_t room_;
  std::vector<std::unique_ptr<float[]>> kept_;  // memory that is not touched before it is needed
  std::atomic<std::size_t> count_{0};
  std::atomic<long long> periods_{0};
  std::atomic<unsigned> changes_{0};  // odd while count_ and newestAt_ change
  std::atomic<double> newestAt_{0.0};
  std::atomic<long long> silence_{0};
  long long lastSilence_ = 0;  // the process thread's: behind the last sound
  std::atomic<bool> restart_{false};
  std::atomic<bool> freewheels_{false};
  std::vector<jack_port_t*> ports_;
  std::vector<const float*> inputs_;  // the process thread's
  jack_client_t* client_ = nullptr;
};

}  // namespace test_support
