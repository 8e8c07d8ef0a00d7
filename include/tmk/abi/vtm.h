/* SPDX-License-Identifier: Apache-2.0 */
/* Vector math: element types, mode word, error channel, tiers, and (by the generated header) every function.
 *
 * The C interface checks nothing: pointers must be valid for n elements, a result may be the same array as an
 * argument but must not overlap it at another offset, and n <= 0 does nothing. Kernels return nothing; a bad
 * element reports through the calling thread's error channel. <tmk/math.hpp> is the checked C++ API. */
#ifndef TMK_ABI_VTM_H
#define TMK_ABI_VTM_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#ifdef __GNUC__
#pragma GCC visibility push(default)
#endif

/* Complex elements: interleaved real and imaginary part, passed by value like the C complex types. */
typedef struct {
  float re, im;
} tmk_complex8;
typedef struct {
  double re, im;
} tmk_complex16;

/* A function's kernels by accuracy level. Several slots may hold the same kernel; none is ever empty. */
enum { TMK_SLOT_LA = 0, TMK_SLOT_HA = 1, TMK_SLOT_EP = 2 };
typedef void (*VtmKernel)(void); /* cast to the function's own signature before the call */
typedef struct {
  VtmKernel kernel[3];
} VtmDispatchRecord;
typedef struct {
  float cost[3];
} VtmCostRecord; /* relative cost per element, same slots */

/* Mode word: one field per mask. The default is HA with ERRMODE_DEFAULT, 0x1A02. */
enum {
  VTM_ACCURACY_MASK = 0xF,
  VTM_LA = 1,
  VTM_HA = 2,
  VTM_EP = 3,

  VTM_FLOAT_CONSISTENT = 0x10,
  VTM_DOUBLE_CONSISTEN = 0x20,
  VTM_RESTORE = 0x30,

  VTM_ERRMODE_MASK = 0xFF00,
  VTM_ERRMODE_IGNORE = 0x100,
  VTM_ERRMODE_ERRNO = 0x200,
  VTM_ERRMODE_STDERR = 0x400,
  VTM_ERRMODE_EXCEPT = 0x800,
  VTM_ERRMODE_CALLBACK = 0x1000,
  VTM_ERRMODE_NOERR = 0x2000,
  VTM_ERRMODE_DEFAULT = 0x1A00,

  VTM_DENORMALS_MASK = 0x3C0000,
  VTM_DENORMALS_KEPT = 0x140000,
  VTM_DENORMALS_FLUSHED = 0x280000,

  VTM_TRAP_MASK = 0xF000000,
  VTM_TRAP_INVALID = 0x1000000,
  VTM_TRAP_DIVBYZERO = 0x2000000,
  VTM_TRAP_OVERFLOW = 0x4000000,
  VTM_TRAP_UNDERFLOW = 0x8000000
};

enum {
  VTM_STATUS_CALLFAIL = -2,
  VTM_STATUS_BADARG = -1,
  VTM_STATUS_OK = 0,
  VTM_STATUS_DOMAIN = 1,
  VTM_STATUS_SINGULARITY = 2,
  VTM_STATUS_OVERFLOW = 3,
  VTM_STATUS_UNDERFLOW = 4
};

/* What a callback sees of one bad element. Doubles are aligned to 4 bytes on every machine. A change of
 * r1 and r2 (and of their imaginary parts) reaches the result array when the callback returns 0. For real
 * functions the imaginary fields are unset; for the negative codes a1 to r2 are. */
#pragma pack(push, 4)
typedef struct {
  int32_t code;
  int32_t index;
  double a1, a2, r1, r2;
  char name[64]; /* not terminated: see name_length */
  int32_t name_length;
  double a1_imaginary, a2_imaginary, r1_imaginary, r2_imaginary;
} VtmErrorContext;
#pragma pack(pop)

/* Returns 0 to let the standard handling continue and take r1 and r2, anything else to end the report. It
 * runs on the reporting thread inside the kernel and must leave the floating-point controls as they are. */
typedef int32_t (*VtmErrorCallback)(VtmErrorContext*);

