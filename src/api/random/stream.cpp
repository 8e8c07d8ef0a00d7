// SPDX-License-Identifier: Apache-2.0
// Streams: seeded, copied, advanced and released; every status as tmk::error.
#include "api/random/stream.hpp"

#include <tmk/abi/vts.h>

#include <algorithm>
#include <cstdio>
#include <tmk/random.hpp>

#include "api/call/refuse.hpp"
#include "api/call/settings.hpp"
#include "api/call/status.hpp"
#include "api/random/seed.hpp"

namespace tmk {

namespace {

constexpr detail::status_sentence sentences[] = {
    {VTS_STATUS_BAD_ARGUMENT, "was seeded with words that it cannot use"},
    {VTS_STATUS_NO_MEMORY, "found no memory"},
    {VTS_STATUS_INVALID_BRNG, "is no generator"},
    {VTS_STATUS_NO_LEAPFROG, "is a generator that does not leapfrog"},
    {VTS_STATUS_NO_SKIPAHEAD, "is a generator that does not skip ahead"},
    {VTS_STATUS_NO_FIXED_WIDTH_BITS, "is a generator whose elements do not hold 32 random bits"},
    {VTS_STATUS_FILE_CLOSE, "could not be closed"},
    {VTS_STATUS_FILE_OPEN, "could not be opened"},
    {VTS_STATUS_FILE_WRITE, "could not be written"},
    {VTS_STATUS_FILE_READ, "ends before the stream does"},
    {VTS_STATUS_BAD_IMAGE, "does not hold a stream"},
    {VTS_STATUS_BAD_IMAGE_VERSION, "was written by a later version"},
    {VTS_STATUS_NO_RDRAND, "needs RDRAND, which the processor does not have"},
    {VTS_STATUS_NO_AES, "needs AES instructions, which the processor does not have"},
};

std::string hexadecimal(int32_t id) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%X", static_cast<unsigned>(id));
  return text;
}

int32_t id_of(generator g, int set) {
  constexpr int32_t one_family = 0x100000;
  const int32_t id = static_cast<int32_t>(g);
  const bool known = id >= one_family && id % one_family == 0 && id / one_family <= NRegBrngsNew;
  if (!known) detail::check_status("stream", "g", hexadecimal(id), VTS_STATUS_INVALID_BRNG);
  const int32_t sets = NumOffsets[id / one_family - 1];
  detail::refuse_unless_in("stream", "set", set, 0, sets - 1);
  return id + set;
}

// 0 for generators that are no digital sequences.
int most_dimensions(generator g) {
  return g == generator::sobol ? 40 : g == generator::niederreiter ? 318 : 0;
}

void check_dimensions(const char* function, generator g, std::int64_t dimensions) {
  detail::refuse_unless_in(function, "dimensions", dimensions, 1, most_dimensions(g));
}

VtsStreamHandle new_stream(int32_t id, std::span<const std::uint32_t> words) {
  if (words.size() > INT32_MAX)
    detail::refuse("stream", "seeds", std::to_string(words.size()), "has too many words");
  detail::select_first_tier();
  VtsStreamHandle handle = nullptr;
  const int32_t status = __vtsNewStreamEx(&handle, id, static_cast<int32_t>(words.size()), words.data());
  if (status < 0) {
    __vtsDeleteStream(&handle);
    detail::check_status("stream", "g", hexadecimal(id), status);
  }
  return handle;
}

// A digital sequence has no seed but its dimensions, whose direction numbers may follow.
VtsStreamHandle new_sequence(generator g, std::span<const std::uint32_t> words, int set) {
  const int32_t id = id_of(g, set);
  if (words.empty())
    detail::refuse("stream", "dimensions", "none",
                   "is missing, want 1 to " + std::to_string(most_dimensions(g)));
  check_dimensions("stream", g, words[0]);
  return new_stream(id, words);
}

}  // namespace

void detail::check_status(const char* function, const char* argument, const std::string& value,
                          int32_t status) {
  if (status < 0) check_status(function, status, {argument, value, sentences});
}

void detail::check_status(const char* function, VtsStreamHandle g, int32_t status) {
  if (status < 0) check_status(function, "g", hexadecimal(__vtsGetStreamStateBrng(g)), status);
}

