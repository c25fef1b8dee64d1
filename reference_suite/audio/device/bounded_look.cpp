#include "reference_suite/audio/device/bounded_look.h"

#include <chrono>
#include <future>
#include <memory>
#include <system_error>
#include <thread>

namespace tesk_audio {

namespace {

constexpr auto kQuietWait = std::chrono::milliseconds(500);
constexpr auto kPatience = std::chrono::milliseconds(3'000);

using Devices = std::vector<DeviceInfo>;

// `name`: of what is looked at.
Devices LookInTime(const std::string& name, DeviceKind kind, const SayWaiting& say,
                   std::function<Devices()> look) {
  // Outlives this call when the thread does.
  const auto task = std::make_shared<std::packaged_task<Devices()>>(std::move(look));
  std::future<Devices> found = task->get_future();
  DeviceInfo none;
  none.kind = kind;
  try {
    std::thread([task] { (*task)(); }).detach();
  } catch (const std::system_error&) {
    none.problem = "There is no thread to be had for looking at " + name + ". Close other programs.";
    return {none};
  }
  if (found.wait_for(kQuietWait) == std::future_status::ready) return found.get();
  if (say) say("Waiting for " + name + " to answer ...");
  if (found.wait_for(kPatience - kQuietWait) == std::future_status::ready) return found.get();
  none.problem = "There is " + name +
                 ", but it does not answer: it hangs, or has been stopped. Start it again, "
                 "or choose another output.";
  return {none};
}

}  // namespace

DeviceInfo LookAtJackInTime(const std::string& server, const SayWaiting& say) {
  const std::string name = server.empty() ? "the JACK server" : "the JACK server \"" + server + "\"";
  return LookInTime(name, DeviceKind::Jack, say, [server] { return Devices{LookAtJack(server)}; }).front();
}

std::vector<DeviceInfo> LookAtDesktopInTime(const SayWaiting& say) {
  return LookInTime("the sound of the desktop", DeviceKind::Desktop, say, &LookAtDesktop);
}

}  // namespace tesk_audio
