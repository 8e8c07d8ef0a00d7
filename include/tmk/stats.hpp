// SPDX-License-Identifier: Apache-2.0
// Summary statistics of observations by variables.
//
//   tmk::matrix_view<const double> x(data, rows, cols);       // strides and both layouts; double or float
//   auto s = tmk::describe(x, {.weights = w, .threads = 4});  // s.mean[j], s.sd[j], s.median[j], s.cor(i, j)
//
//   tmk::moments acc(cols);  // moments of data that come in blocks
//   acc.add(block);
//   acc.add(next_block, weights);
//   acc += other;
//
//   tmk::quantile_sketch q(cols, 0.001);  // quantiles of data that are not kept
//   q.add(block);
//   q.quantile(0, 0.99);
//
// Everything is computed in double; float is widened first. Data are cut into blocks of a size that depends
// on the number of variables alone, each block is centred before its powers are summed, and blocks are joined
// in their order: on one tier, results are the same to the bit for any number of threads, layout and strides.
//
// Weights are finite and not negative, and give how much an observation counts (its reliability): one of
// weight 0 is left out, whatever it holds. With W the sum of the weights and W2 that of their squares, the
// variance is the sum of squares about the mean divided by W - W2 / W, which is n - 1 without weights. With
// `weights_are_counts` weights are whole numbers and give how often an observation was made: the divisor is
// W - 1, and results are those of data that hold each observation as often.
//
// A refused call throws tmk::error naming argument and value and changes nothing; so does one that finds no
// memory, with std::bad_alloc. Objects are used by one thread at a time.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <ranges>
#include <span>
#include <tmk/error.hpp>
#include <tmk/matrix_view.hpp>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

struct TmkSSMoments;
struct TmkSSSketch;

