// SPDX-License-Identifier: Apache-2.0
// Exponentials, logarithms and hyperbolic functions.
#pragma once

#include "vector/reference/real/extended.hpp"

namespace tmk::reference {

int Exp(std::floating_point auto a, auto& r) { return apply<exponential>(expl, a, r); }
int Exp2(std::floating_point auto a, auto& r) { return apply<exponential>(exp2l, a, r); }
int Exp10(std::floating_point auto a, auto& r) { return apply<exponential>(exp10l, a, r); }
int Expm1(std::floating_point auto a, auto& r) { return apply<expanding>(expm1l, a, r); }

int Ln(std::floating_point auto a, auto& r) { return apply(logl, a, r); }
int Log2(std::floating_point auto a, auto& r) { return apply(log2l, a, r); }
int Log10(std::floating_point auto a, auto& r) { return apply(log10l, a, r); }
int Log1p(std::floating_point auto a, auto& r) { return apply(log1pl, a, r); }
// Every argument but zero is normal in the extended format, and so has its true exponent.
int Logb(std::floating_point auto a, auto& r) { return apply(logbl, a, r); }

int Sinh(std::floating_point auto a, auto& r) { return apply<expanding>(sinhl, a, r); }
int Cosh(std::floating_point auto a, auto& r) { return apply<expanding>(coshl, a, r); }
int Tanh(std::floating_point auto a, auto& r) { return apply(tanhl, a, r); }
int Asinh(std::floating_point auto a, auto& r) { return apply(asinhl, a, r); }
int Acosh(std::floating_point auto a, auto& r) { return apply(acoshl, a, r); }
int Atanh(std::floating_point auto a, auto& r) { return apply(atanhl, a, r); }

}  // namespace tmk::reference