namespace {

// Words of generators whose elements do not hold 32 random bits are made of the upper halves of two.
void draw_words(VtsStream* handle, std::span<std::uint32_t> words) {
  if (words.empty()) return;
  int32_t status = _vtsiRngUniformBits32(0, handle, static_cast<int32_t>(words.size()), words.data());
  if (status == VTS_STATUS_NO_FIXED_WIDTH_BITS) {
    constexpr std::size_t longest = 64;
    const auto bits = [](double x) { return x < 0xFFFF ? static_cast<std::uint32_t>(x) : 0xFFFFu; };
    status = VTS_STATUS_OK;
    for (auto rest = words; !rest.empty() && status >= 0;) {
      const auto now = rest.first(std::min(longest, rest.size()));
      double halves[2 * longest];
      status = _vtsdRngUniform(0, handle, static_cast<int32_t>(2 * now.size()), halves, 0, 0x1p16);
      for (std::size_t i = 0; i < now.size(); ++i)
        now[i] = bits(halves[2 * i]) << 16 | bits(halves[2 * i + 1]);
      rest = rest.subspan(now.size());
    }
  }
  detail::check_status("stream::operator()", handle, status);
}

VtsStreamHandle copied(VtsStreamHandle handle) {
  VtsStreamHandle copy = nullptr;
  const int32_t status = __vtsCopyStream(&copy, handle);
  if (status < 0) __vtsDeleteStream(&copy);
  detail::check_status("stream", handle, status);
  return copy;
}

}  // namespace

void stream::release::operator()(VtsStream* p) const { __vtsDeleteStream(&p); }

VtsStream* stream::require(const char* function) const {
  if (handle_ == nullptr) detail::refuse(function, "g", "empty", "is empty: it was moved from");
  return handle_.get();
}

VtsStream* stream::handle() const { return settled("stream::handle"); }

stream::stream(generator g, std::span<const std::uint32_t> seeds, int set) {
  detail::check_data("stream", {"seeds", {seeds.data(), seeds.size()}, sizeof(std::uint32_t)});
  if (most_dimensions(g) != 0)
    handle_.reset(new_sequence(g, seeds, set));
  else
    *this = stream(g, seed_sequence(seeds), set);
}
stream::stream(generator g, std::initializer_list<std::uint32_t> seeds, int set)
    : stream(g, std::span(seeds.begin(), seeds.size()), set) {}

stream::stream(generator g, std::uint64_t seed, bool negative, int set) {
  if (negative) detail::refuse_below("stream", "seed", static_cast<std::int64_t>(seed), 0);
  if (most_dimensions(g) != 0)
    check_dimensions("stream", g, static_cast<std::int64_t>(std::min<std::uint64_t>(seed, INT64_MAX)));
  const std::uint32_t words[] = {static_cast<std::uint32_t>(seed), static_cast<std::uint32_t>(seed >> 32)};
  *this = stream(g, std::span(words, words[1] == 0 ? 1 : 2), set);
}

stream::stream(generator g, const seed_sequence& seeds, int set) : seeds_(seeds) {
  if (most_dimensions(g) != 0)
    handle_.reset(new_sequence(g, seeds.entropy(), set));
  else
    handle_.reset(new_stream(id_of(g, set), detail::expand_seed(seeds, id_of(g, set))));
}

stream::stream(generator g, const raw_seed& seeds, int set)
    : handle_(most_dimensions(g) != 0 ? new_sequence(g, seeds.words, set)
                                      : new_stream(id_of(g, set), seeds.words)) {}

stream stream::sobol(int dimensions) {
  check_dimensions("stream::sobol", generator::sobol, dimensions);
  return stream(generator::sobol, dimensions);
}
stream stream::niederreiter(int dimensions) {
  check_dimensions("stream::niederreiter", generator::niederreiter, dimensions);
  return stream(generator::niederreiter, dimensions);
}

// Reads the other alone, so that several threads may copy one stream.
stream::stream(const stream& other) : seeds_(other.seeds_), spawned_(other.spawned_) {
  handle_.reset(copied(other.require("stream")));
  pass_over_taken(handle_.get(), other.ahead_.get());
}
stream& stream::operator=(const stream& other) { return *this = stream(other); }

generator stream::kind() const {
  return static_cast<generator>(__vtsGetStreamStateBrng(require("stream::kind")) & ~0xFFFFF);
}
int stream::set() const { return __vtsGetStreamStateBrng(require("stream::set")) & 0xFFFFF; }

void stream::skip(std::int64_t count) {
  VtsStream* const handle = settled("stream::skip");
  detail::refuse_below("stream::skip", "count", count, 0);
  detail::check_status("stream::skip", handle, __vtsSkipAheadStream(handle, count));
}

void stream::jump() {
  VtsStream* const handle = settled("stream::jump");
  const generator g = kind();
  if (g == generator::mcg31m1 || g == generator::mcg59 || most_dimensions(g) != 0)
    detail::check_status("stream::jump", handle, VTS_STATUS_NO_SKIPAHEAD);
  stream moved(*this);  // so that a skip without memory leaves this one where it is
  for (int quarter = 0; quarter < 4; ++quarter) moved.skip(std::int64_t{1} << 62);
  handle_ = std::move(moved.handle_);
}

