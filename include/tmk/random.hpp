// Random streams, and arrays filled with variates of the usual laws.
//
//   tmk::stream g(tmk::generator::mt19937, {0x123, 0x234, 0x345, 0x456});
//   tmk::exponential(g, x, {.rate = 2.0});           x: a vector or span of double or float
//   tmk::stream h = g;  h.skip(1'000'000'000);       an independent copy, jumped ahead
//   std::shuffle(v.begin(), v.end(), g);             a standard uniform random bit generator, too
//
// A sequence does not depend on how it is cut into calls (gaussian_method::pairs apart). A call that is
// refused throws tmk::error and leaves stream and array alone; when a generator fails half way, the array may
// be partly written. A stream is used by one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <tmk/error.hpp>
#include <tmk/uniform.hpp>
#include <type_traits>
#include <variant>
#include <vector>

struct VtsStream;

namespace tmk {

/// The numbers are those of the C interface. wh and mt2203 are families of 273 and 6024 parameter sets.
enum class generator : std::int32_t {
  mcg31m1 = 0x100000,
  r250 = 0x200000,
  mrg32k3a = 0x300000,
  mcg59 = 0x400000,
  wh = 0x500000,
  sobol = 0x600000,
  niederreiter = 0x700000,
  mt19937 = 0x800000,
  mt2203 = 0x900000,
  sfmt19937 = 0xD00000,
  hardware = 0xE00000,
  ars5 = 0xF00000,
  philox4x32x10 = 0x1000000,
};

/// A generator with its state. Copies go on independently; a stream that was moved from may only be assigned
/// to or destroyed, and anything else throws tmk::error.
class stream {
 public:
  /// Any number of seed words serves: none is the generator's own default. `set` selects a member of a
  /// family. Throws tmk::error for a generator or set that does not exist or that the processor cannot run.
  explicit stream(generator g, std::span<const std::uint32_t> seeds = {}, int set = 0);
  stream(generator g, std::initializer_list<std::uint32_t> seeds, int set = 0);
  stream(generator g, std::uint32_t seed, int set = 0);

  stream(const stream& other);
  stream& operator=(const stream& other);
  stream(stream&&) noexcept = default;
  stream& operator=(stream&&) noexcept = default;

  /// The generator without its parameter set, which is the other.
  generator kind() const;
  int set() const;

  /// Leaves `count` elements of the generator out. A variate takes one element, but two of laplace. Throws
  /// for r250, mt2203, hardware. A number that gaussian_method::kept_pairs keeps is not left out.
  void skip(std::int64_t count);

  /// From now on elements k, k + parts, k + 2 parts, ... of what the stream would have given. For mcg31m1,
  /// mcg59, wh; of sobol and niederreiter, parts = INT32_MAX selects coordinate k. Throws for other
  /// generators, for parts below 1 and k outside 0 to parts - 1.
  void leapfrog(int k, int parts);

  /// State and what distributions keep, to go on elsewhere or later. The image does not depend on the
  /// machine. load throws for a file that is missing and for an image that is truncated, damaged, of a later
  /// version, or of a generator that is not there.
  void save(const std::string& path) const;
  std::vector<std::byte> save() const;
  static stream load(const std::string& path);
  static stream load(std::span<const std::byte> image);

  /// A uniform random bit generator in the standard's sense: words of 32 bits. Generators whose elements do
  /// not hold 32 random bits make a word of the upper halves of two elements.
  using result_type = std::uint32_t;
  static constexpr result_type min() { return 0; }
  static constexpr result_type max() { return UINT32_MAX; }
  result_type operator()();

  /// For the C interface.
  VtsStream* handle() const;

