// SPDX-License-Identifier: Apache-2.0
// Random streams, and arrays filled with variates of the usual laws.
//
//   tmk::stream g(tmk::generator::mt19937, 2026);    any integer is a good seed, and so is any list of words
//   tmk::exponential(g, x, {.rate = 2.0});           x: a vector or span of double or float
//   tmk::stream h = g;  h.skip(1'000'000'000);       an independent copy, jumped ahead
//   std::shuffle(v.begin(), v.end(), g);             a standard uniform random bit generator, too
//
// A sequence does not depend on how it is cut into calls (gaussian_method::pairs apart). A call that is
// refused throws tmk::error and leaves stream and array alone; when a generator fails half way, the array may
// be partly written. A stream is used by one thread at a time.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <tmk/error.hpp>
#include <tmk/seed_sequence.hpp>
#include <tmk/uniform.hpp>
#include <utility>
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

/// Seed words that go to the generator as they are, for sequences published under a seed. Streams of related
/// words are related: of many generators the first numbers of seeds 1 and 2 are alike.
struct raw_seed {
  raw_seed(std::initializer_list<std::uint32_t> list) : words(list) {}
  explicit raw_seed(std::span<const std::uint32_t> list) : words(list.begin(), list.end()) {}
  std::vector<std::uint32_t> words;
};

/// A generator with its state. Copies continue independently; a stream that was moved from may only be
/// assigned to or destroyed, and anything else throws tmk::error.
class stream {
 public:
  /// Seeds are hashed to as many words as the generator takes (the algorithm of NumPy's SeedSequence, with
  /// generator and set as the spawn key), so that streams of seeds 1, 2, 3, ... and of the sets of a family
  /// have nothing in common. A word or number is the list of its 32-bit words, lowest first; no words are
  /// those of 0, and zeros at the end of up to four words make no difference. `set` selects a member of wh
  /// or mt2203. For sobol and niederreiter the one word is the count of dimensions, as in sobol(dimensions);
  /// the hardware generator has no seed. Throws tmk::error for a generator or set that does not exist or
  /// that the processor cannot run, for a negative seed, and for dimensions that the generator has not.
  explicit stream(generator g, std::span<const std::uint32_t> seeds = {}, int set = 0);
  stream(generator g, std::initializer_list<std::uint32_t> seeds, int set = 0);
  template <std::integral Seed>
  requires(!std::same_as<Seed, bool> && sizeof(Seed) <= 8) stream(generator g, Seed seed, int set = 0)
      : stream(g, static_cast<std::uint64_t>(seed), std::cmp_less(seed, 0), set) {}

  /// The same from a sequence, which may be somebody's child.
  stream(generator g, const seed_sequence& seeds, int set = 0);

  /// The words as they are; none is the generator's own default.
  stream(generator g, const raw_seed& seeds, int set = 0);

  /// Points of 1 to 40 (Sobol) or 1 to 318 (Niederreiter) dimensions: a fill gives the coordinates of the
  /// first point, then those of the second. Throws for other counts.
  [[nodiscard]] static stream sobol(int dimensions);
  [[nodiscard]] static stream niederreiter(int dimensions);

  stream(const stream& other);
  stream& operator=(const stream& other);
  stream(stream&&) noexcept = default;
  stream& operator=(stream&&) noexcept = default;

  /// The generator without its parameter set, which is the other.
  [[nodiscard]] generator kind() const;
  [[nodiscard]] int set() const;

  /// Leaves `count` elements of the generator out: elements_per_variate gives the number that a variate
  /// takes. Throws for r250, mt2203, hardware, and for a negative count. A number that
  /// gaussian_method::kept_pairs keeps is not left out.
  void skip(std::int64_t count);

  /// Leaves 2^64 elements out, more than a count of skip can say; call it again for more. As long as four
  /// long skips: 40 ms of mt19937. Throws for generators that do not skip, and for mcg31m1 and mcg59, whose
  /// periods are shorter.
  void jump();

  /// From now on elements k, k + parts, k + 2 parts, ... of what the stream would have given. For mcg31m1,
  /// mcg59, wh; of sobol and niederreiter, parts = INT32_MAX selects coordinate k. Throws for other
  /// generators, for parts below 1, for k outside 0 to parts - 1, and for an even number of parts of mcg59,
  /// whose modulus is a power of two: every second element has a shorter period and fails statistical tests.
  void leapfrog(int k, int parts);

