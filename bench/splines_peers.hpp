// SPDX-License-Identifier: Apache-2.0
// What a user would otherwise take for splines: each peer fits one function over ascending x, and evaluates
// it.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tmk::bench {

enum class family { natural, akima, monotone };

struct peer_spline {
  std::string name;
  // Fits y over x anew. Peers that own their data copy them here, as their users must.
  std::function<void(const std::vector<double>& x, const std::vector<double>& y)> fit;
  std::function<void(const std::vector<double>& sites, double* values)> evaluate;
  // Where the peer has them: value, first and second derivative of each site; the integral between two
  // limits.
  std::function<void(const std::vector<double>& sites, double* results)> evaluate_three;
  std::function<double(double, double)> integrate;
};

// The peers that have the family, n points each; those that need an equidistant x only where `uniform` is
// true.
std::vector<peer_spline> peers_of(family wanted, size_t n, bool uniform);

}  // namespace tmk::bench
