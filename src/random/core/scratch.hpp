// Memory of a scope, aligned as streams are; tests false when there was none.
#pragma once

#include <cstddef>
#include <memory>

#include "random/core/stream.hpp"
#include "tmk/abi/serv.h"

namespace tmk {

template <class T>
class scratch {
 public:
  explicit scratch(size_t count)
      : memory_(static_cast<T*>(tmk_serv_allocate(count * sizeof(T), stream_alignment)), &release) {}
  explicit operator bool() const { return memory_ != nullptr; }
  T* get() const { return memory_.get(); }

 private:
  static void release(T* p) { tmk_serv_deallocate(p); }
  std::unique_ptr<T, void (*)(T*)> memory_;
};

}  // namespace tmk
