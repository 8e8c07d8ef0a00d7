// SPDX-License-Identifier: Apache-2.0
// EM and imputation: checks, streams, the caller's watcher, and calls of the C interface.
#include <tmk/abi/ss_impute.h>

#include <array>
#include <cmath>
#include <exception>
#include <tmk/impute.hpp>
#include <tmk/random.hpp>

#include "api/stats/checks.hpp"

namespace tmk {

namespace {

void check_values(const char* function, const detail::data_call& call, const data_view& x) {
  std::int64_t row, col;
  const int32_t status = tmk_ss_impute_refusal(call.data(), &row, &col);
  const std::string column = "x.col(" + detail::number(col) + ')';
  switch (status) {
    case TMK_SS_INFINITE:
      if (row < 0) detail::refuse(function, column, "inf", "has a range that is not finite");
      detail::refuse(function, "x(" + detail::number(row) + ", " + detail::number(col) + ')', "inf",
                     "is infinite");
    case TMK_SS_NO_VALUES:
      detail::refuse(function, column, "nan", "has no value");
    case TMK_SS_NO_SPREAD:
      detail::refuse(function, column, "constant", "has values that are all equal");
    case TMK_SS_FEW_ROWS:
      detail::refuse_value(function, "x.rows", detail::number(detail::rows_of(x)),
                           "at least " + detail::number(detail::cols_of(x) + 1) + " that have a value");
    default:
      detail::check_status(function, status);
  }
}

// The watcher as the C interface calls it. What it throws waits until that has returned.
class watching {
 public:
  explicit watching(const impute_watcher& watcher) : watcher_(watcher) {}

  TmkSSEmOptions options(const em_options& o) {
    return {o.rounds, o.tolerance, watcher_ ? &watching::call : nullptr, this};
  }

  void check(const char* function, int32_t status) const {
    if (thrown_) std::rethrow_exception(thrown_);
    if (status == TMK_SS_STOPPED)
      detail::refuse(function, "progress", "false",
                     (last_.imputation < 0 ? std::string("stopped EM")
                                           : "stopped imputation " + detail::number(last_.imputation)) +
                         " in round " + detail::number(last_.round));
    if (status == TMK_SS_NOT_REGULAR)
      detail::refuse(function, "x", "singular", "has columns that depend on one another linearly");
    detail::check_status(function, status);
  }

 private:
  static int32_t call(void* context, std::int64_t imputation, std::int64_t round, double change) {
    auto& self = *static_cast<watching*>(context);
    if (self.stopped_) return 1;  // another chain's watcher
    self.last_ = {imputation, round, change};
    try {
      self.stopped_ = !self.watcher_(self.last_);
    } catch (...) {
      self.stopped_ = true;
      self.thrown_ = std::current_exception();
    }
    return self.stopped_;
  }

