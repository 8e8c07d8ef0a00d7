// SPDX-License-Identifier: Apache-2.0
// MT2203: dynamically created twisters of period 2^2203 - 1.
// M. Matsumoto, T. Nishimura, Dynamic creation of pseudorandom number generators, Monte Carlo and Quasi-Monte
// Carlo Methods 1998.
#include "random/generators/mt2203.hpp"

#include <iterator>

#include "random/core/stream.hpp"
#include "random/generators/mt2203_data.hpp"
#include "random/generators/requests.hpp"
#include "random/generators/scale.hpp"
#include "random/generators/twister_seed.hpp"

namespace {
using namespace tmk;

auto words_of(VtsStreamHandle stream) {
  return [state = &state_of<mt2203_state>(stream), draw = mt2203_loops_now().words](int32_t n, uint32_t* r) {
    draw(state, n, r);
  };
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

int32_t __vtsiBRngMT2203(VtsStreamHandle stream, int32_t n, void* r) {
  words_of(stream)(n, static_cast<uint32_t*>(r));
  return VTS_STATUS_OK;
}

int32_t __vtsdBRngMT2203(VtsStreamHandle stream, int32_t n, double* r, double a, double b) {
  return uniforms_from_words(n, r, a, b, 0x1p-32, words_of(stream));
}

int32_t __vtssBRngMT2203(VtsStreamHandle stream, int32_t n, float* r, float a, float b) {
  return uniforms_from_words(n, r, a, b, 0x1p-32, words_of(stream));
}
}
