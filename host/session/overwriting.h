#pragma once

namespace orbel::host {

struct RenderOptions;

// What a render writes takes the place of a file of that name. Throws Failure (wrong usage) when that would
// be a part of the show, the script, or the other file that it writes.
void RequireNothingIsOverwritten(const RenderOptions& options);

}  // namespace orbel::host
