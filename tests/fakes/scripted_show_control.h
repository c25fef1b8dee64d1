#pragma once

#include <functional>
#include <string>
#include <vector>

// The base of show controls, reduced to a position and to answers that a test gives. Songs are those of the
// show data, in running order. What it is told goes to the journal as "control.OPERATION". Threads: ANY.
namespace fakes::show_control {

// Position 0, every answer the usual one: moves happen, nothing is skipped, no caesura, no fermata.
void Reset();

void SetLastSeekTickIndex(unsigned tickIndex);
// What Seek and FullReset answer: true means that nothing moved.
void AnswerSeek(bool nothingMoved);
void AnswerFullReset(bool nothingMoved);
void SetSeekLeft(unsigned tickIndex);
void SetSeekRight(unsigned tickIndex);
// GetSeekLeft or GetSeekRight throw std::out_of_range.
void FailSeekLeft(const std::string& text);
void FailSeekRight(const std::string& text);
void SetFermataCanceled(bool canceled);
void SetHasPendingCaesura(bool pending);
// The caesura that lies ahead from the next load of a song on.
void SetNextCaesura(unsigned tickIndex);
void SetCut(unsigned from, unsigned target);
void Skip(const std::string& songNumber);
void SkipNothing();
// Called from within LoadSong and from within FullReset, on the thread that calls them.
void OnLoadSong(std::function<void()> hook);
void OnFullReset(std::function<void()> hook);
// Called from within Seek.
void OnSeek(std::function<void()> hook);
// Called from within GetSongAfter and GetSongBefore.
void OnSongQuery(std::function<void()> hook);
// Called from within GetLastSeekTickIndex.
void OnLastSeekQuery(std::function<void()> hook);

}  // namespace fakes::show_control
