#pragma once

namespace orbel::host {

// Whether messages go to a terminal on which a line may be written over: not where TERM says "dumb".
// Thread: any.
bool MessagesAreDrawnOn();

}  // namespace orbel::host
