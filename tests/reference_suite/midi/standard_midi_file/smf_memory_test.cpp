// What a file may cost, whatever it says of itself: less than 64 MiB, its own bytes counted in.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>

#include "reference_suite/midi/standard_midi_file/smf_limits.h"
#include "tests/reference_suite/midi/standard_midi_file/midi_bytes.h"
#include "tests/support/allocation_peak.h"
#include "tests/support/temporary_folder.h"

namespace {

using namespace midi_bytes;

constexpr std::size_t kMebibyte = std::size_t{1} << 20;
constexpr std::size_t kMost = 64 * kMebibyte;

struct CostlyFile {
  const char* name;
  std::function<Bytes()> make;
  const char* answer;  // how the refusal goes on behind "byte N: "; empty for a file that is read
};

void PrintTo(const CostlyFile& file, std::ostream* out) {
  *out << file.name;
}

class SmfMemory : public testing::TestWithParam<CostlyFile> {
 protected:
  // What is said of the file, and what reading it from the disk took at most.
  std::string Answer(std::size_t* bytes) {
    const std::filesystem::path path = folder_.Path("song.mid");
    {
      const Bytes content = GetParam().make();
      std::ofstream(path, std::ios::binary)
          .write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
    }
    const test_support::AllocationPeak peak;
    std::string answer;
    try {
      warnings_ = tesk_midi::ReadSmf(path, "song.mid").warnings;
    } catch (const tesk_midi::SmfError& error) {
      answer = error.what();
    }
    *bytes = peak.Bytes();
    return answer;
  }

  test_support::TemporaryFolder folder_;
  std::vector<std::string> warnings_;
};

TEST_P(SmfMemory, StaysBelow64MiB) {
  std::size_t bytes = 0;
  const std::string answer = Answer(&bytes);
  EXPECT_LT(bytes, kMost);
  const std::size_t size = std::filesystem::file_size(folder_.Path("song.mid"));
  EXPECT_GE(bytes, std::min(size, tesk_midi::kMaxSmfBytes)) << "so that something is counted";
  EXPECT_NE(answer.find(GetParam().answer), std::string::npos) << answer;
  EXPECT_EQ(answer.empty(), std::string(GetParam().answer).empty()) << answer;
  RecordProperty("kibibytes", static_cast<int>(bytes / 1024));
}

Bytes Filled(const Bytes& event, std::size_t headBytes) {
  return Repeated(event, (tesk_midi::kMaxSmfBytes - headBytes) / event.size());
}

// As many of one kind of event as the limits allow.
Bytes FileOf(const Bytes& event, std::size_t count) {
  return File({Chunk("MTrk", Joined({Repeated(event, count), Bytes{0, 0xFF, 0x2F, 0}}))});
}

constexpr std::size_t kEvents = tesk_midi::kMaxSmfEvents - 1;

const auto kName = [](const testing::TestParamInfo<CostlyFile>& file) {
  return std::string(file.param.name);
};
INSTANTIATE_TEST_SUITE_P(
    Malformed, SmfMemory,
    testing::Values(
        CostlyFile{"NoEndOfTrack",
                   [] {
                     return File({OpenTrack({Tempo(0, 500'000), Event(9, {0x90, 60, 1})})});
                   },
                   ""},
        CostlyFile{"NoEndOfManyTracks",
                   [] {
                     return Joined({Header(1, 256, 480), Repeated(OpenTrack({Tempo(0, 500'000)}), 256)});
                   },
                   ""},
        CostlyFile{"ATrackThatClaimsFourGigabytes",
                   [] {
                     return Joined({Header(1, 1, 480), Bytes{'M', 'T', 'r', 'k'}, Number(0xFFFFFFFF, 4)});
                   },
                   "track 1 of 4294967295 bytes where the file has 0 left"},
        CostlyFile{"AHeaderThatClaimsFourGigabytes",
                   [] {
                     return Joined({Bytes{'M', 'T', 'h', 'd'}, Number(0xFFFFFFFF, 4)});
                   },
                   "a header of 4294967295 bytes"},
        CostlyFile{"AForeignChunkThatClaimsFourGigabytes",
                   [] {
                     return Joined({Header(1, 1, 480), Bytes{'j', 'u', 'n', 'k'}, Number(0xFFFFFFFF, 4)});
                   },
                   "a chunk of 4294967295 bytes where the file has 0 left"},
        CostlyFile{"ATextThatClaims256Megabytes",
                   [] {
                     return File({Track({Bytes{0, 0xFF, 0x06, 0xFF, 0xFF, 0xFF, 0x7F}})});
                   },
                   "a meta event"},
        CostlyFile{"ASysExThatClaims256Megabytes",
                   [] {
                     return File({Track({Bytes{0, 0xF0, 0xFF, 0xFF, 0xFF, 0x7F}})});
                   },
                   "a SysEx"},
        CostlyFile{"AQuantityOfFourGigabytes",
                   [] {
                     return File({Track({Bytes{0, 0xFF, 0x06, 0x8F, 0xFF, 0xFF, 0xFF, 0x7F}})});
                   },
                   "the length of a meta event"},
        CostlyFile{"PromisesOf65535Tracks",
                   [] {
                     return Joined({Header(1, 65'535, 480), Track({Tempo(0, 500'000)})});
                   },
                   ""},
        CostlyFile{"Tracks65535",
                   [] {
                     return Joined({Header(1, 65'535, 480), Repeated(Track({}), 65'535)});
                   },
                   "more than 256 tracks"},
        CostlyFile{"ForeignChunksWithoutEnd",
                   [] {
                     return Joined({Header(1, 1, 480), Filled(Chunk("junk", {}), 14)});
                   },
                   "no track"}),
    kName);

INSTANTIATE_TEST_SUITE_P(
    AtItsLimits, SmfMemory,
    testing::Values(CostlyFile{"Tempos", [] { return FileOf(Tempo(1, 400'000), kEvents); }, ""},
                    CostlyFile{"Meters",
                               [] {
                                 return FileOf(Meta(1, 0x58, {4, 2, 24, 8}), kEvents);
                               },
                               ""},
                    CostlyFile{"Keys",
                               [] {
                                 return FileOf(Meta(1, 0x59, {0, 0}), kEvents);
                               },
                               ""},
                    CostlyFile{"KeysThatAreNone",
                               [] {
                                 return FileOf(Meta(1, 0x59, {99, 0}), kEvents);
                               },
                               ""},
                    CostlyFile{
                        "Markers",
                        [] { return FileOf(Meta(1, 0x06, Bytes(120, 'M')), tesk_midi::kMaxSmfMarkers); }, ""},
                    CostlyFile{"OneLongMarker",
                               [] {
                                 const std::uint8_t length[] = {0x87, 0xFF, 0xFF, 0x00};  // 16,777,088
                                 const Bytes head{0, 0xFF, 0x06, length[0], length[1], length[2], length[3]};
                                 return File({Track({head, Bytes(16'777'088, 'M')})});
                               },
                               ""},
                    CostlyFile{"BytesWithoutEnd", [] { return Bytes(2 * tesk_midi::kMaxSmfBytes, 'M'); },
                               "more than 16777216 bytes"}),
    kName);

}  // namespace
