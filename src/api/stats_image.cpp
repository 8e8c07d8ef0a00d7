// The image of an accumulator: "TMKMOMTS", version, options (bit 0: cross-product, from bit 1 the policy for
// NaNs), columns, sums, hash. Integers and doubles are little-endian.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "api/check.hpp"
#include "api/hash.hpp"
#include "api/stats_blocks.hpp"

namespace tmk {

namespace {

constexpr char magic[] = {'T', 'M', 'K', 'M', 'O', 'M', 'T', 'S'};
constexpr std::uint32_t version = 1;
constexpr std::size_t header_bytes = 24, hash_bytes = 8;

std::uint64_t image_bytes(std::uint64_t cols, bool cross_product) {
  const std::uint64_t joint = cross_product ? 3 + 2 * cols + cols * (cols + 1) / 2 : 0;
  return header_bytes + 8 * (10 * cols + joint) + hash_bytes;
}

struct writer {
  std::vector<std::byte> bytes;
  template <class Word>
  void operator()(const Word& value) {
    const auto word =
        std::bit_cast<std::conditional_t<sizeof(Word) == 8, std::uint64_t, std::uint32_t>>(value);
    for (unsigned k = 0; k < sizeof word; ++k) bytes.push_back(static_cast<std::byte>(word >> 8 * k & 0xFF));
  }
};

struct reader {
  std::span<const std::byte> bytes;
  template <class Word>
  void operator()(Word& value) {
    std::conditional_t<sizeof(Word) == 8, std::uint64_t, std::uint32_t> word = 0;
    for (unsigned k = 0; k < sizeof word; ++k) word |= std::to_integer<decltype(word)>(bytes[k]) << 8 * k;
    bytes = bytes.subspan(sizeof word);
    value = std::bit_cast<Word>(word);
  }
};

// The sums in their order, for either of the two.
template <class Sums, class Visitor>
void visit_sums(Sums& sums, bool cross_product, Visitor& visit) {
  for (auto& v : sums.variables) {
    visit(v.n);
    for (auto* value : {&v.weight, &v.weight2, &v.shift, &v.offset, &v.c2, &v.c3, &v.c4, &v.min, &v.max})
      visit(*value);
  }
  if (!cross_product) return;
  visit(sums.joint.n);
  visit(sums.joint.weight);
  visit(sums.joint.weight2);
  for (auto* values : {&sums.joint.shift, &sums.joint.offset, &sums.joint.cross})
    for (auto& value : *values) visit(value);
}

// Weights square to at most the square of their sum, up to rounding.
template <class Sums>
bool possible_weights(const Sums& s) {
  if (s.n == 0) return s.weight == 0 && s.weight2 == 0;
  return s.n > 0 && s.weight > 0 && s.weight2 >= 0 && s.weight2 / s.weight <= s.weight * (1 + 1e-6);
}

bool possible(const detail::variable_sums& v) {
  return possible_weights(v) && !(v.c2 < 0) && !(v.c4 < 0) && !(v.min > v.max);
}

bool possible(const detail::moment_sums& sums, const moments_options& options) {
  if (!std::all_of(sums.variables.begin(), sums.variables.end(),
                   [](const detail::variable_sums& v) { return possible(v); }))
    return false;
  if (!options.cross_product) return true;
  const bool every_row = options.nan != nan_policy::omit;
  const std::int64_t n = sums.joint.n;
  for (std::size_t j = 0; j < sums.variables.size(); ++j) {
    const std::int64_t own = sums.variables[j].n;
    if (n > own || (every_row && n != own) || sums.joint.cross[j * (j + 3) / 2] < 0) return false;
  }
  return possible_weights(sums.joint);
}

[[noreturn]] void refuse_image(const std::string& value, const std::string& complaint) {
  detail::refuse("moments::from_bytes", "bytes", value, complaint);
}

}  // namespace

std::vector<std::byte> moments::to_bytes() const {
  writer write;
  write.bytes.reserve(static_cast<std::size_t>(image_bytes(cols(), options_.cross_product)));
  for (const char c : magic) write.bytes.push_back(static_cast<std::byte>(c));
  write(version);
  write(static_cast<std::uint32_t>(options_.cross_product) | static_cast<std::uint32_t>(options_.nan) << 1);
  write(static_cast<std::uint64_t>(cols()));
  visit_sums(sums_, options_.cross_product, write);
  write(detail::fnv1a(write.bytes));
  return write.bytes;
}

moments moments::from_bytes(std::span<const std::byte> bytes) {
  const std::string size = std::to_string(bytes.size()) + " bytes";
  if (bytes.size() < header_bytes + hash_bytes) refuse_image(size, "has " + size + ", too few for a header");
  if (std::memcmp(bytes.data(), magic, sizeof magic) != 0) refuse_image(size, "does not hold moments");
  reader read{bytes.subspan(sizeof magic)};
  std::uint32_t image_version, flags;
  std::uint64_t cols;
  read(image_version);
  read(flags);
  read(cols);
  if (image_version != version)
    refuse_image("version " + std::to_string(image_version),
                 "has version " + std::to_string(image_version) + ", want " + std::to_string(version));
  const bool cross_product = (flags & 1) != 0;
  if (flags >> 1 > static_cast<std::uint32_t>(nan_policy::raise) || cols < 1 ||
      cols > (cross_product ? 32768u : std::uint32_t{INT32_MAX}))
    refuse_image(size, "does not hold moments");
  // Before memory is taken: as many bytes as the columns need are there.
  if (bytes.size() != image_bytes(cols, cross_product))
    refuse_image(size, "has " + size + ", want " + std::to_string(image_bytes(cols, cross_product)));
  std::uint64_t hash;
  reader{bytes.last(hash_bytes)}(hash);
  if (hash != detail::fnv1a(bytes.first(bytes.size() - hash_bytes))) refuse_image(size, "is damaged");

  moments result(static_cast<std::size_t>(cols), {cross_product, static_cast<nan_policy>(flags >> 1)});
  visit_sums(result.sums_, cross_product, read);
  if (!possible(result.sums_, result.options_)) refuse_image(size, "holds impossible sums");
  return result;
}

}  // namespace tmk
