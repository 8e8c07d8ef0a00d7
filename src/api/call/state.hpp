// SPDX-License-Identifier: Apache-2.0
// What the C++ API keeps per thread, in addition to the state of the C interface.
#pragma once

namespace tmk {
class error_scope;
}

namespace tmk::detail {

class capture;

struct thread_state {
  error_scope* scope = nullptr;  // the innermost
  int threads = 1;
  capture* watching = nullptr;  // receives the reports of the kernel that is running
};

// In the static block of thread-local storage: also the shared library reaches it without a call.
[[gnu::tls_model("initial-exec")]] inline constinit thread_local thread_state state;

}  // namespace tmk::detail