 private:
  struct release {
    void operator()(VtsStream* p) const;
  };
  explicit stream(VtsStream* p) : handle_(p) {}
  VtsStream* require(const char* function) const;
  std::unique_ptr<VtsStream, release> handle_;
};

/// `parts` streams that share the elements of g: part k gives k, k + parts, ... Throws as stream::leapfrog.
std::vector<stream> leapfrog(const stream& g, int parts);

enum class gaussian_method {
  pairs,       ///< Box and Muller; of an odd count the last number's partner is lost
  kept_pairs,  ///< Box and Muller; the stream keeps the partner for the next call
  inversion,   ///< one uniform per number, by the inverse error function
};

/// The laws with their parameters. Scales, rates and shapes are positive; everything is finite, also when
/// rounded to the elements' type; tmk::error names what is not. u is uniform over (0, 1).
namespace distribution {

/// Between low and high, low < high; both may occur, by rounding.
struct uniform {
  double low = 0, high = 1;
};
/// Density rate e^(-rate (x - location)). location - ln(u) / rate.
struct exponential {
  double rate = 1, location = 0;
};
/// location + scale tan(pi (u - 1/2))
struct cauchy {
  double location = 0, scale = 1;
};
/// Of the greatest of many: location - scale ln(-ln u). The C kernel has + for its sign.
struct gumbel {
  double location = 0, scale = 1;
};
/// Density e^(-|x - location| / scale) / (2 scale).
struct laplace {
  double location = 0, scale = 1;
};
/// location + scale sqrt(-2 ln u). The C kernel has no 2: its beta is sqrt(2) scale.
struct rayleigh {
  double scale = 1, location = 0;
};
/// location + scale (-ln u)^(1/shape)
struct weibull {
  double shape = 1, scale = 1, location = 0;
};
struct gaussian {
  double mean = 0, sd = 1;
  gaussian_method method = gaussian_method::inversion;
};
/// location + scale e^z, z normal with log_mean and log_sd. kept_pairs or inversion; pairs is refused.
struct lognormal {
  double log_mean = 0, log_sd = 1, location = 0, scale = 1;
  gaussian_method method = gaussian_method::inversion;
};

/// low to high, both included; low <= high < INT32_MAX.
struct uniform_int {
  std::int32_t low = 0, high = 1;
};
/// 1 with probability p, else 0; 0 <= p <= 1, rounded to single precision.
struct bernoulli {
  double p = 0.5;
};
/// Failures before the first success; 10^-6 <= p <= 1.
struct geometric {
  double p = 0.5;
};

using continuous =
    std::variant<uniform, exponential, cauchy, gumbel, laplace, rayleigh, weibull, gaussian, lognormal>;
using discrete = std::variant<uniform_int, bernoulli, geometric>;

}  // namespace distribution

/// Fills r with variates of the law.
void fill(stream& g, std::span<double> r, const distribution::continuous& law);
void fill(stream& g, std::span<float> r, const distribution::continuous& law);
void fill(stream& g, std::span<std::int32_t> r, const distribution::discrete& law);

/// The same, r being cut among up to `threads` threads: the numbers are those of fill, and the stream ends
/// where fill would leave it. Generators without skip-ahead, and kept_pairs, run on one thread. A jump costs
/// MT19937 and SFMT19937 milliseconds, so that only long arrays gain. Throws also for threads below 1.
void fill_parallel(stream& g, std::span<double> r, const distribution::continuous& law, int threads);
void fill_parallel(stream& g, std::span<float> r, const distribution::continuous& law, int threads);
void fill_parallel(stream& g, std::span<std::int32_t> r, const distribution::discrete& law, int threads);

/// Random bits. Throws for generators whose elements do not hold 32 of them.
void bits(stream& g, std::span<std::uint32_t> r);
void bits(stream& g, std::span<std::uint64_t> r);

namespace detail {

template <class Law>
struct continuous_call {
  void operator()(stream& g, std::span<double> r, const Law& law = {}) const { fill(g, r, law); }
  void operator()(stream& g, std::span<float> r, const Law& law = {}) const { fill(g, r, law); }
};

inline void uniform_call::operator()(stream& g, std::span<double> r) const {
  fill(g, r, distribution::uniform());
}
inline void uniform_call::operator()(stream& g, std::span<float> r) const {
  fill(g, r, distribution::uniform());
}
inline void uniform_call::operator()(stream& g, std::span<double> r, const distribution::uniform& law) const {
  fill(g, r, law);
}
inline void uniform_call::operator()(stream& g, std::span<float> r, const distribution::uniform& law) const {
  fill(g, r, law);
}

template <class Law>
struct by_method_call : continuous_call<Law> {
  using continuous_call<Law>::operator();
  void operator()(stream& g, std::span<double> r, Law law, gaussian_method method) const {
    law.method = method;
    fill(g, r, law);
  }
  void operator()(stream& g, std::span<float> r, Law law, gaussian_method method) const {
    law.method = method;
    fill(g, r, law);
  }
};

template <class Law>
struct discrete_call {
  void operator()(stream& g, std::span<std::int32_t> r, const Law& law = {}) const { fill(g, r, law); }
};

}  // namespace detail

inline constexpr detail::continuous_call<distribution::exponential> exponential;
inline constexpr detail::continuous_call<distribution::cauchy> cauchy;
inline constexpr detail::continuous_call<distribution::gumbel> gumbel;
inline constexpr detail::continuous_call<distribution::laplace> laplace;
inline constexpr detail::continuous_call<distribution::rayleigh> rayleigh;
inline constexpr detail::continuous_call<distribution::weibull> weibull;
inline constexpr detail::by_method_call<distribution::gaussian> gaussian;
inline constexpr detail::by_method_call<distribution::lognormal> lognormal;
inline constexpr detail::discrete_call<distribution::uniform_int> uniform_int;
inline constexpr detail::discrete_call<distribution::bernoulli> bernoulli;
inline constexpr detail::discrete_call<distribution::geometric> geometric;

}  // namespace tmk
