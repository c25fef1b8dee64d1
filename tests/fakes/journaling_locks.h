#pragma once

#include <string>

// Mutexes that write to the journal when a thread takes or gives up a named lock: "+NAME" and "-NAME". Of a
// recursive lock only the first level counts.
namespace fakes::locks {

// What this thread does with its locks goes to the journal while one of these lives. Locks that are held at
// its beginning count as not held.
class Journaling {
 public:
  Journaling();
  ~Journaling();
  Journaling(const Journaling&) = delete;
  Journaling& operator=(const Journaling&) = delete;
};

}  // namespace fakes::locks