namespace tmk {

/// Vectors and spans convert, as one column; so do views of non-const elements.
using data_view = std::variant<matrix_view<const double>, matrix_view<const float>>;

/// One weight per observation, or none. Vectors, arrays and spans convert; a temporary vector does not, since
/// the view would outlive it.
class weight_view : public std::optional<std::span<const double>> {
 public:
  weight_view() = default;
  template <class Range>
  requires(std::convertible_to<Range, std::span<const double>> &&
           (std::is_lvalue_reference_v<Range> || std::ranges::borrowed_range<Range>))
      weight_view(Range&& weights)  // NOLINT(bugprone-forwarding-reference-overload)
      : std::optional<std::span<const double>>(std::span<const double>(weights)) {}
};

enum class nan_policy {
  propagate,  ///< estimates that a NaN enters are NaN
  omit,       ///< each variable on its own leaves out its NaNs; matrices are over the rows without any, so
              ///< that they stay positive semidefinite
  raise,      ///< tmk::error naming row and column of the first one
};

struct describe_options {
  // NOLINTNEXTLINE(readability-redundant-member-init): for callers that warn of missing initializers
  weight_view weights = {};
  int threads = 1;
  nan_policy nan = nan_policy::propagate;
  std::vector<double> orders = {0.25, 0.5, 0.75};  ///< of the quantiles, each from 0 to 1
  bool matrices = true;                            ///< computes cov and cor
  bool weights_are_counts = false;
};

/// What describe returns; vectors have an element per variable. An estimate without enough observations is
/// NaN.
struct summary {
  std::vector<std::int64_t> n;     ///< observations that counted: of positive weight, and not omitted
  std::vector<std::int64_t> nans;  ///< NaNs among the observations of positive weight, omitted or not
  std::vector<double> weight;      ///< total weight of what counted, n if there were no weights
  std::vector<double> mean, variance, sd;
  std::vector<double> skewness;  ///< m3 / m2^(3/2), m_k being central moments that divide by the weight
  std::vector<double> kurtosis;  ///< m4 / m2^2 - 3
  std::vector<double> min, max;
  std::vector<double> median;
  std::vector<double> mad;     ///< median of |x - median|; times 1.4826 it estimates the sd of normal data
  std::vector<double> orders;  ///< those of the options
  matrix quantiles;            ///< (variable, order)
  std::int64_t complete = 0;   ///< observations that the matrices are made of
  matrix cov, cor;             ///< empty without the option; the diagonal of cor is exactly 1, or NaN
};

/// Throws tmk::error for no rows or columns, null data, weights of another size than rows, a weight that is
/// negative or not finite (or not whole, where weights are counts), weights whose sum is not finite (or above
/// 2^53), an order outside 0 to 1, threads below 1, an unknown NaN policy, more than 32768 columns with
/// matrices, and a NaN under nan_policy::raise.
[[nodiscard]] summary describe(const data_view& x, const describe_options& options = {});

struct quantile_options {
  // NOLINTNEXTLINE(readability-redundant-member-init): for callers that warn of missing initializers
  weight_view weights = {};
  int threads = 1;
  nan_policy nan = nan_policy::propagate;
  bool weights_are_counts = false;
};

/// Exact quantiles, (variable, order). Without weights by linear interpolation between the ranks 0 to n - 1
/// (type 7 of Hyndman and Fan, Sample quantiles in statistical packages, 1996). With weights by the form of
/// that rule that A. Akinshin gives (Weighted quantile estimators, arXiv:2304.07265, 2023): the mean value of
/// the inverse distribution function from q (W - u) to q (W - u) + u, where u is W2 / W, the weight of one of
/// Kish's effective observations, or 1 if weights are counts. Orders 0 and 1 give the extreme values of
/// positive weight. Weights all equal give exactly what no weights give; a power of two times the weights
/// changes no bit. Throws as describe does.
[[nodiscard]] matrix quantiles(const data_view& x, std::span<const double> orders,
                               const quantile_options& options = {});
[[nodiscard]] std::vector<double> median(const data_view& x, const quantile_options& options = {});

/// Labels of groups, one per observation: any integers. Vectors, arrays and spans convert.
using label_view = std::variant<std::span<const std::int32_t>, std::span<const std::int64_t>>;

struct pooled_options {
  // NOLINTNEXTLINE(readability-redundant-member-init): for callers that warn of missing initializers
  weight_view weights = {};
  int threads = 1;
  nan_policy nan = nan_policy::propagate;  ///< omit leaves out the rows with a NaN, from all estimates
  bool weights_are_counts = false;
};

/// What pooled_covariance returns. Of a group, and of all, without enough observations it is NaN.
struct pooled_estimates {
  std::vector<std::int64_t> labels;  ///< the distinct ones, ascending; what follows is in their order
  std::vector<std::int64_t> n;       ///< observations of the group that counted
  std::vector<double> weight;        ///< their total weight
  matrix means;                      ///< (group, variable)
  std::vector<matrix> covariances;   ///< of each group
  std::vector<double> mean;          ///< of all observations
  matrix covariance;                 ///< within groups, pooled
};

/// Means and covariances of groups of observations, and the covariance within groups: the sum of the groups'
/// cross-products about their own means, divided by the sum of their divisors (n_g - 1 each without weights).
/// Throws as describe does, and for another number of labels than rows.
[[nodiscard]] pooled_estimates pooled_covariance(const data_view& x, const label_view& groups,
                                                 const pooled_options& options = {});

/// The covariance of the other variables given those whose numbers are listed: S11 - S12 inv(S22) S21
/// (Anderson, An introduction to multivariate statistical analysis, 2.5). The result has the other variables
/// in their order. Throws for a matrix that is not square, finite and symmetric (to 1e-10 of the variances),
/// for a list that is empty, names a variable twice or one that does not exist, or takes all, and where the
/// listed variables depend on each other.
[[nodiscard]] matrix partial_covariance(const matrix_view<const double>& cov,
                                        const std::vector<std::size_t>& given);
/// The same as correlations, with a diagonal of exactly 1; NaN for a variable that the listed ones determine.
/// `cov` may be a correlation matrix as well.
[[nodiscard]] matrix partial_correlation(const matrix_view<const double>& cov,
                                         const std::vector<std::size_t>& given);

/// The correlation matrix (positive semidefinite, of unit diagonal) nearest to m in the sum of squared
/// differences, whatever m has on its diagonal (Qi and Sun, SIAM J. Matrix Anal. Appl. 28, 2006); m itself,
/// with a diagonal of 1, if that is one. Throws for a matrix that is not square, finite and symmetric (to
/// 1e-10).
[[nodiscard]] matrix nearest_correlation(const matrix_view<const double>& m);

struct moments_options {
  bool cross_product = true;  ///< keeps a matrix of cols (cols + 1) / 2 numbers
  nan_policy nan = nan_policy::propagate;
  bool weights_are_counts = false;
};

/// Moments to order 4, extrema and cross-product of data that come in blocks, from several places, or both.
/// Central sums are joined by the pairwise formulas (Chan, Golub and LeVeque; Pebay for the higher orders);
/// a mean is kept as the sum of two doubles, so that large offsets cost no digits. One that was moved from
/// has no columns.
class moments {
 public:
  /// Throws for no columns, more than 32768 with a cross-product, and an unknown NaN policy.
  explicit moments(std::size_t cols, const moments_options& options = {});
  moments(const moments& other);
  moments(moments&& other) noexcept = default;
  moments& operator=(const moments& other);
  moments& operator=(moments&& other) noexcept = default;
  ~moments() = default;

