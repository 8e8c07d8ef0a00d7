// Summary statistics of observations by variables.
//
//   tmk::matrix_view<const double> x(data, rows, cols);       strides and both layouts; double or float
//   auto s = tmk::describe(x, {.weights = w, .threads = 4});  s.mean[j], s.sd[j], s.quantiles(j, 1), s.cor(i,
//   j) tmk::moments acc(cols);                                   moments of data that come in blocks
//   acc.add(block); acc.add(next_block, weights); acc.merge(other);
//   tmk::quantile_sketch q(cols, 0.001); q.add(block); q.quantile(0, 0.99);
//
// Everything is computed in double; float is widened first. Data are cut into blocks of a size that depends
// on the number of variables alone, each block is centred before its powers are summed, and blocks are joined
// in their order: on one tier, results are the same to the bit for any number of threads, layout and strides.
//
// Weights are finite and not negative, and say how much an observation counts (its reliability): what has
// weight 0 is left out, whatever it holds. With W the sum of the weights and W2 that of their squares, the
// variance is the sum of squares about the mean divided by W - W2 / W, which is n - 1 without weights.
//
// A refused call throws tmk::error naming argument and value and changes nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <tmk/error.hpp>
#include <tmk/matrix_view.hpp>
#include <variant>
#include <vector>

namespace tmk {

/// Vectors and spans convert, as one column; so do views of non-const elements.
using data_view = std::variant<matrix_view<const double>, matrix_view<const float>>;

/// One weight per observation, or none.
using weight_view = std::optional<std::span<const double>>;

enum class nan_policy {
  propagate,  ///< what a NaN takes part in is NaN
  omit,       ///< each variable on its own leaves out its NaNs; matrices are over the rows without any, so
              ///< that they stay positive semidefinite
  raise,      ///< tmk::error naming row and column of the first one
};

struct describe_options {
  weight_view weights = {};
  int threads = 1;
  nan_policy nan = nan_policy::propagate;
  std::vector<double> orders = {0.25, 0.5, 0.75};  ///< of the quantiles, each from 0 to 1
  bool matrices = true;                            ///< cov and cor are wanted
};

/// What describe tells; vectors have an element per variable. An estimate without enough observations is NaN.
struct summary {
  std::vector<std::int64_t> n;  ///< observations that counted: of positive weight, and not omitted
  std::vector<double> weight;   ///< their total weight, n if there were no weights
  std::vector<double> mean, sd;
  std::vector<double> skewness;  ///< m3 / m2^(3/2), m_k being central moments that divide by the weight
  std::vector<double> kurtosis;  ///< m4 / m2^2 - 3
  std::vector<double> min, max;
  std::vector<double> orders;  ///< as asked
  matrix quantiles;            ///< (variable, order)
  std::int64_t complete = 0;   ///< observations behind the matrices
  matrix cov, cor;             ///< empty unless wanted; the diagonal of cor is exactly 1, or NaN
};

/// Throws tmk::error for no rows or columns, null data, weights of another size than rows, a weight that is
/// negative or not finite, an order outside 0 to 1, threads below 1, and a NaN under nan_policy::raise.
summary describe(const data_view& x, const describe_options& options = {});

struct quantile_options {
  weight_view weights = {};
  int threads = 1;
  nan_policy nan = nan_policy::propagate;
};

/// Exact quantiles, (variable, order). Without weights by linear interpolation between the ranks 0 to n - 1;
/// with weights the smallest value at which the cumulated weight passes order W, averaged with the value
/// before it when that reaches order W exactly (to 2^-50 of W), so that equal weights give the usual median.
/// Throws as describe does.
matrix quantiles(const data_view& x, std::span<const double> orders, const quantile_options& options = {});
std::vector<double> median(const data_view& x, const quantile_options& options = {});

struct moments_options {
  bool cross_product = true;  ///< keeps a matrix of cols (cols + 1) / 2 numbers
  nan_policy nan = nan_policy::propagate;
};

namespace detail {

// Sums of (x - mean)^k, the mean being shift + offset. All zero while n is.
struct variable_sums {
  std::int64_t n = 0;
  double weight = 0, weight2 = 0, shift = 0, offset = 0, c2 = 0, c3 = 0, c4 = 0, min = 0, max = 0;
};

// Sums of products about the means of the complete rows: the lower triangle by rows.
struct joint_sums {
  std::int64_t n = 0;
  double weight = 0, weight2 = 0;
  std::vector<double> shift, offset, cross;
};

struct moment_sums {
  std::vector<variable_sums> variables;
  joint_sums joint;
};

}  // namespace detail

/// Moments to order 4, extrema and cross-product of data that come in blocks, from several places, or both.
/// Central sums are joined by the pairwise formulas (Chan, Golub and LeVeque; Pebay for the higher orders);
/// a mean is kept as the sum of two doubles, so that large offsets cost no digits.
class moments {
 public:
  /// Throws for no columns, or more than 32768 with a cross-product.
  explicit moments(std::size_t cols, const moments_options& options = {});