void stream::leapfrog(int k, int parts) {
  VtsStream* const handle = settled("stream::leapfrog");
  detail::refuse_below("stream::leapfrog", "parts", parts, 1);
  detail::refuse_unless_in("stream::leapfrog", "k", k, 0, parts - 1);
  if (kind() == generator::mcg59 && parts % 2 == 0)
    detail::refuse_value("stream::leapfrog", "parts", detail::number(parts),
                         "an odd number: elements of mcg59 at even distances are related");
  const int32_t status = __vtsLeapfrogStream(handle, k, parts);
  if (status == VTS_STATUS_NO_LEAPFROG && most_dimensions(kind()) != 0 && parts == INT32_MAX)
    detail::refuse_value("stream::leapfrog", "k", detail::number(k), "less than the dimensions");
  detail::check_status("stream::leapfrog", handle, status);
}

std::vector<stream> leapfrog(const stream& g, int parts) {
  if (most_dimensions(g.kind()) != 0) detail::check_status("leapfrog", g.handle(), VTS_STATUS_NO_LEAPFROG);
  stream(g).leapfrog(0, parts);  // throws for bad arguments before memory is allocated
  std::vector<stream> result(static_cast<std::size_t>(parts), g);
  for (int k = 0; k < parts; ++k) result[static_cast<std::size_t>(k)].leapfrog(k, parts);
  return result;
}

std::vector<stream> stream::spawn(int count) {
  require("stream::spawn");
  detail::refuse_below("stream::spawn", "count", count, 0);
  if (!seeds_ || most_dimensions(kind()) != 0)
    detail::refuse("stream::spawn", "g", hexadecimal(static_cast<int32_t>(kind()) + set()),
                   "has no seed sequence");
  std::vector<stream> children;
  children.reserve(static_cast<std::size_t>(count));
  for (int k = 0; k < count; ++k)
    children.emplace_back(kind(), seeds_->child(spawned_ + static_cast<std::uint32_t>(k)), set());
  spawned_ += static_cast<std::uint32_t>(count);
  return children;
}

namespace {

// An odd number, the golden section of a part of the period. A part of the period itself, or the odd number
// next to it, is a distance at which the elements of multiplicative generators are related: modulo 2^59 those
// 2^53 apart differ in their upper four bits alone.
std::int64_t golden_part(std::int64_t period, int parts) {
  constexpr double golden_section = 0.61803398874989485;
  return static_cast<std::int64_t>(golden_section * static_cast<double>(period) / parts) | 1;
}

// Elements between the starts of streams that share one sequence; 0 for generators that do better otherwise.
std::int64_t distance_between(generator g, int parts) {
  switch (g) {
    case generator::mcg31m1:
      return golden_part(INT32_MAX - 1, parts);
    case generator::mcg59:
      return golden_part(std::int64_t{1} << 57, parts);
    case generator::mt19937:
    case generator::sfmt19937:
    case generator::mrg32k3a:
      return std::int64_t{1} << 62;
    default:
      return 0;
  }
}

}  // namespace

std::vector<stream> streams(generator g, const seed_sequence& seeds, int parts) {
  detail::refuse_below("streams", "parts", parts, 1);
  if (most_dimensions(g) != 0)
    detail::refuse_value("streams", "g", hexadecimal(static_cast<int32_t>(g)), "no quasi-random generator");
  const bool has_sets = g == generator::wh || g == generator::mt2203;
  if (has_sets) detail::refuse_unless_in("streams", "parts", parts, 1, g == generator::wh ? 273 : 6024);
  const std::int64_t distance = distance_between(g, parts);
  std::vector<stream> all;
  all.reserve(static_cast<std::size_t>(parts));
  for (int k = 0; k < parts; ++k) {
    if (distance != 0 && k > 0) {
      all.push_back(all.back());
      all.back().skip(distance);
    } else {
      const bool own_seed = distance == 0 && !has_sets;
      all.emplace_back(g, own_seed ? seeds.child(static_cast<std::uint32_t>(k)) : seeds, has_sets ? k : 0);
    }
  }
  return all;
}

void stream::pass_over_taken(VtsStream* handle, const block_ahead* ahead) {
  if (ahead == nullptr || ahead->after == nullptr) return;
  result_type unused[block_words];
  draw_words(handle, {unused, ahead->taken});
}

VtsStream* stream::settled(const char* function) const {
  VtsStream* const handle = require(function);
  pass_over_taken(handle, ahead_.get());
  ahead_ = nullptr;
  return handle;
}

stream::result_type stream::next_block() {
  VtsStream* const handle = require("stream::operator()");
  if (ahead_ == nullptr) ahead_ = std::make_unique<block_ahead>();
  block_ahead& b = *ahead_;
  if (b.singles < singles_first) {
    result_type word;
    draw_words(handle, {&word, 1});
    ++b.singles;
    return word;
  }
  if (b.after == nullptr)
    b.after.reset(copied(handle));
  else
    draw_words(handle, b.words);
  draw_words(b.after.get(), b.words);
  b.taken = 1;
  return b.words[0];
}

std::uint64_t stream::pair_across_blocks() {
  const std::uint64_t first = (*this)();
  return first << 32 | (*this)();
}

}  // namespace tmk
