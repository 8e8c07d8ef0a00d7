// SPDX-License-Identifier: Apache-2.0
// x^n modulo a polynomial over GF(2): squares, and reductions by a table of the polynomial's multiples.
#include <algorithm>
#include <bit>
#include <cstring>

#include "platform/scratch.hpp"
#include "random/core/jump.hpp"

namespace {
using namespace tmk::rng;
using tmk::scratch;

// Bit i of x at position 2 i: the square of a polynomial.
uint64_t spread(uint32_t x) {
  uint64_t y = x;
  y = (y | y << 16) & 0x0000FFFF0000FFFF;
  y = (y | y << 8) & 0x00FF00FF00FF00FF;
  y = (y | y << 4) & 0x0F0F0F0F0F0F0F0F;
  y = (y | y << 2) & 0x3333333333333333;
  return (y | y << 1) & 0x5555555555555555;
}

// The dividend loses four bits at a time, from the top: the multiple of the polynomial whose four highest
// coefficients are these is added. The table has a row for each value of the four bits at both of their
// positions within a byte, so that additions are of whole bytes.
class reducer {
 public:
  static constexpr int window = 4, rows = 1 << window, phases = 8 / window;

  static int32_t row_bytes(int32_t degree) { return (degree + 2 * window) / 8 + 1; }
  static size_t bytes(int32_t degree) {
    return size_t{phases * rows} * static_cast<size_t>(row_bytes(degree));
  }

  reducer(unsigned char* table, int32_t degree, int32_t terms, const int32_t* polynomial)
      : table_(table), row_bytes_(row_bytes(degree)), degree_(degree) {
    std::memset(table, 0, bytes(degree));
    for (int phase = 0; phase < phases; ++phase)
      for (int quotient = 1; quotient < rows; ++quotient) {
        // Of a quotient's multiple, the top coefficients follow from the polynomial's.
        int leading = 0;
        const auto flip_terms = [&](auto flip) {
          for (int bit = 0; bit < window; ++bit)
            if (quotient >> bit & 1)
              for (int32_t k = 0; k < terms; ++k) flip(polynomial[k] + bit);
        };
        flip_terms([&](int32_t exponent) {
          if (exponent >= degree) leading ^= 1 << (exponent - degree);
        });
        unsigned char* to = row(phase, leading);
        flip_terms([&](int32_t exponent) {
          const int32_t position = exponent + phase * window;
          to[position / 8] ^= static_cast<unsigned char>(1 << position % 8);
        });
      }
  }

  // Leaves the remainder of a dividend below twice the degree, of as many bytes as hold it and a row beyond.
  void operator()(unsigned char* dividend) const {
    const auto add = jump_kernels_now().add;
    for (int32_t k = (degree_ + window - 1) / window - 1; k >= 0; --k) {
      const int32_t position = degree_ + window * k;
      const int pair = dividend[position / 8] | dividend[position / 8 + 1] << 8;
      const int leading = pair >> position % 8 & (rows - 1);
      if (leading != 0) add(dividend + window * k / 8, row(k % phases, leading), row_bytes_);
    }
  }

 private:
  unsigned char* row(int phase, int leading) const {
    return table_ + static_cast<ptrdiff_t>(phase * rows + leading) * row_bytes_;
  }

  unsigned char* table_;
  int32_t row_bytes_, degree_;
};

void square(uint64_t* r, int32_t words) {
  const auto* word = reinterpret_cast<const unsigned char*>(r);
  for (int32_t i = words - 1; i >= 0; --i) {
    uint32_t x;
    std::memcpy(&x, word + 4 * i, sizeof x);
    r[i] = spread(x);
  }
}

void multiply_by_x(uint64_t* r, int32_t words) {
  for (int32_t i = words - 1; i > 0; --i) r[i] = r[i] << 1 | r[i - 1] >> 63;
  r[0] <<= 1;
}

}  // namespace

extern "C" int32_t x_pow_nskip_mod_cpoly(uint64_t nskip, int32_t degree, int32_t terms,
                                         const int32_t* polynomial, int32_t words, uint32_t* out) {
  const auto product_words = static_cast<size_t>(words) + 1;
  const scratch<uint64_t> product(product_words);
  const scratch<unsigned char> table(reducer::bytes(degree));
  if (!product || !table) return VTS_STATUS_NO_MEMORY;
  const reducer reduce(table.get(), degree, terms, polynomial);
  std::fill_n(product.get(), product_words, 0);
  product.get()[0] = 1;
  for (int bit = std::bit_width(nskip) - 1; bit >= 0; --bit) {
    square(product.get(), words);
    if (nskip >> bit & 1) multiply_by_x(product.get(), words);
    reduce(reinterpret_cast<unsigned char*>(product.get()));
  }
  std::memcpy(out, product.get(), 8 * static_cast<size_t>(words));
  return VTS_STATUS_OK;
}
