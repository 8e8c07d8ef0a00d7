// MT19937, the Mersenne twister.
// M. Matsumoto, T. Nishimura, Mersenne twister: a 623-dimensionally equidistributed uniform pseudo-random
// number generator, ACM TOMACS 8 (1998).
#include "random/generators/mt19937.hpp"

#include <iterator>

#include "random/core/stream.hpp"
#include "random/generators/requests.hpp"
#include "random/generators/scale.hpp"
#include "random/generators/twister_seed.hpp"

namespace {
using namespace tmk;

auto words_of(VtsStreamHandle stream) {
  return [state = &state_of<mt19937_state>(stream), draw = mt19937_loops_now().words](
             int32_t n, uint32_t* r) { draw(state, n, r); };
}
}  // namespace

extern "C" {

int32_t __vtsBRngMT19937InitStream(int32_t method, VtsStreamHandle stream, int32_t n,
                                   const uint32_t* params) {
  return answer_request(
      method, n, params,
      [&](int32_t count, const uint32_t* key) {
        mt19937_state& s = state_of<mt19937_state>(stream);
        seed_twister(s.mt, count, key);
        s.index = std::size(s.mt);
        return VTS_STATUS_OK;
      },
      no_leapfrog, [&](uint64_t count) { return VTS_STATUS_NO_SKIPAHEAD * int(count > 0); });
}

int32_t __vtsiBRngMT19937(VtsStreamHandle stream, int32_t n, void* r) {
  words_of(stream)(n, static_cast<uint32_t*>(r));
  return VTS_STATUS_OK;
}

int32_t __vtsdBRngMT19937(VtsStreamHandle stream, int32_t n, double* r, double a, double b) {
  doubles_from_words(n, r, scale_loops_now().unsigned_to_double, (b - a) * 0x1p-32, a, words_of(stream));
  return VTS_STATUS_OK;
}

int32_t __vtssBRngMT19937(VtsStreamHandle stream, int32_t n, float* r, float a, float b) {
  singles_from_words(n, r, scale_loops_now().unsigned_to_single, (double{b} - a) * 0x1p-32, a,
                     words_of(stream));
  return VTS_STATUS_OK;
}
}