#define TMK_VTM_STATE(operation, result, parameters) \
  result tmk_vtm_kernel_##operation parameters;      \
  result _vtm##operation parameters;
TMK_VTM_STATE(GetMode, uint32_t, (void))
TMK_VTM_STATE(SetMode, uint32_t,
              (uint32_t mode)) /* fields that are zero in mode stay; returns the old word */
TMK_VTM_STATE(GetErrStatus, int32_t, (void))
TMK_VTM_STATE(SetErrStatus, int32_t, (int32_t status))
TMK_VTM_STATE(ClearErrStatus, int32_t, (void))
TMK_VTM_STATE(GetErrorCallBack, VtmErrorCallback, (void))
TMK_VTM_STATE(SetErrorCallBack, VtmErrorCallback, (VtmErrorCallback callback))
TMK_VTM_STATE(ClearErrorCallBack, VtmErrorCallback, (void))
TMK_VTM_STATE(SetInterfInputVectorPointer, const void*,
              (const void* base)) /* index base of reports; 0: none */
#undef TMK_VTM_STATE

/* Every status that kernels of this thread have reported since it began or since tmk_clear_seen_statuses, as
 * bits (1 << status); the status above is the last one alone. Nothing is added under VTM_ERRMODE_NOERR.
 * tmk_clear_seen_statuses returns the bits that it clears. */
uint32_t tmk_seen_statuses(void);
uint32_t tmk_clear_seen_statuses(void);

/* The mode that VTM_ keywords in the environment variable TMK_VTM_MODE ask for, or all ones. */
uint64_t tmk_vtm_kernel_ReadEnvVarMode(void);

/* Reports element i of a call: the pointers are the beginnings of its vectors, passed twice where there is
 * only one argument or result. */
void tmk_vtm_kernel_sError(int32_t status, int32_t i, const void* a1, const void* a2, void* r1, void* r2,
                           const char* name);
void tmk_vtm_kernel_dError(int32_t status, int32_t i, const void* a1, const void* a2, void* r1, void* r2,
                           const char* name);
void tmk_vtm_kernel_cError(int32_t status, int32_t i, const void* a1, const void* a2, void* r1, void* r2,
                           const char* name);
void tmk_vtm_kernel_zError(int32_t status, int32_t i, const void* a1, const void* a2, void* r1, void* r2,
                           const char* name);

/* The slot that the thread's mode (or the given mode word) selects: accuracy nibble - 1, unchecked. */
int32_t tmk_vtm_kernel_GetTTableIndex(void);
int32_t tmk_vtm_kernel_GetTTableIndexM(int32_t unused, uint32_t mode);

int32_t dll_cpu_version(void);

/* Tiers: the same functions compiled for wider registers. The baseline is in force until a tier is selected.
 * Selecting writes the tier's kernels into the dispatch records: do it once, before concurrent use. */
enum { TMK_TIER_W7 = 0, TMK_TIER_V3 = 1, TMK_TIER_V4 = 2, TMK_TIER_WIDEST = 3, TMK_TIER_AUTO = 4 };
enum { TMK_TIER_UNKNOWN = -1, TMK_TIER_UNAVAILABLE = -2, TMK_TIER_BAD_CAP = -3 };

/* Puts the tier in force and returns it. TMK_TIER_WIDEST takes the widest that the processor has and that
 * the environment's TMK_TIER (W7, V3 or V4), when set, allows; TMK_TIER_AUTO does so unless a tier has been
 * selected before, which then stays. On TMK_TIER_UNKNOWN (no such number),
 * TMK_TIER_UNAVAILABLE (processor or cap forbids it) or TMK_TIER_BAD_CAP (TMK_TIER holds something else)
 * nothing changes. */
int32_t tmk_select_tier(int32_t tier);
int32_t tmk_current_tier(void);
const char* tmk_tier_name(int32_t tier); /* "W7", "V3", "V4"; null for no tier */

/* Per function: its dispatch record (_ttab), its cost record (_ctab), and four entry points: the bare name
 * and _HA run slot 1, _21 or _50 slot 0, _11 or _26 slot 2, whatever the thread's mode. */
#include <tmk/abi/vtm_functions.h>

#ifdef __GNUC__
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif

#endif
