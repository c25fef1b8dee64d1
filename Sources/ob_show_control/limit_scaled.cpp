#include "Sources/ob_show_control/limit_scaled.h"

void SetUnscaledAndLimitScaled(long long unscaled, tesk_audio::SampleCount* count) {
  const long long scaledBefore = count->GetScaled();
  count->SetUnscaled(unscaled);
  if (count->GetScaled() > scaledBefore) count->SetScaled(scaledBefore);
}
