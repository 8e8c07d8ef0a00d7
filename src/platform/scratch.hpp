// SPDX-License-Identifier: Apache-2.0
// Memory freed with its scope, aligned for the widest registers and the caches; converts to false when it
// could not be allocated.
#pragma once

#include <cstddef>
#include <memory>

#include "tmk/abi/serv.h"

namespace tmk {

template <class T>
class scratch {
 public:
  scratch() : memory_(nullptr, &release) {}
  explicit scratch(size_t count)
      : memory_(static_cast<T*>(tmk_serv_allocate(count * sizeof(T), 128)), &release) {}
  explicit operator bool() const { return memory_ != nullptr; }
  T* get() const { return memory_.get(); }

 private:
  static void release(T* p) { tmk_serv_deallocate(p); }
  std::unique_ptr<T, void (*)(T*)> memory_;
};

}  // namespace tmk
