// SPDX-License-Identifier: Apache-2.0
// Answers from a sketch, by bisection over keys: nothing is merged or allocated, so nothing can fail.
#include <algorithm>

#include "stats/quantiles/sketch_keys.hpp"

namespace tmk::stats {

namespace {

// The weight of the values in the sketch that are not above k.
template <class Real>
int64_t counted(const sketch<Real>& s, key<Real> k) {
  int64_t sum = 0;
  for (int32_t h = 0; h < s.level_count; ++h) {
    const sketch_level<Real>& level = s.levels[h];
    const Real* end = std::upper_bound(level.values, level.values + level.count, k,
                                       [](key<Real> wanted, Real x) { return wanted < key_of(x); });
    sum += level.weight * (end - level.values);
  }
  return sum;
}

template <class Real>
struct key_range {
  key<Real> low, high;
};

template <class Real>
key_range<Real> extremes(const sketch<Real>& s) {
  const sketch_level<Real>& block = s.levels[0];
  if (block.count == 0) return {key_of(s.minimum), key_of(s.maximum)};
  const key_range<Real> r = {key_of(block.values[0]), key_of(block.values[block.count - 1])};
  if (s.count == block.count) return r;
  return {std::min(r.low, key_of(s.minimum)), std::max(r.high, key_of(s.maximum))};
}

// The lowest key in the range whose count, at the centre of its bounds, reaches the target; else the highest.
template <class Real>
key<Real> find(const sketch<Real>& s, key_range<Real> range, double target) {
  const double centre = 0.5 * static_cast<double>(s.counted_under - s.counted_over);
  while (range.low < range.high) {
    using bits = std::make_unsigned_t<key<Real>>;
    const auto width = static_cast<bits>(range.high) - static_cast<bits>(range.low);
    const auto middle = static_cast<key<Real>>(static_cast<bits>(range.low) + width / 2);
    if (static_cast<double>(counted(s, middle)) + centre >= target)
      range.high = middle;
    else
      range.low = middle + 1;
  }
  return range.low;
}

}  // namespace

template <class Real>
sketch_answer<Real> answer(sketch<Real>& s, double order) {
  if (s.count == 0) return {std::numeric_limits<Real>::quiet_NaN(), 0, 0};
  sort_block(s);
  const key_range<Real> range = extremes(s);
  const double target = order * static_cast<double>(s.count);
  const key<Real> k = target <= 1                                  ? range.low
                      : target >= static_cast<double>(s.count - 1) ? range.high
                                                                   : find(s, range, target);
  const int64_t sum = counted(s, k);
  return {value_of<Real>(k), k == range.high ? s.count : std::max<int64_t>(sum - s.counted_over, 1),
          k == range.high ? s.count : std::min(sum + s.counted_under, s.count)};
}

template <class Real>
sketch_answer<Real> rank(sketch<Real>& s, Real value) {
  if (s.count == 0) return {value, 0, 0};
  sort_block(s);
  const key_range<Real> range = extremes(s);
  const key<Real> k = key_of(value == 0 ? Real{0} : value);
  if (k < range.low) return {value, 0, 0};
  if (k >= range.high) return {value, s.count, s.count};
  // The lowest value is not above it, the highest is.
  const int64_t sum = counted(s, k);
  return {value, std::max<int64_t>(sum - s.counted_over, 1),
          std::clamp<int64_t>(sum + s.counted_under, 1, s.count - 1)};
}

#define TMK_SKETCH(Real)                                              \
  template sketch_answer<Real> answer(sketch<Real>& s, double order); \
  template sketch_answer<Real> rank(sketch<Real>& s, Real value);
TMK_SKETCH(double)
TMK_SKETCH(float)
#undef TMK_SKETCH

}  // namespace tmk::stats
