#pragma once

#include <memory>

#include "exc/condition/condition.h"
#include "exc/lock/lockable.h"

// Which loader threads are inside a player, so that its destructor can wait until the last one is out. A
// thread that has given up the player's lock is still on its way back through it; only an object of its own,
// which the visitors keep alive, can tell that it has left.
//
// Threads    LOADER comes and goes; whoever destroys the player waits.
// Locks      its own, taken with nothing else held.
class LoadersInside : public exc::Lockable {
 public:
  LoadersInside();
  ~LoadersInside() override;

  // Inside while it lives.
  class Visit {
   public:
    explicit Visit(std::shared_ptr<LoadersInside> place);
    ~Visit();
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

   private:
    const std::shared_ptr<LoadersInside> place_;
  };

  void WaitUntilNone();

 private:
  void Count_(int change);

  int visits_ EXC_GUARDED_BY(this) = 0;
  exc::Condition left_;
};
