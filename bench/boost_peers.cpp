// SPDX-License-Identifier: Apache-2.0
// Functions of numbers from Boost.Math, compiled once: its templates have one name in all instruction sets.
#include <boost/math/special_functions/erf.hpp>

float boost_erf_inv(float x) { return boost::math::erf_inv(x); }
double boost_erf_inv(double x) { return boost::math::erf_inv(x); }
float boost_erfc_inv(float x) { return boost::math::erfc_inv(x); }
double boost_erfc_inv(double x) { return boost::math::erfc_inv(x); }
