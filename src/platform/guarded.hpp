// SPDX-License-Identifier: Apache-2.0
// Entry points of C whose implementation uses the standard library's containers: no exception leaves them.
#pragma once

#include <cstdint>
#include <new>
#include <stdexcept>

namespace tmk {

// A status on its way from a nested function to the entry point that returns it.
struct failed {
  int32_t status;
};

inline void require(int32_t status) {
  if (status < 0) throw failed{status};
}

// body(), which returns a status. Other exceptions, which only a caller's own function can throw, pass.
template <class Body>
int32_t guarded(int32_t no_memory, const Body& body) {
  try {
    return body();
  } catch (const failed& f) {
    return f.status;
  } catch (const std::bad_alloc&) {
    return no_memory;
  } catch (const std::length_error&) {  // more elements than the address space has
    return no_memory;
  }
}

}  // namespace tmk