  /// Streams of the same generator and set, whose seeds are the next `count` children of this one's:
  /// unrelated to it and to one another, as deep as wanted. They do not depend on what was drawn. Throws
  /// tmk::error for a negative count and for streams without a seed sequence: loaded, raw or quasi-random
  /// ones.
  [[nodiscard]] std::vector<stream> spawn(int count);

  /// The state, with what distributions keep, to be continued elsewhere or later. The image does not depend
  /// on the machine, and ends with a hash. A file is written under another name in the same folder and then
  /// renamed: when that fails, the earlier file is unchanged. load throws for a file that is missing and for
  /// an image that is truncated, damaged, of a later version, or of a generator that is not there.
  void save(const std::string& path) const;
  [[nodiscard]] std::vector<std::byte> save() const;
  [[nodiscard]] static stream load(const std::string& path);
  [[nodiscard]] static stream load(std::span<const std::byte> image);

  /// Images that the C interface saved: without a hash, so that a damaged state may go unseen.
  [[nodiscard]] static stream load_c_image(const std::string& path);
  [[nodiscard]] static stream load_c_image(std::span<const std::byte> image);

  /// A uniform random bit generator in the standard's sense: words of 32 bits. Generators whose elements do
  /// not hold 32 random bits make a word of the upper halves of two elements.
  using result_type = std::uint32_t;
  static constexpr result_type min() { return 0; }
  static constexpr result_type max() { return UINT32_MAX; }
  /// The next word. Words come from a block that was drawn ahead; whatever else is asked of the stream finds
  /// it just after the last word that was taken.
  result_type operator()() {
    return ahead_ != nullptr && ahead_->taken < block_words ? ahead_->words[ahead_->taken++] : next_block();
  }
  /// The next two words, the first of them in the upper half.
  std::uint64_t next_pair() {
    if (ahead_ == nullptr || ahead_->taken + 2 > block_words) [[unlikely]]
      return pair_across_blocks();
    const result_type* const words = ahead_->words + ahead_->taken;
    ahead_->taken += 2;
    return static_cast<std::uint64_t>(words[0]) << 32 | words[1];
  }

  /// For the C interface. What it draws follows the last word taken; after another word, ask again.
  [[nodiscard]] VtsStream* handle() const;

 private:
  struct release {
    void operator()(VtsStream* p) const;
  };
  using handle_owner = std::unique_ptr<VtsStream, release>;
  static constexpr unsigned block_words = 1024, singles_first = 8;
  // Words of the stream that are drawn already, from a copy: the handle is before the first of them. The
  // first few after any other use are drawn one by one, since a program that mixes the two wants no copies.
  struct block_ahead {
    unsigned singles = 0, taken = block_words;
    handle_owner after;
    result_type words[block_words];
  };

  explicit stream(VtsStream* p) : handle_(p) {}
  stream(generator g, std::uint64_t seed, bool negative, int set);
  VtsStream* require(const char* function) const;  // wherever its position is
  VtsStream* settled(const char* function) const;  // just after the last word taken
  static void pass_over_taken(VtsStream* handle, const block_ahead* ahead);
  result_type next_block();
  std::uint64_t pair_across_blocks();
  handle_owner handle_;
  mutable std::unique_ptr<block_ahead> ahead_;
  std::optional<seed_sequence> seeds_;
  std::uint32_t spawned_ = 0;
};

/// A stream of the generator that is the best choice where nothing speaks for another: philox4x32x10, fast on
/// every tier, of period 2^130, each of whose 2^64 keys is a stream of its own. Seeds as for tmk::stream.
template <std::integral Seed>
[[nodiscard]] stream random(Seed seed) {
  return stream(generator::philox4x32x10, seed);
}
[[nodiscard]] inline stream random(const seed_sequence& seeds) { return {generator::philox4x32x10, seeds}; }
/// Seeded by the system's entropy.
[[nodiscard]] inline stream random() { return random(seed_sequence::of_system()); }

/// `parts` streams for as many threads or machines, by the safest way that the generator has:
///   wh, mt2203            sets 0 to parts - 1, at most 273 and 6024;
///   mt19937, sfmt19937, mrg32k3a   of one sequence, 2^62 elements apart;
///   mcg31m1, mcg59        of one sequence, at the golden section of the period divided by parts;
///   philox4x32x10, ars5, r250, hardware   seeds that are children of one.
/// docs/parallel-streams.md tells how many are safe. Throws tmk::error for parts below 1 or above the count
/// of sets, and for sobol and niederreiter.
[[nodiscard]] std::vector<stream> streams(generator g, const seed_sequence& seeds, int parts);
template <std::integral Seed>
[[nodiscard]] std::vector<stream> streams(generator g, Seed seed, int parts) {
  return streams(g, seed_sequence(seed), parts);
}

