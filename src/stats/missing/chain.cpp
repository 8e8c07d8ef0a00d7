// SPDX-License-Identifier: Apache-2.0
#include "stats/missing/chain.hpp"

#include <bit>

#include "stats/missing/likelihood.hpp"
#include "stats/missing/sums.hpp"
#include "tmk/abi/vts.h"

namespace tmk::stats::missing {
namespace {

constexpr int32_t by_ziggurat = 3;
constexpr double jeffreys = -1;  // degrees of freedom beyond those of the data

struct posterior_source {
  VtsStreamHandle stream;

  int32_t normals(ptrdiff_t n, double* r) const {
    return _vtsdRngGaussian(by_ziggurat, stream, static_cast<int32_t>(n), r, 0, 1);
  }
  int32_t chi_square(double degrees, double* r) const {
    return _vtsdRngGamma(0, stream, 1, r, degrees / 2, 0, 2);
  }
};

ptrdiff_t count_holes(const data_rows<double>& data, ptrdiff_t begin, ptrdiff_t end) {
  ptrdiff_t holes = 0;
  for_each_stretch(data.patterns, begin, end, [&](const stretch& s) {
    const uint64_t* const words = data.patterns[s.pattern];
    ptrdiff_t observed = 0;
    for (ptrdiff_t w = 0; w < data.patterns.words; ++w) observed += std::popcount(words[w]);
    holes += s.count * (data.p - observed);
  });
  return holes;
}

}  // namespace

chain::chain(const standardised_data& data, const square<double>& observed, VtsStreamHandle stream)
    : data_(data),
      observed_(observed),
      stream_(stream),
      begin_(data.empty_rows()),
      completion_(data.rows, std::min(block_rows, data.rows.n)),
      model_(data.rows.p),
      posterior_(data.rows.p),
      prior_(data.rows.p, jeffreys),
      half_(data.rows.p),
      sums_(data.rows.p),
      normals_(static_cast<size_t>(std::min(block_rows, data.rows.n) * data.rows.p)) {}

template <class Keep>
void chain::draw_holes(const square<double>& theta, ptrdiff_t begin, square<double>* half, const Keep& keep) {
  if (!model_.set(theta)) throw failed{TMK_SS_NOT_REGULAR};
  const posterior_source source{stream_};
  for (ptrdiff_t first = begin, end; first < data_.rows.n; first = end) {
    end = std::min(first + block_rows, data_.rows.n);
    if (source.normals(count_holes(data_.rows, first, end), normals_.data()) < 0)
      throw failed{VTS_STATUS_SS_ISTEP_DRAW_FAILED};
    if (!completion_.draw(model_, first, end, normals_.data(), half, keep)) throw failed{TMK_SS_NOT_REGULAR};
  }
}

void chain::advance(square<double>& theta) {
  half_.clear();
  draw_holes(theta, begin_, &half_, [](ptrdiff_t, const row_block<double>&, const double*) {});
  complete_sums(observed_, half_, sums_);
  posterior_source source{stream_};
  posterior_.draw(sums_, prior_, source, theta);
}

void chain::impute(const square<double>& theta, double* imputed) {
  const data_rows<double>& rows = data_.rows;
  draw_holes(theta, 0, nullptr, [&](ptrdiff_t first, const row_block<double>& block, const double* values) {
    for (ptrdiff_t i = 0; i < block.count; ++i, values += block.k) {
      double* const to = imputed + rows.holes_before[static_cast<size_t>(rows.observation(first + i))];
      for (ptrdiff_t a = 0; a < block.k; ++a)
        to[a] = data_.scales[static_cast<size_t>(block.holes[a] - 1)].outside(values[a]);
    }
  });
}

}  // namespace tmk::stats::missing
