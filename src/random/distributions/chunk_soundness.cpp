// SPDX-License-Identifier: Apache-2.0
// Chunks from outside: those whose owners rely on more than their size, by kind.
#include "random/core/chunk_kinds.hpp"
#include "random/distributions/discrete_laws.hpp"
#include "random/distributions/discrete_set_up.hpp"
#include "random/distributions/gamma.hpp"

namespace {
using namespace tmk::rng;

// What makes a chunk of a kind fit for use, or refuses it.
struct renewal {
  uint32_t chunk_id;
  bool (*renew)(void* blob);
};
// A line per law with a set-up: {SetUp::kind, renew_set_up<SetUp>}.
template <class SetUp>
constexpr renewal renewal_of{SetUp::kind, renew_set_up<SetUp>};
constexpr renewal renewals[] = {renewal_of<discrete_set_up<poisson_law>>,
                                renewal_of<discrete_set_up<binomial_law>>,
                                renewal_of<discrete_set_up<negative_binomial_law>>,
                                renewal_of<discrete_set_up<hypergeometric_law>>,
                                renewal_of<gamma_set_up<double>>,
                                renewal_of<gamma_set_up<float>>};

}  // namespace

bool tmk::rng::chunk_is_sound(uint32_t chunk_id, void* blob, uint32_t bytes) {
  if (bytes < bytes_of_kind(chunk_id)) return false;
  for (const renewal& r : renewals)
    if (r.chunk_id == chunk_id && bytes_of_kind(chunk_id) != 0) return r.renew(blob);
  return true;
}
