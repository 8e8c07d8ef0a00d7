// SPDX-License-Identifier: Apache-2.0
// Forked children. Only the thread that forks exists in the child, so whatever waits there for another thread
// of the parent waits for ever.
#pragma once

namespace tmk {

// From the first call on, in_forked_child() is true in children of this process. Called before threads are
// made.
void watch_forks();

bool in_forked_child();

}  // namespace tmk
