// SPDX-License-Identifier: Apache-2.0
// Functions of numbers from Boost.Math, compiled once: its templates have one name in all instruction sets.
#include "boost_peers.hpp"

#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/expint.hpp>

namespace {
using namespace boost::math::policies;
using narrow = policy<promote_float<false>, promote_double<false>>;
}  // namespace

float boost_erf_inv(float x) { return boost::math::erf_inv(x); }
double boost_erf_inv(double x) { return boost::math::erf_inv(x); }
float boost_erfc_inv(float x) { return boost::math::erfc_inv(x); }
double boost_erfc_inv(double x) { return boost::math::erfc_inv(x); }
float boost_expint1(float x) { return boost::math::expint(1, x); }
double boost_expint1(double x) { return boost::math::expint(1, x); }
float boost_narrow_expint1(float x) { return boost::math::expint(1, x, narrow()); }
double boost_narrow_expint1(double x) { return boost::math::expint(1, x, narrow()); }
