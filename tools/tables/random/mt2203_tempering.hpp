// SPDX-License-Identifier: Apache-2.0
// Tempering masks of a small twister by equidistribution: k(v) is the greatest k for which the upper v bits
// of k consecutive outputs take all values equally often; floor(2203 / v) bounds it.
//
// k(v) is the length of a shortest vector of a lattice over the formal power series in 1/x (M. Fushimi and
// S. Tezuka 1983; R. Couture and P. L'Ecuyer 2000). Vectors are carried as states of the generator, which
// step where polynomials are multiplied by x (S. Harase, M. Matsumoto, M. Saito 2011), and reduced as T.
// Mulders and A. Storjohann (2003) do, until the degrees of the pivots add up to the determinant's.
#pragma once

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "mt2203_period.hpp"

struct masks {
  uint32_t b, c;
  bool operator==(const masks&) const = default;
};

class equidistribution {
 public:
  explicit equidistribution(uint32_t a) : a_(a) {}

  // k(v) for one v.
  int dimension(masks m, int v) {
    start(m, v);
    return least_degree(v);
  }

  // The sum over v of what the k(v) lack to their bounds.
  int defect(masks m) {
    start(m, 32);
    int total = 0;
    for (int v = 32; v >= 1; --v) {
      total += degree / v - least_degree(v);
      if (v == 1) break;
      vector* freed = std::exchange(pivot_[v - 1], nullptr);
      sum_ -= freed->order + 1;
      insert(freed, v - 1);
    }
    return total;
  }

 private:
  static constexpr int room = 512;
  struct vector {
    int order, position;
    uint32_t leading;  // tempered newest word
    uint32_t word[ring + room];
    uint32_t* state() { return word + position; }
  };

  uint32_t temper(uint32_t y) const {
    y ^= y >> 12;
    y ^= y << 7 & m_.b;
    y ^= y << 15 & m_.c;
    return y ^ y >> 18;
  }

  void step(vector& s) const {
    uint32_t* w = s.state();
    const uint32_t y = (w[0] & ~31u) | (w[1] & 31u);
    w[ring] = w[middle] ^ (y >> 1) ^ ((0 - (y & 1)) & a_);
    ++s.order;
    if (++s.position >= room) {
      std::memmove(s.word, s.state(), sizeof(uint32_t) * ring);
      s.position = 0;
    }
    s.leading = temper(s.state()[ring - 1]);
  }

  void insert(vector* candidate, int v) {
    const uint32_t seen = ~uint32_t{0} << (32 - v);
    while (sum_ != degree) {
      while ((candidate->leading & seen) == 0) step(*candidate);
      vector*& pivot = pivot_[std::countl_zero(candidate->leading & seen)];
      if (pivot == nullptr) {
        pivot = candidate;
        sum_ += candidate->order + 1;
        return;
      }
      if (candidate->order > pivot->order) {
        sum_ += candidate->order - pivot->order;
        std::swap(candidate, pivot);
      }
      uint32_t* to = candidate->state();
      const uint32_t* from = pivot->state();
      for (int i = 0; i < ring; ++i) to[i] ^= from[i];
      candidate->leading ^= pivot->leading;
    }
  }

  // Unit vectors, and the generator's own series.
  void start(masks m, int v) {
    m_ = m;
    sum_ = 0;
    for (int i = 0; i <= v; ++i) {
      vector& s = vectors_[i];
      s.order = i < v ? -1 : 0;
      s.position = 0;
      std::fill_n(s.word, ring, 0);
      s.leading = uint32_t{1} << (31 - i % 32);
      pivot_[i] = i < v ? &s : nullptr;
    }
    vector& series = vectors_[v];
    series.word[ring - 1] = uint32_t{1} << 31;
    series.leading = temper(series.word[ring - 1]);
    insert(&series, v);
  }

  int least_degree(int v) const {
    int least = degree;
    for (int i = 0; i < v; ++i) least = std::min(least, pivot_[i]->order + 1);
    return least;
  }

  uint32_t a_;
  masks m_{};
  int sum_ = 0;
  vector vectors_[33];
  vector* pivot_[33];
};

// A beam search over the bits of both masks from the top, each depth judged by k(v) of its v, then single
// bits for as long as one helps.
inline masks best_masks(uint32_t a, int& defect) {
  constexpr size_t beam_width = 32;
  struct candidate {
    masks m;
    int cost;
  };
  equidistribution quality(a);
  std::vector<candidate> beam{{{0xFFFFFF80, 0xFFFF8000}, 0}};
  for (int v = 1; v <= 17; ++v) {
    const int bit = 32 - v;
    std::vector<candidate> next;
    for (const candidate& parent : beam)
      for (int choice = 0; choice < 8; ++choice) {
        if (choice & 4 && bit < 22) continue;   // bit - 15 is of b's own bits only from 22 on
        if (choice & 1 && bit <= 16) continue;  // settled with bit + 15
        masks m = parent.m;
        if (choice & 1) m.b ^= 1u << bit;
        if (choice & 2) m.c ^= 1u << bit;
        if (choice & 4) m.b ^= 1u << (bit - 15);
        next.push_back({m, parent.cost + degree / v - quality.dimension(m, v)});
      }
    std::stable_sort(next.begin(), next.end(), [](auto& x, auto& y) { return x.cost < y.cost; });
    if (next.size() > beam_width) next.resize(beam_width);
    beam.swap(next);
  }
  masks best{};
  defect = 1 << 30;
  const auto improves = [&](masks m) {
    const int d = quality.defect(m);
    if (d >= defect) return false;
    defect = d;
    best = m;
    return true;
  };
  for (const candidate& c : beam) improves(c.m);
  for (bool again = true; again;) {
    again = false;
    for (int bit = 31; bit >= 7; --bit) again |= improves({best.b ^ 1u << bit, best.c});
    for (int bit = 31; bit >= 15; --bit) again |= improves({best.b, best.c ^ 1u << bit});
  }
  return best;
}
