// SPDX-License-Identifier: Apache-2.0
// The quantile sketch: checks, and calls of the C interface.
#include <tmk/abi/ss.h>

#include <cmath>

#include "api/stats/checks.hpp"

namespace tmk {

namespace {

void check_order(const char* function, double order) {
  detail::refuse_unless_in(function, "order", order, 0, 1);
}

quantile_sketch::estimate estimate_of(const TmkSSRank& r) { return {r.value, r.lowest, r.highest, r.count}; }

nan_policy policy_of(const TmkSSSketch* sketch) {
  int32_t policy;
  tmk_ss_pooled_sketch_query(sketch, nullptr, nullptr, &policy);
  return static_cast<nan_policy>(policy);
}

}  // namespace

void quantile_sketch::release::operator()(TmkSSSketch* p) const { tmk_ss_pooled_sketch_delete(&p); }

quantile_sketch::quantile_sketch(std::size_t cols, double epsilon, nan_policy nan) {
  constexpr auto function = "quantile_sketch";
  detail::refuse_unless_in(function, "cols", cols, 1, INT32_MAX);
  if (!(epsilon > 0 && epsilon <= 1))
    detail::refuse_value(function, "epsilon", detail::number(epsilon), "more than 0, at most 1");
  detail::check_policy(function, "nan", nan);
  TmkSSSketch* sketch = nullptr;
  detail::check_status(function, tmk_ss_pooled_sketch_new(&sketch, static_cast<int64_t>(cols), epsilon,
                                                          static_cast<int32_t>(nan)));
  sketch_.reset(sketch);
}

quantile_sketch::quantile_sketch(const quantile_sketch& other) {
  if (other.sketch_ == nullptr) return;
  TmkSSSketch* sketch = nullptr;
  detail::check_status("quantile_sketch", tmk_ss_pooled_sketch_copy(&sketch, other.sketch_.get()));
  sketch_.reset(sketch);
}

quantile_sketch& quantile_sketch::operator=(const quantile_sketch& other) {
  if (this != &other) *this = quantile_sketch(other);
  return *this;
}

TmkSSSketch* quantile_sketch::here(const char* function) const {
  if (sketch_ == nullptr) detail::refuse(function, "sketch", "moved from", "was moved from");
  return sketch_.get();
}

std::size_t quantile_sketch::cols() const noexcept {
  int64_t cols = 0;
  if (sketch_ != nullptr) tmk_ss_pooled_sketch_query(sketch_.get(), &cols, nullptr, nullptr);
  return static_cast<std::size_t>(cols);
}

double quantile_sketch::epsilon() const {
  double epsilon;
  tmk_ss_pooled_sketch_query(here("quantile_sketch::epsilon"), nullptr, &epsilon, nullptr);
  return epsilon;
}

void quantile_sketch::add(const data_view& x) {
  constexpr auto function = "quantile_sketch::add";
  TmkSSSketch* const sketch = here(function);
  detail::check_block(function, x, cols());
  const detail::data_call c(x, {}, 1);
  c.check(function, tmk_ss_pooled_sketch_add(sketch, c.data()), false);
}

void quantile_sketch::merge(const quantile_sketch& other) {
  constexpr auto function = "quantile_sketch::merge";
  TmkSSSketch *const own = here(function), *const from = other.here(function);
  if (other.cols() != cols())
    detail::refuse_value(function, "other.cols", detail::number(other.cols()), detail::number(cols()));
  detail::check_same_policy(function, "other.nan", policy_of(from), policy_of(own));
  detail::check_status(function, tmk_ss_pooled_sketch_merge(own, from));
}

void quantile_sketch::reset() {
  constexpr auto function = "quantile_sketch::reset";
  detail::check_status(function, tmk_ss_pooled_sketch_reset(here(function)));
}

void quantile_sketch::check_variable(const char* function, std::size_t variable) const {
  here(function);
  detail::refuse_unless_in(function, "variable", variable, 0, cols() - 1);
}

std::int64_t quantile_sketch::count(std::size_t variable) const {
  check_variable("quantile_sketch::count", variable);
  return bounds(variable, 0).count;
}

double quantile_sketch::quantile(std::size_t variable, double order) const {
  constexpr auto function = "quantile_sketch::quantile";
  check_variable(function, variable);
  check_order(function, order);
  return bounds(variable, order).value;
}

quantile_sketch::estimate quantile_sketch::bounds(std::size_t variable, double order) const {
  constexpr auto function = "quantile_sketch::bounds";
  check_variable(function, variable);
  check_order(function, order);
  TmkSSRank r;
  detail::check_status(
      function, tmk_ss_pooled_sketch_quantile(sketch_.get(), static_cast<int64_t>(variable), order, &r));
  return estimate_of(r);
}

quantile_sketch::estimate quantile_sketch::rank(std::size_t variable, double value) const {
  constexpr auto function = "quantile_sketch::rank";
  check_variable(function, variable);
  if (std::isnan(value)) detail::refuse(function, "value", "nan", "is not a number");
  TmkSSRank r;
  detail::check_status(function,
                       tmk_ss_pooled_sketch_rank(sketch_.get(), static_cast<int64_t>(variable), value, &r));
  return estimate_of(r);
}

std::vector<std::byte> quantile_sketch::to_bytes() const {
  constexpr auto function = "quantile_sketch::to_bytes";
  TmkSSSketch* const sketch = here(function);
  std::vector<std::byte> image(static_cast<std::size_t>(tmk_ss_pooled_sketch_image_size(sketch)));
  detail::check_status(function,
                       tmk_ss_pooled_sketch_save(sketch, image.data(), static_cast<int64_t>(image.size())));
  return image;
}

quantile_sketch quantile_sketch::from_bytes(std::span<const std::byte> bytes) {
  TmkSSSketch* sketch = nullptr;
  detail::check_image("quantile_sketch::from_bytes", "a quantile sketch", bytes,
                      tmk_ss_pooled_sketch_load(&sketch, bytes.data(), static_cast<int64_t>(bytes.size())));
  return quantile_sketch(handle(sketch));
}

}  // namespace tmk
