#pragma once

namespace orbel::host {

// Puts /dev/null in the place of each of the standard streams that the program was started without: the next
// file that is opened, which may be a recording, would become that stream otherwise, and get what is written
// there. It cannot be read where something would be read, nor written where something would be written, so
// that results are still known to be lost. Call it before anything else is opened.
//
// False when there is no /dev/null to put there.
bool FillClosedStreams();

}  // namespace orbel::host
