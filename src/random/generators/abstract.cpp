// SPDX-License-Identifier: Apache-2.0
// Abstract streams: the elements come from a circular array of the caller's, which a callback refills.
#include <algorithm>

#include "random/core/states.hpp"
#include "random/core/stream.hpp"
#include "random/generators/requests.hpp"

namespace {
using namespace tmk::rng;

// What differs between the kinds; their records are consecutive rows of the registry.
struct words {
  using element = uint32_t;
  using state = iabstract_state;
  using update = VtsIUpdate;
  static constexpr int32_t id = VTS_BRNG_IABSTRACT;
};
struct doubles {
  using element = double;
  using state = dabstract_state;
  using update = VtsDUpdate;
  static constexpr int32_t id = VTS_BRNG_DABSTRACT;
};
struct singles {
  using element = float;
  using state = sabstract_state;
  using update = VtsSUpdate;
  static constexpr int32_t id = VTS_BRNG_SABSTRACT;
};

template <class Kind>
int32_t create(VtsStreamHandle* stream, int32_t n, const typename Kind::element* buffer,
               typename Kind::update callback) {
  if (n < 1 || buffer == nullptr || callback == nullptr) return VTS_STATUS_BAD_ARGUMENT;
  constexpr int32_t row = (Kind::id >> 20) - 1;
  const int32_t status = __vtsAllocateStream(stream, __RegBrngsNew, Kind::id, row, 0);
  if (status < 0) return status;
  auto& s = state_of<typename Kind::state>(*stream);
  s = {};
  s.count = n;
  s.buffer = const_cast<typename Kind::element*>(buffer);  // the caller's callback writes it
  s.callback = reinterpret_cast<void (*)()>(callback);
  return VTS_STATUS_OK;
}

template <class Kind>
int32_t create_over(VtsStreamHandle* stream, int32_t n, const typename Kind::element* buffer,
                    typename Kind::element a, typename Kind::element b, typename Kind::update callback) {
  if (!(a < b)) return VTS_STATUS_BAD_ARGUMENT;
  const int32_t status = create<Kind>(stream, n, buffer, callback);
  if (status < 0) return status;
  auto& s = state_of<typename Kind::state>(*stream);
  s.a = a;
  s.b = b;
  return VTS_STATUS_OK;
}

// Requests at least what the draw still needs, at most what the array holds; the array is empty.
template <class Kind>
int32_t refill(VtsStreamHandle stream, typename Kind::state& s, int32_t needed) {
  int32_t count = s.count;
  const int32_t least = std::min(needed, count), most = count, index = s.index;
  const auto update = reinterpret_cast<typename Kind::update>(s.callback);
  const int32_t got =
      update(stream, &count, static_cast<typename Kind::element*>(s.buffer), &least, &most, &index);
  if (got < 0) return got;
  if (got < least || got > most) return VTS_STATUS_BAD_ARGUMENT;
  s.available = got;
  return VTS_STATUS_OK;
}

// Hands out n elements in contiguous pieces: take(pointer, count).
template <class Kind, class Take>
int32_t draw(VtsStreamHandle stream, int32_t n, Take take) {
  auto& s = state_of<typename Kind::state>(stream);
  while (n > 0) {
    if (s.available == 0) {
      const int32_t status = refill<Kind>(stream, s, n);
      if (status < 0) return status;
    }
    const int32_t piece = std::min({n, s.available, s.count - s.index});
    take(static_cast<const typename Kind::element*>(s.buffer) + s.index, piece);
    s.index = s.index + piece == s.count ? 0 : s.index + piece;
    s.available -= piece;
    n -= piece;
  }
  return VTS_STATUS_OK;
}

// Values of the array's interval to values from a to b.
template <class Kind, class Real>
int32_t draw_scaled(VtsStreamHandle stream, int32_t n, Real* r, double a, double b) {
  const auto& s = state_of<typename Kind::state>(stream);
  const double origin = s.a, k = (b - a) / (double{s.b} - origin);
  return draw<Kind>(stream, n, [&](const Real* x, int32_t piece) {
    r = std::transform(x, x + piece, r,
                       [=](Real value) { return static_cast<Real>((value - origin) * k + a); });
  });
}

// The array goes back to empty; there are no seeds.
int32_t init(int32_t method, VtsStreamHandle stream, int32_t n, const uint32_t* params) {
  const auto empty = [stream](int32_t, const uint32_t*) {
    auto& s = state_of<abstract_state>(stream);
    s.index = s.available = 0;
    return VTS_STATUS_OK;
  };
  return answer_request(method, n, params, empty, no_leapfrog, no_skip_ahead);
}

}  // namespace

extern "C" {

int32_t __vtsiNewAbstractStream(VtsStreamHandle* stream, int32_t n, const uint32_t* buffer,
                                VtsIUpdate callback) {
  return create<words>(stream, n, buffer, callback);
}
int32_t __vtsdNewAbstractStream(VtsStreamHandle* stream, int32_t n, const double* buffer, double a, double b,
                                VtsDUpdate callback) {
  return create_over<doubles>(stream, n, buffer, a, b, callback);
}
int32_t __vtssNewAbstractStream(VtsStreamHandle* stream, int32_t n, const float* buffer, float a, float b,
                                VtsSUpdate callback) {
  return create_over<singles>(stream, n, buffer, a, b, callback);
}

int32_t __vtsBRngiAbstractInitStream(int32_t method, VtsStreamHandle stream, int32_t n,
                                     const uint32_t* params) {
  return init(method, stream, n, params);
}
int32_t __vtsBRngdAbstractInitStream(int32_t method, VtsStreamHandle stream, int32_t n,
                                     const uint32_t* params) {
  return init(method, stream, n, params);
}
int32_t __vtsBRngsAbstractInitStream(int32_t method, VtsStreamHandle stream, int32_t n,
                                     const uint32_t* params) {
  return init(method, stream, n, params);
}

int32_t __vtsiBRngiAbstract(VtsStreamHandle stream, int32_t n, void* r) {
  auto* out = static_cast<uint32_t*>(r);
  return draw<words>(stream, n, [&](const uint32_t* x, int32_t piece) { out = std::copy_n(x, piece, out); });
}
int32_t __vtsdBRngdAbstract(VtsStreamHandle stream, int32_t n, double* r, double a, double b) {
  return draw_scaled<doubles>(stream, n, r, a, b);
}
int32_t __vtssBRngsAbstract(VtsStreamHandle stream, int32_t n, float* r, float a, float b) {
  return draw_scaled<singles>(stream, n, r, a, b);
}

// A kind has no other draws than its own.
int32_t __vtsdBRngiAbstract(VtsStreamHandle, int32_t, double*, double, double) {
  return VTS_STATUS_INVALID_BRNG;
}
int32_t __vtssBRngiAbstract(VtsStreamHandle, int32_t, float*, float, float) {
  return VTS_STATUS_INVALID_BRNG;
}
int32_t __vtsiBRngdAbstract(VtsStreamHandle, int32_t, void*) { return VTS_STATUS_INVALID_BRNG; }
int32_t __vtssBRngdAbstract(VtsStreamHandle, int32_t, float*, float, float) {
  return VTS_STATUS_INVALID_BRNG;
}
int32_t __vtsiBRngsAbstract(VtsStreamHandle, int32_t, void*) { return VTS_STATUS_INVALID_BRNG; }
int32_t __vtsdBRngsAbstract(VtsStreamHandle, int32_t, double*, double, double) {
  return VTS_STATUS_INVALID_BRNG;
}

}  // extern "C"
