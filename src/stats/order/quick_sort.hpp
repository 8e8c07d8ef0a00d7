// SPDX-License-Identifier: Apache-2.0
// Quick sort and selection over anything that compares elements and exchanges them: contiguous reals, reals a
// stride apart, and reals whose companions are exchanged along.
//
// The pivot is the median of three, which also leaves a stopper at either end of both scans. Comparisons with
// a NaN are false: it stops scans as an element equal to the pivot does, so arrays with NaNs come out as
// permutations, in no particular order.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace tmk::stats {

template <class Real>
struct contiguous {
  Real* a;
  Real operator[](ptrdiff_t i) const { return a[i]; }
  void exchange(ptrdiff_t i, ptrdiff_t j) const { std::swap(a[i], a[j]); }
};

template <class Real>
struct strided {
  Real* a;
  ptrdiff_t stride;
  Real operator[](ptrdiff_t i) const { return a[i * stride]; }
  void exchange(ptrdiff_t i, ptrdiff_t j) const { std::swap(a[i * stride], a[j * stride]); }
};

template <class Real>
struct paired {
  Real *a, *b;
  Real operator[](ptrdiff_t i) const { return a[i]; }
  void exchange(ptrdiff_t i, ptrdiff_t j) const {
    std::swap(a[i], a[j]);
    std::swap(b[i], b[j]);
  }
};

// Both ends belong to a range.
struct range {
  ptrdiff_t l, r;
  ptrdiff_t size() const { return r - l + 1; }
  bool holds(ptrdiff_t i) const { return i >= l && i <= r; }
};

struct parts {
  range low, high;  // what is between them is in its place
};

// A range of at least 3 elements, around the pivot that is first looked for at `middle`.
template <class View>
parts partition(const View& a, const range& whole, ptrdiff_t middle) {
  const auto [l, r] = whole;
  const auto put_in_order = [&a](ptrdiff_t i, ptrdiff_t j) {
    if (a[i] > a[j]) a.exchange(i, j);
  };
  a.exchange(middle, l + 1);
  put_in_order(l, r);
  put_in_order(l + 1, r);
  put_in_order(l, l + 1);
  const auto pivot = a[l + 1];
  ptrdiff_t i = l + 1, j = r;
  for (;;) {
    do ++i;
    while (a[i] < pivot);
    do --j;
    while (a[j] > pivot);
    if (j < i) break;
    a.exchange(i, j);
  }
  a.exchange(l + 1, j);
  return {{l, j - 1}, {i, r}};
}

// Where to look for the next pivot: in the middle, or, when the last cut was far off, anywhere, since some
// arrays make the middle a bad choice time and again.
class pivot_choice {
 public:
  ptrdiff_t operator()(const range& whole) {
    const ptrdiff_t size = whole.size();
    uneven_ = size > previous_ - previous_ / 8;
    previous_ = size;
    if (!uneven_) return whole.l + (size - 1) / 2;
    state_ = state_ * 1664525u + 1013904223u;
    return whole.l + 1 +
           static_cast<ptrdiff_t>(static_cast<size_t>(state_ >> 8) % static_cast<size_t>(size - 2));
  }
  void forget() { previous_ = PTRDIFF_MAX; }
  bool is_middle() const { return !uneven_; }

 private:
  ptrdiff_t previous_ = PTRDIFF_MAX;
  bool uneven_ = false;
  unsigned state_ = 1;
};

template <class View>
void insertion_sort(const View& a, const range& whole) {
  for (ptrdiff_t i = whole.l + 1; i <= whole.r; ++i)
    for (ptrdiff_t j = i; j > whole.l && a[j - 1] > a[j]; --j) a.exchange(j - 1, j);
}

// The larger part waits and the smaller is sorted first, so that no more than a range per bit of n waits.
template <class View>
void quick_sort(const View& a, ptrdiff_t n) {
  constexpr ptrdiff_t short_range = 7;
  range waiting[8 * sizeof(ptrdiff_t)];
  int count = 0;
  range now = {0, n - 1};
  pivot_choice pivot;
  for (;;) {
    while (now.size() > short_range) {
      const auto [low, high] = partition(a, now, pivot(now));
      const bool high_first = high.size() < low.size();
      waiting[count++] = high_first ? low : high;
      now = high_first ? high : low;
    }
    insertion_sort(a, now);
    if (count == 0) return;
    now = waiting[--count];
    pivot.forget();
  }
}

// Puts the element of rank k of a range in its place: none before it in the range is greater, none after it
// is less.
//
// A long range is cut by an element that a selection among some n^(2/3) of its elements puts close to rank k,
// a little to the side of the longer part, as in Floyd and Rivest's SELECT: most elements are compared once.
template <class View>
void quick_select(const View& a, range whole, ptrdiff_t k) {
  constexpr ptrdiff_t long_range = 600;
  pivot_choice pivot;
  while (whole.r > whole.l + 1) {
    ptrdiff_t middle = pivot(whole);
    if (whole.size() > long_range && pivot.is_middle()) {
      const auto n = static_cast<double>(whole.size()), left = static_cast<double>(k - whole.l + 1);
      const double count = 0.5 * std::cbrt(n * n);
      const double shift =
          std::copysign(0.5 * std::sqrt(std::log(n) * count * (1 - count / n)), 2 * left - n);
      const range sample = {std::max(whole.l, k - static_cast<ptrdiff_t>(left * count / n - shift)),
                            std::min(whole.r, k + static_cast<ptrdiff_t>((n - left) * count / n + shift))};
      if (sample.holds(k) && sample.size() > 2) {
        quick_select(a, sample, k);
        a.exchange(whole.l, sample.l);  // so that of the three the median is a[k]
        a.exchange(whole.r, sample.r);
        middle = k == sample.l ? whole.l : k == sample.r ? whole.r : k;
      }
    }
    const auto [low, high] = partition(a, whole, middle);
    if (k > low.r && k < high.l) return;
    whole = k <= low.r ? low : high;
  }
  if (whole.r == whole.l + 1 && a[whole.l] > a[whole.r]) a.exchange(whole.l, whole.r);
}

}  // namespace tmk::stats