  /// Throws as describe does, and for other columns than cols(); a block may be empty.
  void add(const data_view& x, const weight_view& weights = {}, int threads = 1);

  /// As if the data of the other had been added. Throws for another number of columns, other options, and
  /// weights whose sum is not finite.
  void merge(const moments& other);
  moments& operator+=(const moments& other) {
    merge(other);
    return *this;
  }

  /// Forgets all data.
  void reset();

  std::size_t cols() const noexcept;
  const moments_options& options() const { return options_; }

  // Per variable, as in summary.
  [[nodiscard]] std::vector<std::int64_t> count() const;
  [[nodiscard]] std::vector<double> weight() const, mean() const, variance() const, sd() const;
  [[nodiscard]] std::vector<double> skewness() const, kurtosis() const, min() const, max() const;
  /// Weighted means of x^order and of (x - mean)^order. Throws for orders outside 1 to 4.
  [[nodiscard]] std::vector<double> raw(int order) const, central(int order) const;

  // Over the observations that counted for every variable. They throw without the option cross_product.
  [[nodiscard]] std::int64_t complete() const;
  [[nodiscard]] matrix cross_product() const;  ///< sums of products about the means
  [[nodiscard]] matrix covariance() const, correlation() const;

  /// An image of one form on every machine: magic, version, options, sizes, little-endian numbers and
  /// the 64-bit FNV-1a hash of all before it. from_bytes throws for an image that is truncated, too long,
  /// damaged, of another version, or whose content is impossible.
  [[nodiscard]] std::vector<std::byte> to_bytes() const;
  [[nodiscard]] static moments from_bytes(std::span<const std::byte> bytes);

 private:
  friend summary describe(const data_view& x, const describe_options& options);
  struct release {
    void operator()(TmkSSMoments* p) const;
  };
  using handle = std::unique_ptr<TmkSSMoments, release>;
  moments(const moments_options& options, handle sums) : options_(options), sums_(std::move(sums)) {}
  std::vector<double> estimate(std::int32_t which) const;
  matrix estimate_matrix(const char* function, std::int32_t which) const;

  moments_options options_;
  handle sums_;  // of the C interface; null in one that was moved from
};

/// Approximate quantiles of data that come in blocks and are never kept. Whatever the order of arrival and of
/// merging, the rank of an answer is off by at most epsilon times the number of values (blocks as in Zhang
/// and Wang, A fast algorithm for approximate quantiles in high speed data streams, 2007). Weights are not
/// offered. One that was moved from has no columns and throws when values are requested; it may be assigned
/// to.
class quantile_sketch {
 public:
  /// Throws for no columns, an epsilon that is not above 0 and at most 1, and an unknown NaN policy.
  explicit quantile_sketch(std::size_t cols, double epsilon = 0.001, nan_policy nan = nan_policy::propagate);
  quantile_sketch(const quantile_sketch& other);
  quantile_sketch(quantile_sketch&& other) noexcept = default;
  quantile_sketch& operator=(const quantile_sketch& other);
  quantile_sketch& operator=(quantile_sketch&& other) noexcept = default;
  ~quantile_sketch() = default;