/// `parts` streams that share the elements of g: part k gives k, k + parts, ... Throws as stream::leapfrog,
/// and for sobol and niederreiter.
[[nodiscard]] std::vector<stream> leapfrog(const stream& g, int parts);

enum class gaussian_method {
  pairs,       ///< Box and Muller; of an odd count the last number's partner is lost
  kept_pairs,  ///< Box and Muller; the stream keeps the partner for the next call
  inversion,   ///< one uniform per number, by the inverse error function
  ziggurat,    ///< the fastest; a number takes 64 random bits (a single: 32), or rarely twice as many
};

/// How much of the generator a uniform double takes.
enum class resolution {
  full,      ///< 53 bits: two elements where one has no more than 32 bits
  one_word,  ///< one element, and no more bits than it has: the numbers of the C interface, ends included
};

/// The laws with their parameters. Scales, rates and shapes are positive; everything is finite, also when
/// rounded to the elements' type; tmk::error names what is not. u is uniform over (0, 1) and never 0 or 1: a
/// double carries 53 bits (of sobol and niederreiter 32), a single the 24 of its format.
namespace distribution {

/// Between low and high, low < high. Neither occurs, but for resolution::one_word, where both may.
struct uniform {
  double low = 0, high = 1;
  tmk::resolution resolution = tmk::resolution::full;
};
/// Density rate e^(-rate (x - location)). location - ln(u) / rate.
struct exponential {
  double rate = 1, location = 0;
};
/// location + scale tan(pi (u - 1/2))
struct cauchy {
  double location = 0, scale = 1;
};
/// Of the greatest of many: location - scale ln(-ln u). The C interface has + for its sign.
struct gumbel {
  double location = 0, scale = 1;
};
/// Density e^(-|x - location| / scale) / (2 scale).
struct laplace {
  double location = 0, scale = 1;
};
/// location + scale sqrt(-2 ln u). The C interface has no 2: its beta is sqrt(2) scale.
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
/// location + scale x, x of density x^(shape - 1) e^-x / Gamma(shape); 2^-20 <= shape <= 2^30.
struct gamma {
  double shape = 1, scale = 1, location = 0;
};
/// The sum of the squares of `degrees` standard normals, for any positive number of them: gamma with shape
/// degrees / 2 and scale 2.
struct chi_square {
  double degrees = 1;
};
/// Between 0 and 1, of density x^(a - 1) (1 - x)^(b - 1) / B(a, b); 2^-20 <= a, b <= 2^30.
struct beta {
  double a = 1, b = 1;
};
/// location + scale t, t a standard normal divided by sqrt(chi_square / degrees).
struct student_t {
  double degrees = 1, location = 0, scale = 1;
};

/// low to high, both included, low <= high; each as likely as any other (D. Lemire, Fast random integer
/// generation in an interval, ACM TOMACS 29, 2019). Of mcg59, wh and the quasi-random generators: even but
/// for the resolution of their doubles.
struct uniform_int {
  std::int32_t low = 0, high = 1;
};
/// 1 with probability p to within 2^-53, else 0; 0 <= p <= 1, where 0 gives only zeros and 1 only ones.
struct bernoulli {
  double p = 0.5;
};
/// Failures before the first success; 10^-7 <= p <= 1.
struct geometric {
  double p = 0.5;
};
/// Events of rate 1 in a time of `mean`; 0 < mean <= 2^31 - 2^19, so that variates are integers of 32 bits.
struct poisson {
  double mean = 1;
};
/// Successes among `trials` of probability p; trials >= 0, 0 <= p <= 1.
struct binomial {
  std::int32_t trials = 1;
  double p = 0.5;
};
/// Failures before the success number `successes`, which may be any positive number (a Poisson law whose mean
/// is gamma with shape `successes` and scale (1 - p) / p); 0 < p <= 1, and the mean successes (1 - p) / p no
/// more than 2^31 - 1, which variates above it become.
struct negative_binomial {
  double successes = 1, p = 0.5;
};
/// How many of a sample are among the marked members of a population, drawn without replacement;
/// 0 <= sample <= population, 0 <= marked <= population.
struct hypergeometric {
  std::int32_t population = 1, sample = 1, marked = 1;
};

using continuous = std::variant<uniform, exponential, cauchy, gumbel, laplace, rayleigh, weibull, gaussian,
                                lognormal, gamma, chi_square, beta, student_t>;
using discrete =
    std::variant<uniform_int, bernoulli, geometric, poisson, binomial, negative_binomial, hypergeometric>;

}  // namespace distribution

