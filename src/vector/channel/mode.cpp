// SPDX-License-Identifier: Apache-2.0
// The thread's mode word, status, callback and index base, and the environment's say in the mode.
#include <cstring>
#include <utility>

#include "tmk/abi/serv.h"
#include "tmk/abi/vtm.h"
#include "vector/channel/thread_state.hpp"

thread_local const void* vtmInterfInputVecorPointer = nullptr;
thread_local VtmErrorCallback vtmErrorCallBack = nullptr;
thread_local int32_t vtmErrStatus = 0;
thread_local uint32_t vtmSeenStatuses = 0;
thread_local uint64_t vtmMode = 0;

namespace {

constexpr uint64_t no_override = ~uint64_t{0};
constexpr int buffer_size = 256;

struct keyword {
  const char* text;
  int length;
  uint64_t value;
};

// In this order: the first entry that matches is taken.
constexpr keyword mapModeS_N[] = {
    {"LA", 2, VTM_LA},
    {"HA", 2, VTM_HA},
    {"EP", 2, VTM_EP},
    {"DEFAULT_PRECISION", 17, 0},
    {"FLOAT_CONSISTENT", 16, VTM_FLOAT_CONSISTENT},
    {"DOUBLE_CONSISTEN", 16, VTM_DOUBLE_CONSISTEN},
    {"RESTORE", 7, VTM_RESTORE},
    {"ERRMODE_IGNORE", 14, VTM_ERRMODE_IGNORE},
    {"ERRMODE_ERRNO", 13, VTM_ERRMODE_ERRNO},
    {"ERRMODE_STDERR", 14, VTM_ERRMODE_STDERR},
    {"ERRMODE_EXCEPT", 14, VTM_ERRMODE_EXCEPT},
    {"ERRMODE_CALLBACK", 16, VTM_ERRMODE_CALLBACK},
    {"ERRMODE_NOERR", 13, VTM_ERRMODE_NOERR},
    {"ERRMODE_DEFAULT", 15, VTM_ERRMODE_DEFAULT},
    {"TRAP_INVALID", 12, VTM_TRAP_INVALID},
    {"TRAP_DIVBYZERO", 14, VTM_TRAP_DIVBYZERO},
    {"TRAP_OVERFLOW", 13, VTM_TRAP_OVERFLOW},
    {"TRAP_UNDERFLOW", 14, VTM_TRAP_UNDERFLOW},
};

const keyword* match(const char* buffer, int position) {
  for (const keyword& k : mapModeS_N) {
    const int begin = position + 4;
    if (begin + k.length < buffer_size && std::memcmp(buffer + begin, k.text, k.length) == 0) return &k;
  }
  return nullptr;
}

}  // namespace

extern "C" {

uint64_t tmk_vtm_kernel_ReadEnvVarMode(void) {
  char buffer[buffer_size] = {};
  if (tmk_serv_getenv("TMK_VTM_MODE", buffer, buffer_size) < 1) return no_override;

  // One fault anywhere rejects the whole variable.
  uint64_t mode = 0;
  for (int position = 0;; ++position) {
    if (position + 4 >= buffer_size || std::memcmp(buffer + position, "VTM_", 4) != 0) return no_override;
    const keyword* k = match(buffer, position);
    if (k == nullptr) return no_override;
    mode |= k->value;
    position += 4 + k->length;
    if (buffer[position] == '\0') return mode;
    if (buffer[position] != ',') return no_override;
  }
}

uint32_t tmk_vtm_kernel_GetMode(void) {
  if (vtmMode == 0) {
    uint64_t mode = tmk_vtm_kernel_ReadEnvVarMode();
    if (mode == no_override) {
      mode = VTM_HA | VTM_ERRMODE_DEFAULT;
    } else {
      if ((mode & VTM_ACCURACY_MASK) == 0) mode |= VTM_HA;
      if ((mode & VTM_ERRMODE_MASK) == 0) mode |= VTM_ERRMODE_DEFAULT;
    }
    vtmMode = static_cast<uint32_t>(mode);
  }
  return static_cast<uint32_t>(vtmMode);
}

uint32_t tmk_vtm_kernel_SetMode(uint32_t mode) {
  const uint32_t old = tmk_vtm_kernel_GetMode();
  for (const uint32_t mask : {VTM_ACCURACY_MASK, VTM_ERRMODE_MASK, VTM_DENORMALS_MASK, VTM_TRAP_MASK})
    if ((mode & mask) != 0) vtmMode = (vtmMode & ~uint64_t{mask}) | (mode & mask);
  return old;
}

int32_t tmk_vtm_kernel_GetErrStatus(void) { return vtmErrStatus; }
int32_t tmk_vtm_kernel_SetErrStatus(int32_t status) { return std::exchange(vtmErrStatus, status); }
int32_t tmk_vtm_kernel_ClearErrStatus(void) { return tmk_vtm_kernel_SetErrStatus(0); }

VtmErrorCallback tmk_vtm_kernel_GetErrorCallBack(void) { return vtmErrorCallBack; }

// SetMode merges, so clearing the callback may leave its bit standing: then the null callback stops the call.
VtmErrorCallback tmk_vtm_kernel_SetErrorCallBack(VtmErrorCallback callback) {
  const uint32_t mode = tmk_vtm_kernel_GetMode();
  const VtmErrorCallback old = std::exchange(vtmErrorCallBack, callback);
  tmk_vtm_kernel_SetMode(callback != nullptr ? mode | VTM_ERRMODE_CALLBACK
                                             : mode & ~uint32_t{VTM_ERRMODE_CALLBACK});
  return old;
}

VtmErrorCallback tmk_vtm_kernel_ClearErrorCallBack(void) { return tmk_vtm_kernel_SetErrorCallBack(nullptr); }

const void* tmk_vtm_kernel_SetInterfInputVectorPointer(const void* base) {
  return vtmInterfInputVecorPointer = base;
}

int32_t tmk_vtm_kernel_GetTTableIndexM(int32_t, uint32_t mode) {
  return static_cast<int32_t>(mode & VTM_ACCURACY_MASK) - 1;
}

int32_t tmk_vtm_kernel_GetTTableIndex(void) {
  return tmk_vtm_kernel_GetTTableIndexM(0, tmk_vtm_kernel_GetMode());
}

int32_t dll_cpu_version(void) { return 0; }

uint32_t _vtmGetMode(void) { return tmk_vtm_kernel_GetMode(); }
uint32_t _vtmSetMode(uint32_t mode) { return tmk_vtm_kernel_SetMode(mode); }
int32_t _vtmGetErrStatus(void) { return tmk_vtm_kernel_GetErrStatus(); }
int32_t _vtmSetErrStatus(int32_t status) { return tmk_vtm_kernel_SetErrStatus(status); }
int32_t _vtmClearErrStatus(void) { return tmk_vtm_kernel_ClearErrStatus(); }
VtmErrorCallback _vtmGetErrorCallBack(void) { return tmk_vtm_kernel_GetErrorCallBack(); }
VtmErrorCallback _vtmSetErrorCallBack(VtmErrorCallback callback) {
  return tmk_vtm_kernel_SetErrorCallBack(callback);
}
VtmErrorCallback _vtmClearErrorCallBack(void) { return tmk_vtm_kernel_ClearErrorCallBack(); }
const void* _vtmSetInterfInputVectorPointer(const void* base) {
  return tmk_vtm_kernel_SetInterfInputVectorPointer(base);
}
}