  /// Throws for other columns than cols(), null data, and a NaN under nan_policy::raise.
  void add(const data_view& x);

  /// As if the data of the other had been added, but for the values that answers are taken from. Of two
  /// epsilons the larger holds from then on. Throws for other columns and another NaN policy.
  void merge(const quantile_sketch& other);
  quantile_sketch& operator+=(const quantile_sketch& other) {
    merge(other);
    return *this;
  }

  /// Forgets all data.
  void reset();

  std::size_t cols() const noexcept;
  double epsilon() const;
  /// Values of the variable so far, without NaNs.
  std::int64_t count(std::size_t variable) const;

  /// NaN before the first value and, under nan_policy::propagate, after a NaN. Throws for a variable that
  /// does not exist and an order outside 0 to 1.
  [[nodiscard]] double quantile(std::size_t variable, double order) const;

  /// A value and bounds of how many values are not above it (its rank, 1 to count, if values differ); they
  /// are at most 2 epsilon count apart. Of -0.0 it is how many are not above it in the order of sort.
  struct estimate {
    double value;
    std::int64_t lowest_rank, highest_rank, count;
  };
  [[nodiscard]] estimate bounds(std::size_t variable, double order) const;

  /// How many values are not above this one, which need not be among them: the bounds' middle is off by at
  /// most epsilon count. 0 and 0 before the first value. Under nan_policy::propagate, after a NaN, value is
  /// NaN and the bounds are 0. Throws for a variable that does not exist and a value that is NaN.
  [[nodiscard]] estimate rank(std::size_t variable, double value) const;

  /// An image as that of moments, of the same guarantees. What it holds answers as the sketch did.
  [[nodiscard]] std::vector<std::byte> to_bytes() const;
  [[nodiscard]] static quantile_sketch from_bytes(std::span<const std::byte> bytes);

 private:
  struct release {
    void operator()(TmkSSSketch* p) const;
  };
  using handle = std::unique_ptr<TmkSSSketch, release>;
  explicit quantile_sketch(handle sketch) : sketch_(std::move(sketch)) {}
  TmkSSSketch* here(const char* function) const;
  void check_variable(const char* function, std::size_t variable) const;

  handle sketch_;  // of the C interface; null in one that was moved from
};

template <class T>
concept sortable = std::same_as<T, double> || std::same_as<T, float> || std::same_as<T, std::int32_t> ||
    std::same_as<T, std::uint32_t> || std::same_as<T, std::int64_t> || std::same_as<T, std::uint64_t>;

namespace detail {

template <sortable T>
void sort_elements(std::span<T> x, bool descending);
template <sortable T>
std::vector<std::size_t> sorted_positions(std::span<const T> x, bool descending);

template <class Range>
using sorted_value = std::remove_cv_t<std::ranges::range_value_t<Range>>;

}  // namespace detail

/// Sorts a vector, array or span in place, by radix: -0.0 before +0.0, NaNs outside all numbers by their
/// sign. Elements are double, float or integers of 32 or 64 bits. Throws for more than INT32_MAX elements.
template <std::ranges::contiguous_range Range>
requires(sortable<detail::sorted_value<Range>>&& std::convertible_to<
         Range, std::span<detail::sorted_value<Range>>>) void sort(Range&& x, bool descending = false) {
  detail::sort_elements(std::span<detail::sorted_value<Range>>(x), descending);
}

/// Positions of the elements in sorted order; equal ones keep theirs. Throws as sort does.
template <std::ranges::contiguous_range Range>
requires sortable<detail::sorted_value<Range>>
[[nodiscard]] std::vector<std::size_t> sort_index(const Range& x, bool descending = false) {
  return detail::sorted_positions(std::span<const detail::sorted_value<Range>>(x), descending);
}

}  // namespace tmk
