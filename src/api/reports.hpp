// Bad elements: taken from the kernels as they run, handed on in order when the call has ended.
#pragma once

#include <vector>

#include "api/rows.hpp"

namespace tmk::detail {

struct report {
  std::size_t index;
  int32_t code;
  std::complex<double> a1, a2, r1, r2;
};

struct part_reports {
  std::vector<report> kept;
  int32_t last_status = 0;
  bool out_of_memory = false;
};

// While it lives, reports of this thread's kernels go here and nowhere else. The thread's mode, callback and
// status are put back, the index base is cleared.
class capture {
 public:
  // `mode` is the mode word of the thread that made the call; without `keep` only the last status is noted.
  capture(const row& f, part_reports& reports, uint32_t mode, bool keep);
  ~capture();
  capture(const capture&) = delete;
  capture& operator=(const capture&) = delete;

  // The piece whose kernel runs next: its first element in the whole call, and its arguments.
  void begin_piece(std::size_t first, const std::byte* a) {
    first_ = first;
    a_ = a;
  }

 private:
  static int32_t take(VtmErrorContext* context);
  void take(const VtmErrorContext& context);

  const row& f_;
  part_reports& reports_;
  bool keep_;
  std::size_t first_ = 0;
  const std::byte* a_ = nullptr;
  capture* outer_;
  uint32_t mode_;
  int32_t status_;
  VtmErrorCallback callback_;
};

// Makes kernels report element i of `a` as first + i; callbacks count in 32 bits.
void set_index_base(const row& f, const std::byte* a, std::size_t first);

// Hands a report to the scope and stores what it made of the results.
void hand_to_scope(error_scope& scope, const row& f, const operands& o, const report& bad);

// Hands a report to the C interface's channel, as the kernel would have done on this thread.
void hand_to_channel(const row& f, const operands& o, const report& bad);

}  // namespace tmk::detail
