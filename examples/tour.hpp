// SPDX-License-Identifier: Apache-2.0
// The pages of the tour.
#pragma once

void vector_math_page();
void elementary_page();
void black_scholes_page();
void spectrum_page();
void random_page();
void statistics_page();
void robust_page();
void imputation_page();
void splines_page();
