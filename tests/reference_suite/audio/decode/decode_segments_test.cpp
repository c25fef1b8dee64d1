// Joining segments, with decoders that disagree, deliver too much or too little, or fail.
#include "reference_suite/audio/decode/decode_segments.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/resource.h>

#include <atomic>
#include <functional>
#include <limits>
#include <new>

#include "reference_suite/audio/decode/decoding_places.h"
#include "reference_suite/audio/decode/decoding_thread.h"
#include "suite/audio/errors.h"
#include "tests/reference_suite/audio/support/sound_files.h"

namespace {

using tesk_audio::AudioDecoder;
using tesk_audio::DecodedFormat;

constexpr long long kFrames = 4'000'000;
constexpr float kFirst = 1.0F;  // what the decoder from the start delivers
constexpr float kOther = 0.5F;  // what another delivers that disagrees

// One song as two decoders see it.
struct Plan {
  float other = kFirst;             // sample value of the decoders that begin elsewhere
  long long otherFrames = kFrames;  // where they end
  long long promised = kFrames;     // the length that they see in the header
  long long failsAt = -1;           // where they fail
  long long firstFailsAt = -1;      // the same for the decoder from the start
  bool seeks = true;
  long long oddFrom = kFrames * 2;  // from where on decoders say that something is odd
  std::function<void()> open = [] {};
};

class PlannedDecoder : public AudioDecoder {
 public:
  PlannedDecoder(const Plan& plan, bool isFirst) : plan_(plan), isFirst_(isFirst) {
    format_ = {"WAV", 48000.0, 1, isFirst ? kFrames : plan.promised, false};
  }
  const DecodedFormat& Format() const override { return format_; }
  void Inspect() override {}
  std::size_t Read(float* frames, std::size_t count) override {
    const long long end = isFirst_ ? kFrames : plan_.otherFrames;
    const long long part = std::clamp(end - at_, 0LL, static_cast<long long>(count));
    const long long failsAt = isFirst_ ? plan_.firstFailsAt : plan_.failsAt;
    if (failsAt >= 0 && at_ + part > failsAt) throw tesk_audio::TESKAudioError("cannot be read");
    std::fill_n(frames, part, isFirst_ ? kFirst : plan_.other);
    at_ += part;
    delivered_ += part;
    return static_cast<std::size_t>(part);
  }
  bool CanBeShared() const override { return at_ < plan_.oddFrom; }
  bool BeginAt(long long frame) override {
    at_ = frame;
    return plan_.seeks;
  }
  void CountAsDelivered(long long count) override { delivered_ += count; }
  std::vector<std::string> Warnings() const override { return {}; }

  long long Delivered() const { return delivered_; }
  long long At() const { return at_; }

