// SPDX-License-Identifier: Apache-2.0
// Error functions, the normal distribution and their inverses; gamma functions; the exponential integral.
#pragma once

#include "vector/reference/real/extended.hpp"

namespace tmk::reference {

extended normal_cdf(extended x);          // erfc(-x / sqrt 2) / 2
extended inverse_erf(extended x);         // |x| <= 1
extended inverse_erfc(extended x);        // 0 <= x <= 2
extended inverse_normal_cdf(extended x);  // 0 <= x <= 1
extended log_gamma(extended x);           // ln |gamma(x)|
extended gamma_function(extended x);
extended exponential_integral(extended x);  // integral of exp(-t) / t from x > 0 to infinity

int Erf(std::floating_point auto a, auto& r) { return apply(erfl, a, r); }
int Erfc(std::floating_point auto a, auto& r) { return apply<exponential>(erfcl, a, r); }
int ErfInv(std::floating_point auto a, auto& r) { return apply(inverse_erf, a, r); }
int ErfcInv(std::floating_point auto a, auto& r) { return apply(inverse_erfc, a, r); }
int CdfNorm(std::floating_point auto a, auto& r) { return apply<exponential>(normal_cdf, a, r); }
int CdfNormInv(std::floating_point auto a, auto& r) { return apply(inverse_normal_cdf, a, r); }
int LGamma(std::floating_point auto a, auto& r) { return apply(log_gamma, a, r); }
int TGamma(std::floating_point auto a, auto& r) { return apply<exponential>(gamma_function, a, r); }
int ExpInt1(std::floating_point auto a, auto& r) { return apply<exponential>(exponential_integral, a, r); }

}  // namespace tmk::reference
