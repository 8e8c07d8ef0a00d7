// SPDX-License-Identifier: Apache-2.0
// Variates of laws whose parameters change from one to the next, so that no table pays.
//   mean below 20   inversion, by a search from 0 upwards, of one uniform
//   otherwise       transformed rejection, two uniforms to a candidate
// W. Hoermann, The transformed rejection method for generating Poisson random variables, Insurance: Math. and
// Econ. 12 (1993); The generation of binomial random variates, J. Stat. Comput. Simul. 46 (1993).
#pragma once

#include <algorithm>
#include <cstdint>

#include "random/distributions/precision.hpp"
#include "tmk/abi/vts.h"

namespace tmk::rng {

// Uniforms of a stream in their order, drawn ahead as far as they are certainly needed.
class uniform_supply {
 public:
  explicit uniform_supply(VtsStreamHandle stream) : stream_(stream) {}

  // `needed`: how many uniforms the caller takes at least, this one included.
  double next(int64_t needed) {
    if (taken_ == drawn_) draw(needed);
    return u_[taken_++];
  }
  int32_t status() const { return status_; }  // of the last draw; after a failure, next() is 1/2

 private:
  void draw(int64_t needed) {
    taken_ = 0;
    drawn_ = static_cast<int32_t>(std::min<int64_t>(needed, distribution_block));
    if (status_ >= 0) status_ = draw_open(stream_, drawn_, u_, 0.0, 1.0);
    if (status_ < 0) std::fill_n(u_, drawn_, 0.5);
  }

  VtsStreamHandle stream_;
  int32_t taken_ = 0, drawn_ = 0, status_ = 0;
  alignas(64) double u_[distribution_block];
};

// The uniforms that a variate of that mean takes at least.
constexpr double least_rejection_mean = 20;
constexpr int32_t least_uniforms(double mean) { return mean < least_rejection_mean ? 1 : 2; }

// `later`: how many uniforms are certainly needed after this variate.
int32_t poisson_variate(uniform_supply& supply, double lambda, int64_t later);
int32_t binomial_variate(uniform_supply& supply, int32_t trials, double p, int64_t later);

}  // namespace tmk::rng
