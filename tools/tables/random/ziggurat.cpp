// SPDX-License-Identifier: Apache-2.0
// Prints the layers of a ziggurat under e^(-x^2/2), x >= 0: 512 regions of one area v, of which the lowest is
// a rectangle of width r with the tail beyond r, the others rectangles between heights.
//   v = r f(r) + integral of f from r on,   x[1] = r,   f(x[i + 1]) = f(x[i]) + v / x[i],   x[0] = v / f(r)
// r is where the highest rectangle ends at f(0) = 1 (G. Marsaglia and W. Tsang, The ziggurat method for
// generating random variables, J. Statistical Software 5 (2000)).
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

using real = long double;

constexpr int layer_bits = 9, layers = 1 << layer_bits;

real density(real x) { return std::exp(-x * x / 2); }
real area_beyond(real x) { return std::sqrt(std::acos(real{-1}) / 2) * std::erfc(x / std::sqrt(real{2})); }

// x[0] to x[255], and how far the height of the top is from 1; x[256] = 0.
real build(real r, std::vector<real>& x) {
  const real v = r * density(r) + area_beyond(r);
  x = {v / density(r), r};
  real height = density(r);
  while (x.size() < layers) {
    height += v / x.back();
    if (height >= 1) return 1;
    x.push_back(std::sqrt(-2 * std::log(height)));
  }
  return height + v / x.back() - 1;
}

}  // namespace

int main() {
  std::vector<real> x;
  real low = 3, high = 5;  // too low an r makes regions too large
  for (int i = 0; i < 200; ++i) (build((low + high) / 2, x) > 0 ? low : high) = (low + high) / 2;
  build(high, x);
  x.push_back(0);
  std::printf(
      "// Made by tools/tables/random/ziggurat.cpp: edges of the layers of a ziggurat under the normal "
      "density.\n"
      "#pragma once\n\nnamespace tmk::rng {\n\n"
      "// Layer i is |x| < edge, of which |x| < inner is under the density at every height.\n"
      "struct ziggurat_layer {\n  double edge, inner;\n};\n\n"
      "constexpr int ziggurat_layer_bits = %d;\n"
      "constexpr double ziggurat_tail_probability = %a;  // of |x| > inner of layer 0\n\n"
      "constexpr ziggurat_layer ziggurat_layers[%d] = {\n",
      layer_bits, static_cast<double>(std::erfc(x[1] / std::sqrt(real{2}))), layers);
  for (int i = 0; i < layers; ++i)
    std::printf("%s{%a, %a},%s", i % 2 == 0 ? "    " : " ", static_cast<double>(x[i]),
                static_cast<double>(x[i + 1]), i % 2 == 0 ? "" : "\n");
  std::printf("};\n\n// The density at the edges, and at 0.\nconstexpr double ziggurat_heights[%d] = {\n",
              layers + 1);
  for (int i = 0; i <= layers; ++i)
    std::printf("%s%a,%s", i % 4 == 0 ? "    " : " ", static_cast<double>(density(x[i])),
                i % 4 == 3 || i == layers ? "\n" : "");
  std::printf("};\n\n}  // namespace tmk::rng\n");
}
