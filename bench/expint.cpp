// SPDX-License-Identifier: Apache-2.0
// Boost's exponential integral as functions that peers.cpp may call: compiled once, as its inline functions
// have one name in all instruction sets. As it is, computed in the next wider type, and without that detour.
#include <boost/math/special_functions/expint.hpp>

namespace {
using namespace boost::math::policies;
using narrow = policy<promote_float<false>, promote_double<false>>;
}  // namespace

extern "C" float tmk_boost_expint1f(float x) { return boost::math::expint(1, x); }
extern "C" double tmk_boost_expint1(double x) { return boost::math::expint(1, x); }
extern "C" float tmk_boost_narrow_expint1f(float x) { return boost::math::expint(1, x, narrow()); }
extern "C" double tmk_boost_narrow_expint1(double x) { return boost::math::expint(1, x, narrow()); }
