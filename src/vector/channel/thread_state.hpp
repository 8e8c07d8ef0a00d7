// SPDX-License-Identifier: Apache-2.0
// The items of state that each thread carries. A new thread has them all zero; a mode of 0 means unset.
#pragma once

#include <cstdint>

#include "tmk/abi/vtm.h"

// Initial-exec: every kernel call reads the mode, and 28 bytes fit the room that loaders keep for late
// libraries.
#define TMK_THREAD_STATE \
  extern "C" __attribute__((visibility("hidden"), tls_model("initial-exec"))) thread_local

TMK_THREAD_STATE const void* vtmInterfInputVecorPointer;
TMK_THREAD_STATE VtmErrorCallback vtmErrorCallBack;
TMK_THREAD_STATE int32_t vtmErrStatus;
TMK_THREAD_STATE uint32_t vtmSeenStatuses;  // a bit (1 << status) for each that was reported
TMK_THREAD_STATE uint64_t vtmMode;
