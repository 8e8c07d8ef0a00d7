// SPDX-License-Identifier: Apache-2.0
// Functions by 16 cells, whose tables (tools/tables/vector/cells_common.sollya) hold for each
// cell
//   center, value, slope, [slope_low,] c2, c3, ...
//   f(center + t) = value + slope t + slope_low t + c2 t^2 + c3 t^3 + ...
// Registers hold the tables where they can be permuted, one coefficient of all cells in one or two; else each
// lane loads its cell's coefficients in turn, four at a time.
#pragma once

#include <bit>
#include <utility>

#include "simd/rows.hpp"

TMK_TIER_OPEN
namespace {

// The coefficients of each cell together, `fours` fours of them, a power of two.
template <class Real, int Size>
struct cell_rows {
  static constexpr int fours = std::bit_ceil(static_cast<unsigned>(Size + 3) / 4);
  alignas(4 * sizeof(Real)) Real coefficient[16][4 * fours];

  constexpr explicit cell_rows(const Real (&columns)[Size][16]) : coefficient{} {
    for (int i = 0; i < Size; ++i)
      for (int j = 0; j < 16; ++j) coefficient[j][i] = columns[i][j];
  }
};
template <const auto& Columns>
constexpr cell_rows rows_of(Columns);

// Registers of a group: those of rows wait in memory.
template <class Real>
constexpr int cell_group = (this_tier == 2 || sizeof(Real) == 4 ? 4 : 2) * lanes<Real>;

// The cells of lanes, by the four bits of x from bit Shift on.
template <const auto& Columns, int Shift>
class cells {
  using real = std::remove_cv_t<std::remove_all_extents_t<std::remove_reference_t<decltype(Columns)>>>;
  using value = batch<real>;
  using bits = batch<typename format<real>::bits>;
  static constexpr int size = std::size(Columns);
  static constexpr bool permuted = this_tier == 2 || (this_tier == 1 && sizeof(real) == 4);

 public:
  explicit cells(const bits& x) {
    if constexpr (permuted) {
      index_ = table_index<real, 16, Shift>(x);
    } else {
      constexpr int log_fours = std::countr_zero(static_cast<unsigned>(rows_of<Columns>.fours));
      const bits row = ((x >> Shift) & bits(15)) << log_fours;
      if constexpr (sizeof(real) == 8)
        store_lower_words(reinterpret_cast<uint32_t*>(row_), row);
      else
        store(row_, bits_as<int32_t>(row));
    }
    four<0>(first_);
  }

  const value& center() const { return first_[0]; }
  const value& at_center() const { return first_[1]; }
  const value& slope() const { return first_[2]; }

  // slope_low + c2 t + c3 t^2 + ..., or c2 + c3 t + ... where the table has no slope_low: even powers and odd
  // ones in turn, in chains half as long.
  [[gnu::always_inline]] value rest(const value& t) const {
    const value t2 = t * t;
    value chain[2];
    [&]<int... Group>(std::integer_sequence<int, Group...>) __attribute__((always_inline)) {
      (add_group<last_group - Group>(chain, t2), ...);
    }
    (std::make_integer_sequence<int, last_group + 1>());
    return size == 4 ? chain[1]
                     : multiply_add(chain[0], t, chain[1]);  // coefficients count from slope_low, the third
  }

 private:
  static constexpr int last_group = (size - 1) / 4;

  template <int Group>
  [[gnu::always_inline]] void four(value (&c)[4]) const {
    if constexpr (permuted) {
#pragma GCC unroll 4
      for (int k = 0; k < 4 && 4 * Group + k < size; ++k)
        c[k] = lane_table<real, 16>(Columns[4 * Group + k])[index_];
    } else {
      load_columns<4>(&rows_of<Columns>.coefficient[0][4 * Group], row_, c);
    }
  }
  template <int Group>
  [[gnu::always_inline]] void add_group(value (&chain)[2], const value& t2) const {
    value c[4] = {first_[0], first_[1], first_[2], first_[3]};
    if constexpr (Group != 0) four<Group>(c);
#pragma GCC unroll 4
    for (int k = 3; k >= (Group == 0 ? 3 : 0); --k) {
      const int i = 4 * Group + k;
      if (i >= size - 2 && i < size) chain[i % 2] = c[k];
      if (i < size - 2) chain[i % 2] = multiply_add(chain[i % 2], t2, c[k]);
    }
  }

  struct none {};
  [[no_unique_address]] std::conditional_t<permuted, typename lane_table<real, 16>::index, none> index_;
  int32_t row_[lanes<real>];
  value first_[4];
};

}  // namespace
TMK_TIER_CLOSE
