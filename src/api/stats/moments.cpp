// SPDX-License-Identifier: Apache-2.0
// The accumulator of moments: checks, and calls of the C interface.
#include <tmk/abi/ss.h>

#include "api/stats/checks.hpp"

namespace tmk {

namespace {

void check_flag(const char* argument, bool other, bool own) {
  const auto text = [](bool flag) { return flag ? "true" : "false"; };
  if (other != own)
    detail::refuse("moments::merge", argument, text(other), std::string("is not ") + text(own));
}

void check_order(const char* function, int order) {
  detail::refuse_unless_in(function, "order", order, 1, 4);
}

}  // namespace

void moments::release::operator()(TmkSSMoments* p) const { tmk_ss_pooled_moments_delete(&p); }

moments::moments(std::size_t cols, const moments_options& options) : options_(options) {
  detail::check_policy("moments", "options.nan", options.nan);
  detail::refuse_unless_in("moments", "cols", cols, 1,
                           options.cross_product ? detail::most_matrix_cols : INT32_MAX);
  const TmkSSOptions o{options.cross_product, static_cast<int32_t>(options.nan), options.weights_are_counts};
  TmkSSMoments* sums = nullptr;
  detail::check_status("moments", tmk_ss_pooled_moments_new(&sums, static_cast<int64_t>(cols), &o));
  sums_.reset(sums);
}

moments::moments(const moments& other) : options_(other.options_) {
  if (other.sums_ == nullptr) return;
  TmkSSMoments* sums = nullptr;
  detail::check_status("moments", tmk_ss_pooled_moments_copy(&sums, other.sums_.get()));
  sums_.reset(sums);
}

moments& moments::operator=(const moments& other) {
  if (this != &other) *this = moments(other);
  return *this;
}

std::size_t moments::cols() const noexcept {
  int64_t cols = 0;
  if (sums_ != nullptr) tmk_ss_pooled_moments_query(sums_.get(), &cols, nullptr, nullptr);
  return static_cast<std::size_t>(cols);
}

void moments::add(const data_view& x, const weight_view& weights, int threads) {
  constexpr auto function = "moments::add";
  detail::check_block(function, x, cols());
  detail::check_weights(function, weights, detail::rows_of(x));
  detail::refuse_below(function, "threads", threads, 1);
  const detail::data_call c(x, weights, threads);
  c.check(function, tmk_ss_pooled_moments_add(sums_.get(), c.data(), c.threading()),
          options_.weights_are_counts);
}

void moments::merge(const moments& other) {
  constexpr auto function = "moments::merge";
  if (other.cols() != cols())
    detail::refuse_value(function, "other.cols", detail::number(other.cols()), detail::number(cols()));
  check_flag("other.options.cross_product", other.options_.cross_product, options_.cross_product);
  check_flag("other.options.weights_are_counts", other.options_.weights_are_counts,
             options_.weights_are_counts);
  detail::check_same_policy(function, "other.options.nan", other.options_.nan, options_.nan);
  if (sums_ == nullptr) return;
  const int32_t status = tmk_ss_pooled_moments_merge(sums_.get(), other.sums_.get());
  if (status == TMK_SS_BAD_WEIGHTS)
    detail::refuse(function, "other", "inf", "makes the sum of all weights infinite, want a finite number");
  detail::check_status(function, status);
}

void moments::reset() {
  if (sums_ != nullptr) detail::check_status("moments::reset", tmk_ss_pooled_moments_reset(sums_.get()));
}

std::vector<std::int64_t> moments::count() const {
  std::vector<std::int64_t> n(cols());
  if (!n.empty()) detail::check_status("moments::count", tmk_ss_pooled_moments_counts(sums_.get(), n.data()));
  return n;
}

std::vector<double> moments::estimate(std::int32_t which) const {
  std::vector<double> r(cols());
  if (!r.empty())
    detail::check_status("moments", tmk_ss_pooled_moments_estimate(sums_.get(), which, r.data()));
  return r;
}

matrix moments::estimate_matrix(const char* function, std::int32_t which) const {
  if (!options_.cross_product) detail::refuse(function, "options.cross_product", "false", "is false");
  matrix r(cols(), cols());
  if (cols() != 0)
    detail::check_status(function, tmk_ss_pooled_moments_estimate(sums_.get(), which, r.row(0).data()));
  return r;
}

std::vector<double> moments::weight() const { return estimate(TMK_SS_POOLED_WEIGHT); }
std::vector<double> moments::mean() const { return estimate(TMK_SS_POOLED_MEAN); }
std::vector<double> moments::variance() const { return estimate(TMK_SS_POOLED_VARIANCE); }
std::vector<double> moments::sd() const { return estimate(TMK_SS_POOLED_SD); }
std::vector<double> moments::skewness() const { return estimate(TMK_SS_POOLED_SKEWNESS); }
std::vector<double> moments::kurtosis() const { return estimate(TMK_SS_POOLED_KURTOSIS); }
std::vector<double> moments::min() const { return estimate(TMK_SS_POOLED_MINIMUM); }
std::vector<double> moments::max() const { return estimate(TMK_SS_POOLED_MAXIMUM); }

std::vector<double> moments::central(int order) const {
  check_order("moments::central", order);
  return estimate(TMK_SS_POOLED_CENTRAL1 + order - 1);
}

std::vector<double> moments::raw(int order) const {
  check_order("moments::raw", order);
  return estimate(TMK_SS_POOLED_RAW1 + order - 1);
}

std::int64_t moments::complete() const {
  constexpr auto function = "moments::complete";
  if (!options_.cross_product) detail::refuse(function, "options.cross_product", "false", "is false");
  std::int64_t complete = 0;
  if (sums_ != nullptr) tmk_ss_pooled_moments_query(sums_.get(), nullptr, nullptr, &complete);
  return complete;
}

matrix moments::cross_product() const {
  return estimate_matrix("moments::cross_product", TMK_SS_POOLED_CROSS_PRODUCT);
}
matrix moments::covariance() const {
  return estimate_matrix("moments::covariance", TMK_SS_POOLED_COVARIANCE);
}
matrix moments::correlation() const {
  return estimate_matrix("moments::correlation", TMK_SS_POOLED_CORRELATION);
}

std::vector<std::byte> moments::to_bytes() const {
  constexpr auto function = "moments::to_bytes";
  if (sums_ == nullptr) detail::refuse(function, "cols", "0", "is 0: the accumulator was moved from");
  std::vector<std::byte> image(static_cast<std::size_t>(tmk_ss_pooled_moments_image_size(sums_.get())));
  detail::check_status(
      function, tmk_ss_pooled_moments_save(sums_.get(), image.data(), static_cast<int64_t>(image.size())));
  return image;
}

moments moments::from_bytes(std::span<const std::byte> bytes) {
  TmkSSMoments* sums = nullptr;
  detail::check_image("moments::from_bytes", "moments", bytes,
                      tmk_ss_pooled_moments_load(&sums, bytes.data(), static_cast<int64_t>(bytes.size())));
  TmkSSOptions o;
  tmk_ss_pooled_moments_query(sums, nullptr, &o, nullptr);
  return {{o.crossProduct != 0, static_cast<nan_policy>(o.nanPolicy), o.weightsAreCounts != 0}, handle(sums)};
}

}  // namespace tmk
