// SPDX-License-Identifier: Apache-2.0
// The discrete laws that keep a set-up in a chunk.
#pragma once

#include "random/core/chunk_kinds.hpp"
#include "random/distributions/unimodal_law.hpp"

namespace tmk::rng {

// f(k) = lambda^k e^-lambda / k!
struct poisson_law {
  static constexpr chunk_kind kind = chunk_poisson;
  struct parameters {
    double lambda;
    bool operator==(const parameters&) const = default;
  };
  static bool accepts(const parameters& p);
  static unimodal_law of(const parameters& p);
};

// f(k) = C(trials, k) p^k (1 - p)^(trials - k)
struct binomial_law {
  static constexpr chunk_kind kind = chunk_binomial;
  struct parameters {
    double p;
    int32_t trials, unused;
    bool operator==(const parameters&) const = default;
  };
  static bool accepts(const parameters& p);
  static unimodal_law of(const parameters& p);
};

// f(k) = Gamma(a + k) / (Gamma(a) k!) p^a (1 - p)^k
struct negative_binomial_law {
  static constexpr chunk_kind kind = chunk_negative_binomial;
  struct parameters {
    double a, p;
    bool operator==(const parameters&) const = default;
  };
  static bool accepts(const parameters& p);
  static unimodal_law of(const parameters& p);
};

// f(k) = C(marked, k) C(all - marked, sample - k) / C(all, sample)
struct hypergeometric_law {
  static constexpr chunk_kind kind = chunk_hypergeometric;
  struct parameters {
    int32_t all, sample, marked;
    bool operator==(const parameters&) const = default;
  };
  static bool accepts(const parameters& p);
  static unimodal_law of(const parameters& p);
};

}  // namespace tmk::rng
