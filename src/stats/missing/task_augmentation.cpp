// SPDX-License-Identifier: Apache-2.0
// Data augmentation for the task (M. Tanner and W. Wong, JASA 82, 1987): holes are drawn given the model, and
// the model given the completed data, in turn. The trust in the prior, tau and degrees of freedom, is not
// restored: each round adds its observations to it, while the prior's mean and scale stay. So the chain
// forgets the data and contracts to the prior's mean, and its draws of chi-square grow longer from round to
// round; the C interface keeps it so.
#include <array>

#include "stats/missing/sums.hpp"
#include "stats/missing/task_imputation.hpp"

namespace tmk::stats::missing {
namespace {

constexpr int32_t by_inversion = 2;  // one uniform per variate: no sequence depends on how it is cut

int32_t draw(VtsStreamHandle g, int32_t n, double* r) {
  return _vtsdRngGaussian(by_inversion, g, n, r, 0, 1);
}
int32_t draw(VtsStreamHandle g, int32_t n, float* r) { return _vtssRngGaussian(by_inversion, g, n, r, 0, 1); }
int32_t draw_vectors(VtsStreamHandle g, int32_t n, double* r, int32_t k, const double* a, const double* t) {
  return _vtsdRngGaussianMV(by_inversion, g, n, r, k, 0, a, t);
}
int32_t draw_vectors(VtsStreamHandle g, int32_t n, float* r, int32_t k, const float* a, const float* t) {
  return _vtssRngGaussianMV(by_inversion, g, n, r, k, 0, a, t);
}

// A chi-square variate is a sum of squares, of as many variates as there are degrees.
template <class Real>
struct posterior_source {
  static constexpr ptrdiff_t chunk = 1024;
  static constexpr Real most_degrees = 0x1p36;  // hours
  VtsStreamHandle stream;

  int32_t normals(ptrdiff_t n, Real* r) const {
    int32_t status = VTS_STATUS_OK;
    for (ptrdiff_t count; n > 0 && status >= 0; n -= count, r += count) {
      count = std::min(n, chunk);
      status = draw(stream, static_cast<int32_t>(count), r);
    }
    return status;
  }

  int32_t chi_square(Real degrees, Real* sum) const {
    if (!(degrees < most_degrees)) return VTS_STATUS_BAD_ARGUMENT;
    std::array<Real, chunk> z;
    *sum = 0;
    int32_t status = VTS_STATUS_OK;
    int64_t count;
    for (auto left = static_cast<int64_t>(degrees); left > 0 && status >= 0; left -= count) {
      count = std::min<int64_t>(left, chunk);
      status = draw(stream, static_cast<int32_t>(count), z.data());
      Real squares = 0;
      for (int64_t i = 0; i < count; ++i) squares += z[static_cast<size_t>(i)] * z[static_cast<size_t>(i)];
      *sum += squares;
    }
    return status;
  }
};

// Adds variates of the conditional covariance to expected values.
template <class Real>
class residual_draws {
 public:
  explicit residual_draws(ptrdiff_t p)
      : zeros_(static_cast<size_t>(p)), factor_(static_cast<size_t>(p * p)) {}

  void add(VtsStreamHandle stream, const row_block<Real>& block, const square<Real>& swept, Real* values) {
    set_factor(block, swept);
    const size_t count = static_cast<size_t>(block.count * block.k);
    if (drawn_.size() < count) drawn_.resize(count);
    const int32_t status = draw_vectors(stream, static_cast<int32_t>(block.count), drawn_.data(),
                                        static_cast<int32_t>(block.k), zeros_.data(), factor_.data());
    if (status < 0) throw failed{VTS_STATUS_SS_ISTEP_DRAW_FAILED};
    for (size_t i = 0; i < count; ++i) values[i] += drawn_[i];
  }

 private:
  // The upper factor by columns is the lower one by rows, as the draw reads it.
  void set_factor(const row_block<Real>& block, const square<Real>& swept) {
    for (ptrdiff_t a = 0; a < block.k; ++a)
      for (ptrdiff_t c = 0; c < block.k; ++c)
        factor_[static_cast<size_t>(a * block.k + c)] = swept[block.holes[a]][block.holes[c]];
    if (!factorise("U", block.k, factor_.data())) throw failed{VTS_STATUS_SS_ISTEP_FACTOR_FAILED};
  }

  std::vector<Real> zeros_, factor_, drawn_;
};

}  // namespace

template <class Real>
void run_augmentation(imputation_request<Real>& request, const data_rows<Real>& data,
                      const square<Real>& observed, VtsStreamHandle stream, const task_values<Real>& values,
                      square<Real>& theta) {
  square<Real> half(data.p), sums(data.p);
  swept_model<Real> model(data.p);
  residual_draws<Real> residuals(data.p);
  posterior_step<Real> posterior(data.p);
  posterior_source<Real> source{stream};
  prior_parameters<Real>& prior = request.prior;
  const ptrdiff_t holes = data.holes();
  bool keep = false;
  Real* simulation = request.simulations;
  const auto draw_holes = [&](ptrdiff_t first, const row_block<Real>& block, const square<Real>& swept,
                              Real* drawn) {
    residuals.add(stream, block, swept, drawn);
    if (!keep) return;
    for (ptrdiff_t i = 0; i < block.count; ++i, drawn += block.k) {
      const ptrdiff_t observation = data.observation(first + i);
      for (ptrdiff_t a = 0; a < block.k; ++a) values(observation, block.holes[a] - 1) = drawn[a];
      if (simulation != nullptr)
        std::copy_n(drawn, block.k, simulation + data.holes_before[static_cast<size_t>(observation)]);
    }
  };

  Real* estimate = request.estimates;
  for (int64_t c = 0; c < request.imputations; ++c) {
    for (int64_t round = 0; round < request.rounds; ++round) {
      keep = round == request.rounds - 1;
      fill_holes(data, theta, model, half, draw_holes);
      complete_sums(observed, half, sums);
      posterior.draw(sums, prior, source, theta);
      prior.tau += sums[0][0];
      prior.degrees += sums[0][0];
      if (estimate == nullptr) continue;
      pack_model(theta, estimate);
      estimate += packed_size(data.p);
    }
    if (simulation != nullptr) simulation += holes;
  }
}

#define TMK_INSTANTIATE(Real)                                                                            \
  template void run_augmentation(imputation_request<Real>&, const data_rows<Real>&, const square<Real>&, \
                                 VtsStreamHandle, const task_values<Real>&, square<Real>&);
TMK_INSTANTIATE(double)
TMK_INSTANTIATE(float)
#undef TMK_INSTANTIATE

}  // namespace tmk::stats::missing