  /// Throws as describe does, and for other columns than cols(); a block may be empty.
  void add(const data_view& x, const weight_view& weights = {}, int threads = 1);

  /// As if what the other has seen had been added. Throws for another number of columns, other options.
  void merge(const moments& other);

  std::size_t cols() const { return sums_.variables.size(); }
  const moments_options& options() const { return options_; }

  // Per variable, as in summary.
  std::vector<std::int64_t> count() const;
  std::vector<double> weight() const, mean() const, variance() const, sd() const;
  std::vector<double> skewness() const, kurtosis() const, min() const, max() const;
  /// Weighted means of x^order and of (x - mean)^order. Throws for orders outside 1 to 4.
  std::vector<double> raw(int order) const, central(int order) const;

  // Over the observations that counted for every variable. They throw without the option cross_product.
  std::int64_t complete() const;
  matrix cross_product() const;  ///< sums of products about the means
  matrix covariance() const, correlation() const;

  /// An image of one form on every machine: magic, version, options, sizes, little-endian numbers and
  /// the 64-bit FNV-1a hash of all before it. from_bytes throws for an image that is truncated, too long,
  /// damaged, of another version, or whose content is impossible.
  std::vector<std::byte> to_bytes() const;
  static moments from_bytes(std::span<const std::byte> bytes);

 private:
  friend summary describe(const data_view& x, const describe_options& options);
  moments_options options_;
  detail::moment_sums sums_;
};

/// Approximate quantiles of data that come in blocks and are never kept. Whatever the order of arrival, the
/// rank of an answer is off by at most epsilon times the number of values. Weights are not offered. Moves,
/// but does not copy; one that was moved from may only be assigned to or destroyed.
class quantile_sketch {
 public:
  /// Throws for no columns, and for an epsilon that is not above 0 and at most 1.
  explicit quantile_sketch(std::size_t cols, double epsilon = 0.001, nan_policy nan = nan_policy::propagate);

  /// Throws for other columns than cols(), null data, and a NaN under nan_policy::raise.
  void add(const data_view& x);

  std::size_t cols() const;
  double epsilon() const;
  /// Values of the variable so far, without NaNs.
  std::int64_t count(std::size_t variable) const;

  /// NaN before the first value and, under nan_policy::propagate, after a NaN. Throws for a variable that is
  /// not there and an order outside 0 to 1.
  double quantile(std::size_t variable, double order) const;

  /// The answer, and bounds of how many values are not above it (its rank, 1 to count, if values differ);
  /// they are at most 2 epsilon count apart.
  struct estimate {
    double value;
    std::int64_t lowest_rank, highest_rank, count;
  };
  estimate bounds(std::size_t variable, double order) const;

 private:
  struct state;
  struct release {
    void operator()(state* p) const;
  };
  std::unique_ptr<state, release> state_;
};

/// Sorts in place, by radix: -0.0 before +0.0, NaNs outside all numbers by their sign. Throws for more than
/// INT32_MAX elements.
void sort(std::span<double> x, bool descending = false);
void sort(std::span<float> x, bool descending = false);
void sort(std::span<std::int32_t> x, bool descending = false);

/// Positions of the elements in sorted order; equal ones keep theirs. Throws as sort does.
std::vector<std::int32_t> sort_index(std::span<const float> x, bool descending = false);
std::vector<std::int32_t> sort_index(std::span<const std::int32_t> x, bool descending = false);

}  // namespace tmk
