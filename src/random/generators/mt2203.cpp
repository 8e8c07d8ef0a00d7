// SPDX-License-Identifier: Apache-2.0
// MT2203: dynamically created twisters of period 2^2203 - 1.
// M. Matsumoto, T. Nishimura, Dynamic creation of pseudorandom number generators, Monte Carlo and Quasi-Monte
// Carlo Methods 1998.
#include "random/generators/mt2203.hpp"

#include <iterator>

#include "random/core/stream.hpp"
#include "random/generators/draws.hpp"
#include "random/generators/mt2203_data.hpp"
#include "random/generators/requests.hpp"
#include "random/generators/twister_seed.hpp"

namespace {
using namespace tmk::rng;

int32_t draw_words(VtsStreamHandle stream, int32_t n, uint32_t* r) {
  mt2203_kernels_now().words(&state_of<mt2203_state>(stream), n, r);
  return VTS_STATUS_OK;
}
}  // namespace

extern "C" {

int32_t __vtsBRngMT2203InitStream(int32_t method, VtsStreamHandle stream, int32_t n, const uint32_t* params) {
  return answer_request(
      method, n, params,
      [&](int32_t count, const uint32_t* key) {
        mt2203_state& s = state_of<mt2203_state>(stream);
        seed_twister(s.mt, count, key);
        s.index = std::size(s.mt);
        const uint32_t* row = &mt2203_rows[3 * parameter_set(header_of(stream).brng_id)];
        s.matrix_a = row[0];
        s.temper_b = row[1];
        s.temper_c = row[2];
        return VTS_STATUS_OK;
      },
      no_leapfrog, no_skip_ahead);
}

TMK_DEFINE_DRAWS(MT2203, word_draws<draw_words>)
}
