// SPDX-License-Identifier: Apache-2.0
// Objects that C callers hold by a pointer: made, copied, used and freed, with a status for what fails.
#pragma once

#include <utility>

#include "platform/guarded.hpp"
#include "tmk/abi/ss_pooled.h"

namespace tmk::stats::pooled {

// *place becomes a new object of what make() returns, or stays.
template <class Object, class Make>
int32_t make_handle(Object** place, const Make& make) {
  if (place == nullptr) return VTS_STATUS_SS_TASK_NULL;
  return guarded(VTS_STATUS_SS_MEMORY, [&] {
    *place = new Object(make());
    return 0;
  });
}

template <class Object>
int32_t copy_handle(Object** place, const Object* object) {
  if (object == nullptr) return VTS_STATUS_SS_TASK_NULL;
  return make_handle(place, [&]() -> const Object& { return *object; });
}

template <class Object>
int32_t delete_handle(Object** object) {
  if (object == nullptr) return VTS_STATUS_SS_TASK_NULL;
  delete std::exchange(*object, nullptr);
  return 0;
}

// body(), which returns a status, unless the object is missing.
template <class Object, class Body>
int32_t with_handle(const Object* object, const Body& body) {
  return object == nullptr ? int32_t{VTS_STATUS_SS_TASK_NULL} : guarded(VTS_STATUS_SS_MEMORY, body);
}

}  // namespace tmk::stats::pooled
