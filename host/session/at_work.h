#pragma once

#include <string>
#include <string_view>

namespace orbel::host {

// What the program is busy with, for its last words when it has run out of memory: noted while there is some,
// read without taking any.
// Threads    HOST.

// The folder of a show, and no song yet.
void NoteShow(const std::string& path) noexcept;
// A song of it and the file that is read for it, relative to the show folder; an empty number: none.
void NoteSong(const std::string& number, const std::string& file) noexcept;
// "SHOW" or "SHOW: song 2 (data/2 Polka.obd)"; empty before there is a show. Holds until the next note.
std::string_view AtWork() noexcept;

// A song that is at work while this lives, and stays noted when an exception ends it.
class AtSong {
 public:
  AtSong(const std::string& number, const std::string& file) noexcept;
  ~AtSong();
  AtSong(const AtSong&) = delete;
  AtSong& operator=(const AtSong&) = delete;

 private:
  const int exceptions_;
};

}  // namespace orbel::host
