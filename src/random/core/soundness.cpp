// SPDX-License-Identifier: Apache-2.0
// States from outside: a draw relies on positions within arrays alone; every value of any other word is
// valid.
#include <iterator>

#include "random/core/image.hpp"
#include "random/core/records.hpp"
#include "random/core/registry.hpp"

namespace {
using namespace tmk::rng;

bool r250_is_sound(VtsStreamHandle stream) {
  const auto& s = state_of<r250_state>(stream);
  return s.index < 250 && s.lagged < 250;
}

bool sfmt19937_is_sound(VtsStreamHandle stream) {
  const auto& s = state_of<sfmt19937_state>(stream);
  return s.index <= 624 && s.index % 4 == 0 && s.tail_position >= 0 && s.tail_position <= s.tail_end &&
         s.tail_end <= 3;
}

template <class State>
bool sequence_is_sound(VtsStreamHandle stream) {
  const auto& s = state_of<State>(stream);
  return s.dimensions >= 1 && s.dimensions <= std::size(s.x) && s.component < s.dimensions &&
         (s.selected < s.dimensions || s.selected == UINT32_MAX);
}

// For states whose one position may be past the last element.
template <class State, uint32_t Size>
bool index_is_sound(VtsStreamHandle stream) {
  return state_of<State>(stream).index <= Size;
}

constexpr struct {
  VtsInitStream owner;
  bool (*is_sound)(VtsStreamHandle);
} states_with_positions[] = {
    {__vtsBRngR250InitStream, r250_is_sound},
    {__vtsBRngSobolInitStream, sequence_is_sound<sobol_state>},
    {__vtsBRngNiederrInitStream, sequence_is_sound<niederr_state>},
    {__vtsBRngMT19937InitStream, index_is_sound<mt19937_state, 624>},
    {__vtsBRngMT2203InitStream, index_is_sound<mt2203_state, 69>},
    {__vtsBRngSFMT19937InitStream, sfmt19937_is_sound},
    {__vtsBRngARS5InitStream, index_is_sound<ars5_state, 4>},
    {__vtsBRngPHILOX4X32X10InitStream, index_is_sound<philox_state, 4>},
};

}  // namespace

bool tmk::rng::state_is_sound(VtsStreamHandle stream) {
  for (const auto& state : states_with_positions)
    if (state.owner == record_of(stream).initStream) return state.is_sound(stream);
  return true;
}

bool tmk::rng::state_holds_addresses(const VtsBrngProperties& record) {
  return record.initStream == __vtsBRngiAbstractInitStream ||
         record.initStream == __vtsBRngdAbstractInitStream ||
         record.initStream == __vtsBRngsAbstractInitStream;
}
