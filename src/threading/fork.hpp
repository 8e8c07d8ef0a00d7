// SPDX-License-Identifier: Apache-2.0
// Forked children. Only the thread that forks lives on in the child, so whatever waits there for a thread of
// the parent waits for ever.
#pragma once

namespace tmk {

// From the first call on, a child of this process knows that it is one. Called before threads are made.
void watch_forks();

bool in_forked_child();

}  // namespace tmk
