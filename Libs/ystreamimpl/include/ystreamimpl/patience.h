// Patience: how long one run may yet wait, in all, for inputs that bring nothing. Each input has
// limits of its own; this one is for a document that names a thousand of them. The one of the run
// is part of ProcessState.
#pragma once

#include <algorithm>

namespace kelmora {

class Patience {
 public:
  static constexpr int kSeconds = 120;

  // What is left of `wanted` seconds.
  int Grant(int wanted) const { return std::min(wanted, left_); }
  // The seconds that an input took that was given up; those of one that came cost nothing.
  void Spend(int seconds) { left_ = std::max(0, left_ - seconds); }
  bool IsSpent() const { return left_ == 0; }

 private:
  int left_ = kSeconds;
};

}  // namespace kelmora
