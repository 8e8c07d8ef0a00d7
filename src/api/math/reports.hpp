// SPDX-License-Identifier: Apache-2.0
// Bad elements: taken from the kernels as they run, handed on in order when the call has ended.
#pragma once

#include <vector>

#include "api/math/function_rows.hpp"

namespace tmk::detail {

struct report {
  std::size_t index;
  int32_t code;
  std::complex<double> a1, a2, r1, r2;
};

// The statuses of all reports of a part.
struct reported_statuses {
  int32_t last = 0;
  uint32_t seen = 0;  // a bit (1 << status) for each that occurred
  void add(const reported_statuses& later) {
    if (later.last != 0) last = later.last;
    seen |= later.seen;
  }
};

struct part_reports {
  std::vector<report> kept;
  reported_statuses statuses;
  bool out_of_memory = false;
};

// The C interface's state of the thread that computes a part: errors as `error_mode` sets, subnormals as in
// the mode of the thread that made the call, and statuses of this part alone. Restores them at its end.
class part_channel {
 public:
  part_channel(uint32_t error_mode, uint32_t callers_mode);
  ~part_channel();
  part_channel(const part_channel&) = delete;
  part_channel& operator=(const part_channel&) = delete;

  reported_statuses statuses() const;

 private:
  uint32_t mode_;
  VtmErrorCallback callback_;
  reported_statuses found_;
};

// Adds statuses to the thread's, and does nothing else.
void keep(const reported_statuses& statuses);

// During its life, reports of this thread's kernels come here and nowhere else.
class capture {
 public:
  capture(const function_row& f, part_reports& reports, bool first_only);
  ~capture();
  capture(const capture&) = delete;
  capture& operator=(const capture&) = delete;

  // The place in the whole call of the piece whose kernel runs next.
  void begin_piece(std::size_t first) { first_ = first; }

 private:
  static int32_t take(VtmErrorContext* context);
  void take(const VtmErrorContext& context);

  const function_row& f_;
  part_reports& reports_;
  bool first_only_;
  std::size_t first_ = 0;
  capture* outer_;
  VtmErrorCallback callback_;
};

// Makes kernels report element i of `a` as first + i; callbacks count in 32 bits.
void set_index_base(const function_row& f, const std::byte* a, std::size_t first);

// Hands a report to the scope and stores what it made of the element's results; r2 is null where f has one.
void hand_to_scope(error_scope& scope, const function_row& f, std::byte* r, std::byte* r2, const report& bad);

}  // namespace tmk::detail