/// Fills r with variates of the law.
void fill(stream& g, std::span<double> r, const distribution::continuous& law);
void fill(stream& g, std::span<float> r, const distribution::continuous& law);
void fill(stream& g, std::span<std::int32_t> r, const distribution::discrete& law);

/// The same, r being cut among up to `threads` threads: the numbers are those of fill, and the stream ends
/// where fill would leave it. Laws by rejection draw rounds of candidates, a round as many as numbers are
/// missing. Generators without skip-ahead, and methods whose numbers take different counts of uniforms
/// (kept_pairs, ziggurat), run on one thread. A jump of MT19937 and SFMT19937 costs as much as millions of
/// their words, so that only long arrays gain. Throws also for threads below 1.
void fill_parallel(stream& g, std::span<double> r, const distribution::continuous& law, int threads);
void fill_parallel(stream& g, std::span<float> r, const distribution::continuous& law, int threads);
void fill_parallel(stream& g, std::span<std::int32_t> r, const distribution::discrete& law, int threads);

/// How many elements of the generator a variate takes in arrays of T: skip(n * elements_per_variate<T>(g,
/// law)) leaves n of them out. Of laws by rejection it is a candidate that takes so many, and a variate is
/// the next candidate that is accepted; of uniform_int all but a few in 2^64 / (high - low) are. 0 where it
/// depends on the draws before.
template <class T>
requires(std::same_as<T, double> || std::same_as<T, float>)
    [[nodiscard]] int elements_per_variate(const stream& g, const distribution::continuous& law);
[[nodiscard]] int elements_per_variate(const stream& g, const distribution::discrete& law);

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
inline constexpr detail::continuous_call<distribution::gamma> gamma;
inline constexpr detail::continuous_call<distribution::chi_square> chi_square;
inline constexpr detail::continuous_call<distribution::beta> beta;
inline constexpr detail::continuous_call<distribution::student_t> student_t;
inline constexpr detail::discrete_call<distribution::uniform_int> uniform_int;
inline constexpr detail::discrete_call<distribution::bernoulli> bernoulli;
inline constexpr detail::discrete_call<distribution::geometric> geometric;
inline constexpr detail::discrete_call<distribution::poisson> poisson;
inline constexpr detail::discrete_call<distribution::binomial> binomial;
inline constexpr detail::discrete_call<distribution::negative_binomial> negative_binomial;
inline constexpr detail::discrete_call<distribution::hypergeometric> hypergeometric;

/// r[i] is Poisson with mean means[i], as for distribution::poisson. Throws tmk::error for sizes that differ
/// and for the first mean that the law has not.
void poisson_each(stream& g, std::span<std::int32_t> r, std::span<const double> means);

/// How gaussian_mv finds the lower triangular factor T of a covariance T T'.
enum class factor_storage {
  full,      ///< p rows of p values, zero above the diagonal
  packed,    ///< the rows of the lower triangle one after the other, 1, 2, ... p values
  diagonal,  ///< p values: the components are independent
};

struct gaussian_mv_options {
  factor_storage storage = factor_storage::full;
  gaussian_method method = gaussian_method::ziggurat;
};

/// Rows of p = mean.size() values: mean + T z, z standard normals in the order of one sequence. Throws
/// tmk::error for a factor of another size, whose diagonal is not positive, that is not lower triangular or
/// not finite, for a mean that is not finite, where p does not divide the size of r, and for
/// gaussian_method::pairs.
void gaussian_mv(stream& g, std::span<double> r, std::span<const double> mean, std::span<const double> factor,
                 const gaussian_mv_options& options = {});
void gaussian_mv(stream& g, std::span<float> r, std::span<const float> mean, std::span<const float> factor,
                 const gaussian_mv_options& options = {});

/// Rows of alpha.size() positive numbers whose sum is 1, of density proportional to the product of
/// x[k]^(alpha[k] - 1). A call draws column after column: two calls give other rows than one. Throws
/// tmk::error for alpha[k] outside 2^-20 to 2^30, for fewer than two of them, and where their number does not
/// divide the size of r.
void dirichlet(stream& g, std::span<double> r, std::span<const double> alpha);

/// Rows of p.size() counts: how many of `trials` fall into class k, of probability p[k]. Throws tmk::error
/// for negative trials, for probabilities that are negative or whose sum differs from 1 by more than 10^-9,
/// and where their number does not divide the size of r.
void multinomial(stream& g, std::span<std::int32_t> r, std::int32_t trials, std::span<const double> p);

}  // namespace tmk
