#include "Sources/ob_show_control/ob_show_control.h"

bool OBShowControl::Seek(unsigned tickIndex) {
  if (tickIndex > GetEndTickIndex()) return true;
  if (ShowControl::Seek(tickIndex)) return true;
  if (!HasPendingCaesura()) return false;
  // Landed on a caesura: a running output stops by itself, otherwise the stop is made here and now.
  if (caesuraSeekCallback_()) return false;
  OnCaesuraStop();
  return false;
}
