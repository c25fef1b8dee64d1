#include "host/demo/ogg_vorbis.h"

#include <vorbis/vorbisenc.h>

#include <algorithm>
#include <utility>

#include "host/demo/demo_error.h"

namespace orbel::host::demo {

namespace {

constexpr float kQuality = 0.5F;      // about 160 kbit/s
constexpr std::size_t kBlock = 1024;  // frames handed over at a time

void Require(int result, const char* what) {
  if (result != 0) {
    throw DemoError(std::string("The Ogg Vorbis encoder failed (") + what + ", " + std::to_string(result) +
                    "); see that libvorbis is installed whole.");
  }
}

struct Setup {
  vorbis_info info;

  Setup() {
    vorbis_info_init(&info);
    const int result = vorbis_encode_init_vbr(&info, 2, kSampleRate, kQuality);
    if (result != 0) vorbis_info_clear(&info);
    Require(result, "settings");
  }
  ~Setup() { vorbis_info_clear(&info); }
  Setup(const Setup&) = delete;
  Setup& operator=(const Setup&) = delete;
};

struct Comments {
  vorbis_comment comment;

  explicit Comments(const std::string& title) {
    vorbis_comment_init(&comment);
    vorbis_comment_add_tag(&comment, "TITLE", title.c_str());
  }
  ~Comments() { vorbis_comment_clear(&comment); }
  Comments(const Comments&) = delete;
  Comments& operator=(const Comments&) = delete;
};

struct Analysis {
  vorbis_dsp_state state;
  vorbis_block block;

  explicit Analysis(vorbis_info& info) {
    vorbis_analysis_init(&state, &info);
    vorbis_block_init(&state, &block);
  }
  ~Analysis() {
    vorbis_block_clear(&block);
    vorbis_dsp_clear(&state);
  }
  Analysis(const Analysis&) = delete;
  Analysis& operator=(const Analysis&) = delete;
};

// Pages of one logical stream, collected.
class Pages {
 public:
  explicit Pages(std::uint32_t serial) {
    Require(ogg_stream_init(&stream_, static_cast<int>(serial)), "stream");
  }
  ~Pages() { ogg_stream_clear(&stream_); }
  Pages(const Pages&) = delete;
  Pages& operator=(const Pages&) = delete;

  void Put(ogg_packet& packet) { Require(ogg_stream_packetin(&stream_, &packet), "packet"); }

  // Moves what is complete into the file; all of it when `everything`.
  void Collect(bool everything) {
    ogg_page page;
    while ((everything ? ogg_stream_flush(&stream_, &page) : ogg_stream_pageout(&stream_, &page)) != 0) {
      bytes_.insert(bytes_.end(), page.header, page.header + page.header_len);
      bytes_.insert(bytes_.end(), page.body, page.body + page.body_len);
    }
  }

  std::vector<std::uint8_t> Take() { return std::move(bytes_); }

 private:
  ogg_stream_state stream_;
  std::vector<std::uint8_t> bytes_;
};

void WriteHeaders(Analysis& analysis, const std::string& title, Pages& pages) {
  Comments comments(title);
  ogg_packet identification;
  ogg_packet comment;
  ogg_packet codebooks;
  Require(
      vorbis_analysis_headerout(&analysis.state, &comments.comment, &identification, &comment, &codebooks),
      "headers");
  pages.Put(identification);
  pages.Put(comment);
  pages.Put(codebooks);
  pages.Collect(true);  // the audio begins on a page of its own
}

void DrainBlocks(Analysis& analysis, Pages& pages) {
  while (vorbis_analysis_blockout(&analysis.state, &analysis.block) == 1) {
    Require(vorbis_analysis(&analysis.block, nullptr), "analysis");
    Require(vorbis_bitrate_addblock(&analysis.block), "bit rate");
    ogg_packet packet;
    while (vorbis_bitrate_flushpacket(&analysis.state, &packet) != 0) pages.Put(packet);
    pages.Collect(false);
  }
}

}  // namespace

std::vector<std::uint8_t> EncodeOggVorbis(const StereoSound& sound, const OggStream& stream) {
  Setup setup;
  Analysis analysis(setup.info);
  Pages pages(stream.serial);
  WriteHeaders(analysis, stream.title, pages);
  for (std::size_t start = 0; start < sound.FrameCount(); start += kBlock) {
    const std::size_t count = std::min(kBlock, sound.FrameCount() - start);
    float** buffer = vorbis_analysis_buffer(&analysis.state, static_cast<int>(count));
    std::copy_n(sound.left.data() + start, count, buffer[0]);
    std::copy_n(sound.right.data() + start, count, buffer[1]);
    Require(vorbis_analysis_wrote(&analysis.state, static_cast<int>(count)), "samples");
    DrainBlocks(analysis, pages);
  }
  Require(vorbis_analysis_wrote(&analysis.state, 0), "end");
  DrainBlocks(analysis, pages);
  pages.Collect(true);
  return pages.Take();
}

}  // namespace orbel::host::demo
