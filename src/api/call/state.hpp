// SPDX-License-Identifier: Apache-2.0
// What the C++ interface keeps per thread, beside the C interface's own state.
#pragma once

namespace tmk {
class error_scope;
}

namespace tmk::detail {

class capture;

struct thread_state {
  error_scope* scope = nullptr;  // the innermost
  int threads = 1;
  capture* watching = nullptr;  // whoever takes the reports of the kernel that runs
};

// In the static block of thread-local storage: found without a call, also from the shared library.
[[gnu::tls_model("initial-exec")]] inline constinit thread_local thread_state state;

}  // namespace tmk::detail
