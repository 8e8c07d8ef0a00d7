// SPDX-License-Identifier: Apache-2.0
// A block without some of its elements: the runs between them move together, in place.
#pragma once

#include <algorithm>
#include <cstdint>

namespace tmk::rng {

template <class T>
class removal {
 public:
  explicit removal(T* r) : r_(r) {}

  // Elements at to at + count - 1 go; those of the next call are after these.
  void without(int32_t at, int32_t count) {
    move_up_to(at);
    from_ = at + count;
  }
  // How many of n are left.
  int32_t finish(int32_t n) {
    if (from_ < n) move_up_to(n);  // the last to go may be beyond
    return kept_;
  }

 private:
  void move_up_to(int32_t end) {
    if (from_ != kept_) std::copy(r_ + from_, r_ + end, r_ + kept_);
    kept_ += end - from_;
    from_ = end;
  }

  T* r_;
  int32_t kept_ = 0, from_ = 0;
};

}  // namespace tmk::rng