  const impute_watcher& watcher_;
  impute_progress last_{};
  bool stopped_ = false;
  std::exception_ptr thrown_;
};

std::vector<stream> chain_streams(const impute_options& options) {
  const int chains = options.one_chain ? 1 : options.count;
  if (options.generator == nullptr)
    return streams(generator::philox4x32x10, seed_sequence(options.seed), chains);
  std::array<std::uint32_t, 8> words;
  for (std::uint32_t& word : words) word = (*options.generator)();
  return streams(generator::philox4x32x10, seed_sequence(words), chains);
}

normal_model unpacked(std::size_t p, std::span<const double> packed) {
  normal_model m{{packed.begin(), packed.begin() + static_cast<std::ptrdiff_t>(p)}, matrix(p, p)};
  std::size_t next = p;
  for (std::size_t i = 0; i < p; ++i)
    for (std::size_t j = 0; j <= i; ++j) m.covariance(i, j) = m.covariance(j, i) = packed[next++];
  return m;
}

matrix copy_of(const data_view& x) {
  matrix copy(detail::rows_of(x), detail::cols_of(x));
  std::visit(
      [&](const auto& view) {
        for (std::size_t i = 0; i < copy.rows(); ++i)
          for (std::size_t j = 0; j < copy.cols(); ++j) copy(i, j) = view(i, j);
      },
      x);
  return copy;
}

em_estimates estimates_of(normal_model model, const TmkSSEmReport& report) {
  return {std::move(model), report.logLikelihood, report.rounds, report.converged != 0};
}

}  // namespace

em_estimates em_estimate(const data_view& x, const em_options& options) {
  constexpr auto function = "em_estimate";
  detail::check_data(function, x, false);
  if (!(options.tolerance > 0))
    detail::refuse_value(function, "tolerance", detail::number(options.tolerance), "a positive number");
  detail::refuse_below(function, "rounds", options.rounds, 1);
  detail::refuse_below(function, "threads", options.threads, 1);
  const detail::data_call c(x, {}, options.threads);
  check_values(function, c, x);
  watching watch(options.progress);
  const TmkSSEmOptions o = watch.options(options);
  const std::size_t p = detail::cols_of(x);
  normal_model model{std::vector<double>(p), matrix(p, p)};
  TmkSSEmReport report{};
  watch.check(function, tmk_ss_em(c.data(), &o, model.mean.data(), model.covariance.row(0).data(), &report,
                                  c.threading()));
  return estimates_of(std::move(model), report);
}

imputations impute(const data_view& x, const impute_options& options) {
  constexpr auto function = "impute";
  detail::check_data(function, x, false);
  detail::refuse_below(function, "count", options.count, 1);
  detail::refuse_below(function, "rounds", options.rounds, 1);
  detail::refuse_below(function, "threads", options.threads, 1);
  const detail::data_call c(x, {}, options.threads);
  check_values(function, c, x);

  imputations r;
  r.data_ = copy_of(x);
  for (std::size_t i = 0; i < r.data_.rows(); ++i)
    for (std::size_t j = 0; j < r.data_.cols(); ++j)
      if (std::isnan(r.data_(i, j))) r.holes_.push_back({i, j});
  const auto count = static_cast<std::size_t>(options.count), p = r.data_.cols();
  r.rounds_ = static_cast<std::size_t>(options.rounds);
  r.values_ = matrix(count, r.holes_.size());
  if (options.keep_chain) r.chain_ = matrix(count * r.rounds_, p * (p + 3) / 2);

  const std::vector<stream> own = chain_streams(options);
  std::vector<VtsStreamHandle> handles;
  handles.reserve(own.size());
  for (const stream& s : own) handles.push_back(s.handle());
  watching watch(options.progress);
  const TmkSSImputeOptions o{options.count, options.rounds, options.one_chain, watch.options({})};
  std::vector<double> start(p * (p + 3) / 2);
  TmkSSEmReport report{};
  watch.check(function, tmk_ss_impute(c.data(), &o, handles.data(),
                                      r.holes_.empty() ? nullptr : r.values_.row(0).data(),
                                      options.keep_chain ? r.chain_.row(0).data() : nullptr, start.data(),
                                      &report, c.threading()));
  r.start_ = estimates_of(unpacked(p, start), report);
  return r;
}

namespace {

void check_imputation(const char* function, std::size_t k, std::size_t count) {
  if (k >= count)
    detail::refuse_value(function, "k", detail::number(k), "less than " + detail::number(count));
}

}  // namespace

std::span<const double> imputations::values(std::size_t k) const {
  check_imputation("imputations::values", k, count());
  return values_.row(k);
}

matrix imputations::completed(std::size_t k) const {
  check_imputation("imputations::completed", k, count());
  matrix whole = data_;
  for (std::size_t h = 0; h < holes_.size(); ++h) whole(holes_[h].row, holes_[h].col) = values_(k, h);
  return whole;
}

normal_model imputations::model(std::size_t k, std::size_t round) const {
  constexpr auto function = "imputations::model";
  check_imputation(function, k, count());
  if (chain_.rows() == 0) detail::refuse(function, "options.keep_chain", "false", "is false");
  if (round >= rounds_)
    detail::refuse_value(function, "round", detail::number(round), "less than " + detail::number(rounds_));
  return unpacked(data_.cols(), chain_.row(k * rounds_ + round));
}

}  // namespace tmk
