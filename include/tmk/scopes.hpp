// SPDX-License-Identifier: Apache-2.0
// How the calls of a thread run: accuracy, tier, what becomes of bad elements, and on how many threads.
// Scopes belong to the thread that made them, nest, and put back what they found.
#pragma once

#include <complex>
#include <cstdint>
#include <functional>
#include <string_view>
#include <tmk/error.hpp>
#include <type_traits>
#include <utility>
#include <vector>

namespace tmk {

/// What a call promises. The numbers are those of the C interface's mode word.
enum class accuracy : int {
  inherited = 0,  ///< the thread's, high unless changed
  low = 1,        ///< all but the last two or three bits: 21 correct bits in single, 50 in double
  high = 2,       ///< the full format, less than one unit in the last place away
  fast = 3,       ///< half the bits: 11 in single, 26 in double
};

/// Sets the accuracy of those calls of this thread that do not name one. Raises tmk::error for any value but
/// low, high, fast.
void set_accuracy(accuracy level);

/// The thread's accuracy, and another one for the life of the object. Raises as set_accuracy does.
class [[nodiscard]] accuracy_scope {
 public:
  [[nodiscard]] explicit accuracy_scope(accuracy level);
  ~accuracy_scope();
  accuracy_scope(const accuracy_scope&) = delete;
  accuracy_scope& operator=(const accuracy_scope&) = delete;

 private:
  accuracy previous_;
};

/// The instruction set that kernels are compiled for.
enum class tier : int {
  W7 = 0,      ///< SSE2, on every processor; its bits never change
  V3 = 1,      ///< AVX2 and FMA
  V4 = 2,      ///< AVX-512 F, BW, DQ, VL
  widest = 3,  ///< to select_tier: the widest that the processor has and TMK_TIER allows
};

/// Puts a tier in force for the whole process and returns it. No other thread may be inside a call. Not
/// needed for speed: the first call of all selects the widest. Raises tmk::error when the processor or the
/// environment variable TMK_TIER (W7, V3 or V4) forbids the tier, or TMK_TIER holds anything else.
tier select_tier(tier wanted = tier::widest);

/// The tier in force, selected first if none was. Raises as select_tier does.
tier current_tier();

/// "W7", "V3" or "V4".
std::string_view name(tier t);

/// What was wrong with an element.
enum class math_status : int {
  domain = 1,       ///< no value there: the result is NaN
  singularity = 2,  ///< a pole: the result is infinite
  overflow = 3,     ///< too large for the format
  underflow = 4,    ///< too small for the format: zero or subnormal
};

/// One bad element, with single precision widened and imaginary parts zero for real functions.
struct math_error {
  math_status code;
  std::int64_t index;            ///< in the arrays of the call
  std::string_view function;     ///< "ln"
  std::complex<double> a1, a2;   ///< arguments; a2 equals a1 where there is only one array
  std::complex<double> result;   ///< the element of the result array; assign to replace it
  std::complex<double> result2;  ///< the same for the second result array, where there is one
};

namespace detail {

template <class Result, class Argument>
constexpr bool takes_reference(const std::function<Result(Argument)>*) {
  return std::is_reference_v<Argument>;
}

// A generic lambda has no one signature; it is assumed to take a reference.
template <class Function>
constexpr bool takes_reference() {
  if constexpr (requires(Function f) { std::function(f); })
    return takes_reference(static_cast<decltype(std::function(std::declval<Function>()))*>(nullptr));
  else
    return true;
}

}  // namespace detail

/// What an error_scope without a function of its own does.
enum class on_error {
  collect,  ///< keeps them for errors()
  raise,    ///< throws tmk::error for the first of each call
  ignore,   ///< nothing: results stay as computed, no status is kept, at the speed of good elements or nearly
            ///< so
};

/// Decides, for the thread and the life of the object, what becomes of bad elements; the innermost scope
/// receives them, after the call has computed all its elements, by rising index, on the calling thread,
/// whatever the number of threads that computed. Nothing else is reported then: errno stays, and neither the
/// C callback nor a trap is called. Without a scope the C interface reports as the thread's mode word sets.
class [[nodiscard]] error_scope {
 public:
  using handler = std::function<void(math_error&)>;

  /// Raises tmk::error for any value but the three.
  [[nodiscard]] explicit error_scope(on_error what = on_error::collect);

  /// Calls `repair`, which takes a math_error by reference, for each; results that it changes reach the
  /// arrays. Its own calls report to the enclosing scope. What it throws leaves the call, and later elements
  /// are as they were computed. Raises tmk::error for an empty function.
  template <class Repair>
  requires std::is_invocable_v<Repair&, math_error&>
  [[nodiscard]] explicit error_scope(Repair repair) : error_scope(handler(std::move(repair))) {
    static_assert(detail::takes_reference<Repair>(), "a copy of the error repairs nothing: take a reference");
  }
  [[nodiscard]] explicit error_scope(handler repair);

  ~error_scope();
  error_scope(const error_scope&) = delete;
  error_scope& operator=(const error_scope&) = delete;

  /// What a collecting scope has received, in order of the calls and of their elements.
  const std::vector<math_error>& errors() const noexcept { return errors_; }

  /// Hands one error to this scope.
  void handle(math_error& e);

  /// Whether it uses no more than the first error of a call.
  bool first_only() const noexcept { return what_ == on_error::raise; }

 private:
  on_error what_ = on_error::collect;
  handler handler_;
  std::vector<math_error> errors_;
  std::uint32_t mode_ = 0;
  error_scope* previous_;
};

/// Shares the long calls of the thread among up to `threads` threads, with the same results and errors to the
/// bit. Calls that are too short to gain run on one. Raises tmk::error for fewer than 1.
class [[nodiscard]] parallel_scope {
 public:
  [[nodiscard]] explicit parallel_scope(int threads);
  ~parallel_scope();
  parallel_scope(const parallel_scope&) = delete;
  parallel_scope& operator=(const parallel_scope&) = delete;

 private:
  int previous_;
};

}  // namespace tmk
