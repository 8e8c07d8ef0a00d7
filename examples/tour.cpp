// SPDX-License-Identifier: Apache-2.0
// The tour: what the library does, on real data, page by page.
#include "tour.hpp"

#include <cstdio>
#include <initializer_list>

int main() {
  vector_math_page();
  for (const auto page : {elementary_page, black_scholes_page, spectrum_page, random_page, statistics_page,
                          robust_page, imputation_page, splines_page}) {
    std::puts("\n----------------------------------------------------------------------------\n");
    page();
  }
}