 private:
  const Plan& plan_;
  const bool isFirst_;
  DecodedFormat format_;
  long long at_ = 0;
  long long delivered_ = 0;
};

struct Result {
  long long frames = 0;
  long long delivered = 0;  // in the count of the decoder from the start
  long long decodedAlone = 0;
  float last = 0.0F;
};

Result DecodePlan(const Plan& plan, int cores = 2) {
  tesk_audio::DecodingPlaces places(cores);
  tesk_audio::DecodeRequest request;
  request.shownPath = "song";
  request.availableMemoryBytes = [] { return std::numeric_limits<unsigned long long>::max(); };
  request.places = &places;
  request.openAgain = [&plan] {
    plan.open();
    auto opened = std::make_unique<tesk_audio::OpenedAudio>();
    opened->decoder = std::make_unique<PlannedDecoder>(plan, false);
    return opened;
  };
  PlannedDecoder decoder(plan, true);
  tesk_audio::Intake intake(decoder.Format(), request);
  DecodeAll(decoder, intake, request);
  Result result{intake.Taken(), decoder.Delivered(), decoder.At(), 0.0F};
  EXPECT_EQ(intake.Store().FrameCount(), result.frames);
  intake.Store().Read(result.frames - 1, 1, &result.last);
  return result;
}

void ExpectAlone(const Plan& plan, const char* what) {
  const Result result = DecodePlan(plan);
  EXPECT_EQ(result.frames, kFrames) << what;
  EXPECT_EQ(result.delivered, kFrames) << what;
  EXPECT_EQ(result.decodedAlone, kFrames) << what;
  EXPECT_EQ(result.last, kFirst) << what;
}

TEST(DecodeSegments, HalfIsDecodedElsewhere) {
  for (const int cores : {2, 3, 7}) {
    const Result result = DecodePlan(Plan(), cores);
    EXPECT_EQ(result.frames, kFrames);
    EXPECT_EQ(result.delivered, kFrames);
    EXPECT_LT(result.decodedAlone, kFrames * 2 / cores);
  }
}

TEST(DecodeSegments, NeighboursThatDisagreeAreNotJoined) {
  Plan plan;
  plan.other = kOther;
  ExpectAlone(plan, "another sample");
}

TEST(DecodeSegments, ASegmentThatIsNotAsLongAsItShouldIsNotUsed) {
  Plan plan;
  plan.otherFrames = kFrames - 1;
  ExpectAlone(plan, "a frame less");
  plan.otherFrames = kFrames + 1;
  ExpectAlone(plan, "a frame more");
  plan = Plan();
  plan.promised = kFrames - 1;
  ExpectAlone(plan, "another promise");
}

TEST(DecodeSegments, ASegmentThatFailsIsNotUsed) {
  Plan plan;
  plan.failsAt = kFrames - 10;
  ExpectAlone(plan, "a read error");
  plan = Plan();
  plan.seeks = false;
  ExpectAlone(plan, "does not seek");
  plan = Plan();
  plan.open = [] { throw std::bad_alloc(); };
  ExpectAlone(plan, "no memory");
  plan.open = [] { throw tesk_audio::AudioSampleContentError("replaced"); };
  ExpectAlone(plan, "no audio any more");
}

TEST(DecodeSegments, OddFilesGoFromFirstToLast) {
  Plan plan;
  for (const long long from : {0LL, 1000LL, kFrames / 2 + 100, kFrames - 1}) {
    plan.oddFrom = from;
    ExpectAlone(plan, "odd");
  }
}

TEST(DecodeSegments, TheFirstDecodersErrorIsTheFiles) {
  Plan plan;
  plan.firstFailsAt = 100'000;
  EXPECT_THROW(DecodePlan(plan), tesk_audio::TESKAudioError);
  plan.failsAt = kFrames - 10;
  plan.firstFailsAt = kFrames - 10;
  EXPECT_THROW(DecodePlan(plan), tesk_audio::TESKAudioError);
}

// Scheduling of the calling thread: policy and nice value.
std::pair<int, int> Scheduling() {
  return {::sched_getscheduler(0), ::getpriority(PRIO_PROCESS, 0)};
}

TEST(DecodingThread, HasTheWeightOfItsPlacesWhenThatChangesToo) {
  const auto here = Scheduling();
  tesk_audio::DecodingPlaces places(2, 11);
  std::pair<int, int> before;
  std::pair<int, int> after;
  tesk_audio::DecodingThread thread(
      [&] {
        before = Scheduling();
        const tesk_audio::DecodingPlaces earlier(2, 10);
        tesk_audio::DecodingThread::FollowPlaces();
        after = Scheduling();
      },
      places);
  ASSERT_TRUE(thread.Start());
  thread.Join();
  EXPECT_EQ(before, std::pair(SCHED_OTHER, std::min(19, here.second + 5)));
  EXPECT_EQ(after, std::pair(SCHED_OTHER, std::min(19, here.second + 15)));
  tesk_audio::DecodingThread::FollowPlaces();
  EXPECT_EQ(Scheduling(), here);
}

TEST(DecodingThread, IsNotRealTimeWhenItsCreatorIs) {
  const sched_param realTime{10};
  const sched_param usual{0};
  // Where real-time is not granted the creator stays what it is, and so must the thread.
  ::sched_setscheduler(0, SCHED_FIFO, &realTime);
  const tesk_audio::DecodingPlaces places(1);
  std::pair<int, int> found;
  tesk_audio::DecodingThread thread([&found] { found = Scheduling(); }, places);
  EXPECT_TRUE(thread.Start());
  thread.Join();
  ::sched_setscheduler(0, SCHED_OTHER, &usual);
  EXPECT_EQ(found, std::pair(SCHED_OTHER, places.NiceValue()));
}

}  // namespace
