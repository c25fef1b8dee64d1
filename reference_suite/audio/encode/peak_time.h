#pragma once

namespace tesk_audio {

class PartFile;

// Sets the time of day in a WAV file's PEAK chunk to 0, so that the same frames give the same bytes. The
// encoder cannot be told to leave the chunk out of a file that may grow past 4 GiB. A file without one is
// left as it is.
void ClearPeakTime(PartFile& file);

}  // namespace tesk_audio
