// SPDX-License-Identifier: Apache-2.0
// Teams: a caller and threads of the library's own that work for it until a run is done.
#pragma once

#include <cstdint>

namespace tmk {

// The most members of a team, whatever a caller requests: four for each processor, within OpenMP's limit.
int32_t team_limit();

using team_member = void (*)(void* context, int64_t member, int64_t size);

// Runs member(context, k, size) for every k below size, each on its own thread and the caller's own k being
// 0. The size is at most `threads` and team_limit(). It is smaller when the system gives no more threads, and
// 1 inside another team, of the library or of OpenMP, and in a forked child. Members have the caller's
// floating-point controls, and flags that they raise are raised for the caller. They must not throw.
void run_team(int32_t threads, void* context, team_member member);

}  // namespace tmk
