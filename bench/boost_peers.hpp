// SPDX-License-Identifier: Apache-2.0
// Functions of numbers from Boost.Math; "narrow" ones do not compute in the next wider type.
#pragma once

float boost_erf_inv(float x);
double boost_erf_inv(double x);
float boost_erfc_inv(float x);
double boost_erfc_inv(double x);
float boost_expint1(float x);
double boost_expint1(double x);
float boost_narrow_expint1(float x);
double boost_narrow_expint1(double x);
