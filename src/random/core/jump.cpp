// SPDX-License-Identifier: Apache-2.0
// g(T) s from the top of g: by Horner's rule, or seven coefficients at a time with a table of q(T) s for all
// q of degree below seven.
#include "random/core/jump.hpp"

#include "platform/scratch.hpp"

namespace {
using namespace tmk::rng;
using tmk::scratch;

struct linear_generator {
  zero_state zero;
  combine_states add, copy_to_work;
  step_state step;
  combine_states copy_back;
  absorb_skip absorb;
  int32_t words, degree, state_bytes, terms;
  const int32_t* polynomial;
};

// g of a jump, and the work state.
class jump {
 public:
  jump(const linear_generator& generator, VtsStreamHandle stream)
      : generator_(generator),
        stream_(stream),
        g_(2 * static_cast<size_t>(generator.words)),
        work_(static_cast<size_t>(generator.state_bytes)) {}

  int32_t prepare(uint64_t nskip) {
    if (!g_ || !work_) return VTS_STATUS_NO_MEMORY;
    return x_pow_nskip_mod_cpoly(nskip, generator_.degree, generator_.terms, generator_.polynomial,
                                 generator_.words, g_.get());
  }

  VtsStreamHandle work() const { return reinterpret_cast<VtsStreamHandle>(work_.get()); }
  int coefficient(int32_t i) const { return static_cast<int>(g_.get()[i / 32] >> i % 32 & 1); }
  int32_t leading() const {
    int32_t i = generator_.degree - 1;
    while (i > 0 && coefficient(i) == 0) --i;
    return i;
  }

  // The work state starts as the stream: the leading coefficient. Every other one is a step, and an addition
  // where it is set.
  void run_horner(int32_t top) const {
    generator_.copy_to_work(work(), stream_, 0);
    run_by_bits(top - 1);
  }

  void run_by_bits(int32_t from) const {
    for (int32_t i = from; i >= 0; --i) {
      generator_.step(work());
      if (coefficient(i)) generator_.add(work(), stream_, 0);
    }
  }

  void run_by_windows(int32_t top, unsigned char* table) const {
    fill(table);
    int32_t left = top + 1;  // coefficients to go
    const auto next_window = [&] {
      int bits = 0;
      for (int k = 0; k < window; ++k) bits = 2 * bits + coefficient(--left);
      return bits;
    };
    generator_.copy_to_work(work(), entry(table, next_window()), 0);
    while (left >= window) {
      for (int k = 0; k < window; ++k) generator_.step(work());
      const int bits = next_window();
      if (bits != 0) generator_.add(work(), entry(table, bits), 0);
    }
    run_by_bits(left - 1);
  }

  void finish(int32_t offset) const { generator_.copy_back(stream_, work(), offset); }

  static constexpr int window = 7, entries = 1 << window;

 private:
  VtsStreamHandle entry(unsigned char* table, int q) const {
    return reinterpret_cast<VtsStreamHandle>(table + static_cast<ptrdiff_t>(q) * generator_.state_bytes);
  }

  // Powers of T by steps, every other entry by one addition.
  void fill(unsigned char* table) const {
    generator_.zero(entry(table, 0));
    generator_.copy_to_work(entry(table, 1), stream_, 0);
    for (int q = 2; q < entries; ++q) {
      const int rest = q & (q - 1);
      generator_.copy_to_work(entry(table, q), entry(table, rest == 0 ? q / 2 : rest), 0);
      if (rest == 0)
        generator_.step(entry(table, q));
      else
        generator_.add(entry(table, q), entry(table, q - rest), 0);
    }
  }

  const linear_generator& generator_;
  VtsStreamHandle stream_;
  scratch<uint32_t> g_;
  scratch<unsigned char> work_;
};

int32_t skip_by_horner(const linear_generator& generator, VtsStreamHandle stream, uint64_t nskip) {
  int32_t offset = 0;
  if (nskip == 0 || generator.absorb(stream, &nskip, &offset) == 0) return VTS_STATUS_OK;
  jump j(generator, stream);
  const int32_t status = j.prepare(nskip);
  if (status != VTS_STATUS_OK) return status;
  j.run_horner(j.leading());
  j.finish(offset);
  return VTS_STATUS_OK;
}

int32_t skip_by_windows(const linear_generator& generator, VtsStreamHandle stream, uint64_t nskip) {
  int32_t offset = 0;
  if (nskip == 0 || generator.absorb(stream, &nskip, &offset) == 0) return VTS_STATUS_OK;
  jump j(generator, stream);
  const scratch<unsigned char> table(size_t{jump::entries} * static_cast<size_t>(generator.state_bytes));
  if (!table) return VTS_STATUS_NO_MEMORY;
  const int32_t status = j.prepare(nskip);
  if (status != VTS_STATUS_OK) return status;
  const int32_t top = j.leading();
  if (top + 1 < jump::window)
    j.run_horner(top);
  else
    j.run_by_windows(top, table.get());
  j.finish(offset);
  return VTS_STATUS_OK;
}

constexpr uint64_t whole(uint32_t low, uint32_t high) { return uint64_t{high} << 32 | low; }

}  // namespace

int32_t __vts_SkipAheadHorner(VtsStreamHandle stream, zero_state zero, combine_states add,
                              combine_states copy_to_work, step_state step, combine_states copy_back,
                              absorb_skip absorb, uint32_t nskip_low, uint32_t nskip_high, int32_t words,
                              int32_t degree, int32_t state_bytes, int32_t terms, const int32_t* polynomial) {
  return skip_by_horner(
      {zero, add, copy_to_work, step, copy_back, absorb, words, degree, state_bytes, terms, polynomial},
      stream, whole(nskip_low, nskip_high));
}

int32_t __vts_SkipAheadSWin(VtsStreamHandle stream, zero_state zero, combine_states add,
                            combine_states copy_to_work, step_state step, combine_states copy_back,
                            absorb_skip absorb, uint32_t nskip_low, uint32_t nskip_high, int32_t words,
                            int32_t degree, int32_t state_bytes, int32_t terms, const int32_t* polynomial) {
  return skip_by_windows(
      {zero, add, copy_to_work, step, copy_back, absorb, words, degree, state_bytes, terms, polynomial},
      stream, whole(nskip_low, nskip_high));
}
