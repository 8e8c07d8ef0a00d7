// SPDX-License-Identifier: Apache-2.0
// Streams for the Python layer (tmk/random.py). A law goes by its name with its parameters as numbers, in the
// order of its declaration in tmk/random.hpp.
#include "random.hpp"

#include <numpy/random/bitgen.h>

#include <map>
#include <span>
#include <tmk/random.hpp>
#include <tmk/sampling.hpp>

#include "arrays.hpp"
#include "random/generators/owen.hpp"

namespace tmk::python {

namespace {

using parameters = std::vector<double>;
namespace laws = distribution;

gaussian_method method_of(int method) { return static_cast<gaussian_method>(method); }
std::int32_t whole(double x) { return static_cast<std::int32_t>(x); }  // the Python layer checks the range

using make_continuous = laws::continuous (*)(const parameters& p, int method);
const std::map<std::string, make_continuous> continuous_laws = {
    {"uniform",
     [](const parameters& p, int) -> laws::continuous {
       return laws::uniform{p[0], p[1]};
     }},
    {"exponential",
     [](const parameters& p, int) -> laws::continuous {
       return laws::exponential{p[0], p[1]};
     }},
    {"cauchy",
     [](const parameters& p, int) -> laws::continuous {
       return laws::cauchy{p[0], p[1]};
     }},
    {"gumbel",
     [](const parameters& p, int) -> laws::continuous {
       return laws::gumbel{p[0], p[1]};
     }},
    {"laplace",
     [](const parameters& p, int) -> laws::continuous {
       return laws::laplace{p[0], p[1]};
     }},
    {"rayleigh",
     [](const parameters& p, int) -> laws::continuous {
       return laws::rayleigh{p[0], p[1]};
     }},
    {"weibull",
     [](const parameters& p, int) -> laws::continuous {
       return laws::weibull{p[0], p[1], p[2]};
     }},
    {"normal",
     [](const parameters& p, int m) -> laws::continuous {
       return laws::gaussian{p[0], p[1], method_of(m)};
     }},
    {"lognormal",
     [](const parameters& p, int m) -> laws::continuous {
       return laws::lognormal{p[0], p[1], p[2], p[3], method_of(m)};
     }},
    {"gamma",
     [](const parameters& p, int) -> laws::continuous {
       return laws::gamma{p[0], p[1], p[2]};
     }},
    {"chisquare", [](const parameters& p, int) -> laws::continuous { return laws::chi_square{p[0]}; }},
    {"beta",
     [](const parameters& p, int) -> laws::continuous {
       return laws::beta{p[0], p[1]};
     }},
    {"standard_t",
     [](const parameters& p, int) -> laws::continuous {
       return laws::student_t{p[0], p[1], p[2]};
     }},
};

using make_discrete = laws::discrete (*)(const parameters& p);
const std::map<std::string, make_discrete> discrete_laws = {
    {"integers",
     [](const parameters& p) -> laws::discrete {
       return laws::uniform_int{whole(p[0]), whole(p[1])};
     }},
    {"bernoulli", [](const parameters& p) -> laws::discrete { return laws::bernoulli{p[0]}; }},
    {"geometric", [](const parameters& p) -> laws::discrete { return laws::geometric{p[0]}; }},
    {"poisson", [](const parameters& p) -> laws::discrete { return laws::poisson{p[0]}; }},
    {"binomial",
     [](const parameters& p) -> laws::discrete {
       return laws::binomial{whole(p[0]), p[1]};
     }},
    {"negative_binomial",
     [](const parameters& p) -> laws::discrete {
       return laws::negative_binomial{p[0], p[1]};
     }},
    {"hypergeometric",
     [](const parameters& p) -> laws::discrete {
       return laws::hypergeometric{whole(p[0]), whole(p[1]), whole(p[2])};
     }},
};

template <class T>
using output = nb::ndarray<T, nb::ndim<1>, nb::c_contig, nb::device::cpu>;

template <class T>
std::span<T> span_of(const output<T>& r) {
  return {r.data(), r.size()};
}

template <class T, class Law>
void fill_with(stream& g, const output<T>& r, const Law& law, int threads) {
  const nb::gil_scoped_release release;
  fill_parallel(g, span_of(r), law, threads);
}

template <class T>
void fill_bits(stream& g, const output<T>& r) {
  const nb::gil_scoped_release release;
  bits(g, span_of(r));
}

// NumPy's doubles of two words: 27 bits of the first, 26 of the second. No operation rounds.
double double_of(std::uint64_t pair) {
  return static_cast<double>(static_cast<std::int64_t>(pair >> 37 << 26 | (pair & 0xFFFFFFFF) >> 6)) *
         0x1p-53;
}

// Integers of 32 bits have conversions in registers.
[[gnu::target_clones("avx512f", "avx2", "default")]] void to_doubles(const std::uint32_t* words,
                                                                     std::size_t n, double* r) {
  for (std::size_t i = 0; i < n; ++i) {
    const auto first = static_cast<std::int32_t>(words[2 * i] >> 5),
               second = static_cast<std::int32_t>(words[2 * i + 1] >> 6);
    r[i] = (first * 0x1p26 + second) * 0x1p-53;
  }
}

void fill_numpy_doubles(stream& g, const output<double>& r) {
  constexpr std::size_t block = 2048;
  const nb::gil_scoped_release release;
  std::uint32_t words[2 * block];
  const std::span<double> all = span_of(r);
  for (std::size_t from = 0; from < all.size(); from += block) {
    const std::span<double> part = all.subspan(from, std::min(block, all.size() - from));
    bits(g, std::span(words, 2 * part.size()));
    to_doubles(words, part.size(), part.data());
  }
}

// NumPy's bit generator over a stream, whose words it shares with all other uses of the stream.
void attach(const nb::capsule& capsule, stream& g) {
  auto* const b = static_cast<bitgen_t*>(capsule.data("BitGenerator"));
  b->state = &g;
  b->next_uint32 = [](void* s) { return (*static_cast<stream*>(s))(); };
  b->next_raw = [](void* s) -> std::uint64_t { return (*static_cast<stream*>(s))(); };
  b->next_uint64 = [](void* s) { return static_cast<stream*>(s)->next_pair(); };
  b->next_double = [](void* s) { return double_of(static_cast<stream*>(s)->next_pair()); };
}

// Points first, first + 1, ... as rows of coordinates; scrambled ones by Owen's method.
void fill_sobol(const output<double>& r, int dimensions, bool scrambled, std::uint64_t seed,
                std::uint32_t first) {
  const nb::gil_scoped_release release;
  sobol_points(span_of(r), dimensions, {scrambled ? scrambling::owen : scrambling::none, seed, first});
}

// Owen's scrambling of words by a key for each; their number is a multiple of rng::words_together.
void scramble(const output<std::uint32_t>& words, const output<std::uint32_t>& keys) {
  if (words.size() != keys.size() || words.size() % rng::words_together != 0 || words.size() > INT32_MAX)
    throw nb::value_error("words and keys are not as many, or not a multiple of 16");
  const nb::gil_scoped_release release;
  rng::point_kernels_now().scramble(static_cast<std::int32_t>(words.size()), words.data(), keys.data());
}

stream make_stream(int kind, const std::vector<std::uint32_t>& entropy,
                   const std::vector<std::uint32_t>& spawn_key, int set, bool raw) {
  const auto g = static_cast<generator>(kind);
  if (raw) return {g, raw_seed(std::span(entropy)), set};
  return {g, seed_sequence(std::span(entropy), std::span(spawn_key)), set};
}

}  // namespace

void add_random(nb::module_& m) {
  nb::class_<stream> c(m, "Stream");
  c.def("__init__", [](stream* self, int kind, const std::vector<std::uint32_t>& entropy,
                       const std::vector<std::uint32_t>& spawn_key, int set,
                       bool raw) { new (self) stream(make_stream(kind, entropy, spawn_key, set, raw)); });
  c.def_static("sobol", &stream::sobol);
  c.def_static("niederreiter", &stream::niederreiter);
  c.def("kind", [](const stream& g) { return static_cast<int>(g.kind()); });
  c.def("set", &stream::set);
  c.def("skip", &stream::skip);
  c.def("jump", &stream::jump);
  c.def("leapfrog", &stream::leapfrog);
  c.def("spawn", &stream::spawn);
  c.def("copy", [](const stream& g) { return stream(g); });
  c.def("assign", [](stream& g, const stream& other) { g = other; });
  c.def("save", [](const stream& g) { return bytes_of(g.save()); });
  c.def_static("load", [](const nb::bytes& image) { return stream::load(bytes_in(image)); });
  c.def("word", [](stream& g) { return g(); });
  c.def("bits32", fill_bits<std::uint32_t>);
  c.def("bits64", fill_bits<std::uint64_t>);
  c.def("numpy_doubles", fill_numpy_doubles);
  c.def("fill64",
        [](stream& g, const output<double>& r, const std::string& law, const parameters& p, int method,
           int threads) { fill_with(g, r, continuous_laws.at(law)(p, method), threads); });
  c.def("fill32",
        [](stream& g, const output<float>& r, const std::string& law, const parameters& p, int method,
           int threads) { fill_with(g, r, continuous_laws.at(law)(p, method), threads); });
  c.def("fill_int", [](stream& g, const output<std::int32_t>& r, const std::string& law, const parameters& p,
                       int threads) { fill_with(g, r, discrete_laws.at(law)(p), threads); });
  c.def("permutation", [](stream& g, std::size_t n) { return array_of(permutation(g, n)); });
  m.def("sobol_points", fill_sobol);
  m.def("scramble", scramble);
  m.def("attach", attach);  // the bit generator holds the stream
}

}  // namespace tmk::python
