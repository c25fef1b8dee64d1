#pragma once

namespace tesk_audio {

class PartFile;

// Gives every page of an Ogg stream one fixed serial number: the library draws one by chance, and the same
// frames are to give the same bytes. Throws SoundFileError for bytes that are no Ogg pages.
void FixOggSerial(PartFile& file);

}  // namespace tesk_audio
