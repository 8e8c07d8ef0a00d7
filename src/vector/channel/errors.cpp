// SPDX-License-Identifier: Apache-2.0
// What a bad element leads to: status, callback, errno, printed message, trap, and the repair of the result.
#include <bit>
#include <cerrno>
#include <cstring>
#include <utility>

#include "tmk/abi/serv.h"
#include "tmk/abi/vtm.h"
#include "vector/channel/error_channel.hpp"
#include "vector/channel/thread_state.hpp"

namespace {

struct consequence {
  int error_number;
  uint16_t x87_flag;
  int message;
};

consequence consequence_of(int32_t status) {
  constexpr consequence rows[] = {
      {EACCES, 0, 736},    {EINVAL, 0, 735},    {0, 0, 0},           {EDOM, 0x01, 737},
      {ERANGE, 0x04, 738}, {ERANGE, 0x08, 739}, {ERANGE, 0x10, 740},
  };
  if (status < VTM_STATUS_CALLFAIL || status > VTM_STATUS_UNDERFLOW) return {EFAULT, 0, 741};
  return rows[status - VTM_STATUS_CALLFAIL];
}

bool has_element(int32_t status) { return status != VTM_STATUS_BADARG && status != VTM_STATUS_CALLFAIL; }

// A second argument or result counts when it is not the first one passed twice, and not zero.
bool counts_beside(double first, double second) {
  return std::memcmp(&first, &second, sizeof first) != 0 && second != 0;
}

void print(const VtmErrorContext& context, int message) {
  char name[sizeof context.name + 1] = {};
  std::memcpy(name, context.name, context.name_length);
  if (context.code == VTM_STATUS_BADARG) {
    tmk_serv_print(1, message, 2, name, context.index);
    return;
  }
  tmk_serv_print(1, message, 1, name);
  if (context.code == VTM_STATUS_CALLFAIL) return;

  const bool two_arguments = counts_beside(context.a1, context.a2);
  const bool two_results = counts_beside(context.r1, context.r2);
  constexpr int first_line[2][2] = {{742, 744}, {747, 750}};
  int line = first_line[two_arguments][two_results];
  const auto value = [&](double v) { tmk_serv_print(1, line++, 2, context.index, v); };
  value(context.a1);
  if (two_arguments) value(context.a2);
  value(context.r1);
  if (two_results) value(context.r2);
}

struct x87_environment {
  uint32_t control, status, tag, instruction_pointer, instruction_selector, operand_pointer, operand_selector;
};

// Fires the enabled traps, then leaves all exceptions masked and the flags raised.
void raise_x87(uint32_t mode, uint16_t flags) {
  constexpr uint32_t all_masks = 0x3F;
  if ((mode & VTM_TRAP_MASK) == 0) {
    // Loading the environment costs more than a kernel call: not where it would change nothing.
    uint16_t control, status;
    asm volatile("fnstcw %0\n\tfnstsw %1" : "=m"(control), "=m"(status));
    if ((control & all_masks) == all_masks && (status & flags) == flags) return;
  }
  struct trap {
    uint32_t mode_bit, control_mask;
  };
  constexpr trap traps[] = {{VTM_TRAP_INVALID, 0x01},
                            {VTM_TRAP_DIVBYZERO, 0x04},
                            {VTM_TRAP_OVERFLOW, 0x08},
                            {VTM_TRAP_UNDERFLOW, 0x10}};
  x87_environment saved;
  asm volatile("fnstenv %0" : "=m"(saved));
  x87_environment armed = saved;
  for (const trap& t : traps)
    if ((mode & t.mode_bit) != 0) armed.control &= ~t.control_mask;
  armed.status = (armed.status & ~all_masks) | flags;
  asm volatile("fldenv %0\n\tfwait" : : "m"(armed));
  saved.control |= all_masks;
  saved.status |= flags;
  asm volatile("fnclex\n\tfldenv %0" : : "m"(saved));
}

void standard_handler(const VtmErrorContext& context) {
  const uint32_t mode = tmk_vtm_kernel_GetMode();
  const consequence c = consequence_of(context.code);
  if ((mode & VTM_ERRMODE_ERRNO) != 0) errno = c.error_number;
  if ((mode & VTM_ERRMODE_STDERR) != 0 && context.code != VTM_STATUS_OK) print(context, c.message);
  if ((mode & VTM_ERRMODE_EXCEPT) != 0) raise_x87(mode, c.x87_flag);
}

// Elements of one precision as the context carries them: Parts is 1 for real, 2 for complex.
template <class Real, int Parts>
struct element {
  static constexpr int32_t width = sizeof(Real) * Parts;

  static void read(const void* vector, int32_t i, double& real, double& imaginary) {
    Real parts[Parts];
    std::memcpy(parts, static_cast<const char*>(vector) + intptr_t{i} * width, width);
    real = parts[0];
    if constexpr (Parts == 2) imaginary = parts[1];
  }

  static void write(void* vector, int32_t i, double real, double imaginary) {
    Real parts[Parts];
    parts[0] = static_cast<Real>(real);
    if constexpr (Parts == 2) parts[1] = static_cast<Real>(imaginary);
    std::memcpy(static_cast<char*>(vector) + intptr_t{i} * width, parts, width);
  }
};

// Keeps the status of a report, or of several. False where the mode requests nothing more.
bool record(uint32_t mode, int32_t last, uint32_t seen) {
  const uint32_t error_mode = mode & VTM_ERRMODE_MASK;
  if (error_mode == VTM_ERRMODE_NOERR) return false;
  vtmErrStatus = last;
  vtmSeenStatuses |= seen;
  return error_mode != VTM_ERRMODE_IGNORE;
}

constexpr uint32_t status_bit(int32_t status) {
  return status >= VTM_STATUS_DOMAIN && status <= VTM_STATUS_UNDERFLOW ? 1u << status : 0;
}

template <class Argument, class Result>
void report(int32_t status, int32_t i, const void* a1, const void* a2, void* r1, void* r2, const char* name) {
  const uint32_t mode = tmk_vtm_kernel_GetMode();
  if (!record(mode, status, status_bit(status))) return;

  VtmErrorContext context = {};
  context.code = status;
  context.index = i;
  if (vtmInterfInputVecorPointer != nullptr) {
    const intptr_t distance =
        static_cast<const char*>(a1) - static_cast<const char*>(vtmInterfInputVecorPointer);
    constexpr int shift = std::countr_zero(static_cast<unsigned>(Argument::width));
    context.index = static_cast<int32_t>(i + (distance >> shift));
  }
  context.name_length = static_cast<int32_t>(strnlen(name, sizeof context.name));
  std::memcpy(context.name, name, context.name_length);
  if (has_element(status)) {
    // Fields of a packed record may be unaligned: no reference may be bound to them.
    double values[8] = {};
    Argument::read(a1, i, values[0], values[4]);
    Argument::read(a2, i, values[1], values[5]);
    Result::read(r1, i, values[2], values[6]);
    Result::read(r2, i, values[3], values[7]);
    std::memcpy(&context.a1, values, 4 * sizeof(double));
    std::memcpy(&context.a1_imaginary, values + 4, 4 * sizeof(double));
  }

  if ((mode & VTM_ERRMODE_CALLBACK) != 0 && vtmErrorCallBack != nullptr)
    if (vtmErrorCallBack(&context) != 0) return;
  constexpr uint32_t handled =
      VTM_ERRMODE_IGNORE | VTM_ERRMODE_ERRNO | VTM_ERRMODE_STDERR | VTM_ERRMODE_EXCEPT | VTM_ERRMODE_NOERR;
  if ((mode & handled) != 0) standard_handler(context);
  if (!has_element(status)) return;

  // A unary call passes its result vector twice: the later write of r1 is the one that stays.
  Result::write(r2, i, context.r2, context.r2_imaginary);
  Result::write(r1, i, context.r1, context.r1_imaginary);
}

}  // namespace

extern "C" {

int32_t tmk_vtm_reports_are_observed(void) {
  const uint32_t mode = tmk_vtm_kernel_GetMode();
  const uint32_t error_mode = mode & VTM_ERRMODE_MASK;
  if (error_mode == VTM_ERRMODE_NOERR || error_mode == VTM_ERRMODE_IGNORE) return 0;
  if ((mode & VTM_ERRMODE_CALLBACK) != 0 && vtmErrorCallBack != nullptr) return 1;
  if ((mode & VTM_ERRMODE_STDERR) != 0) return 1;
  return (mode & VTM_ERRMODE_EXCEPT) != 0 && (mode & VTM_TRAP_MASK) != 0;
}

void tmk_vtm_report_all(int32_t last, uint32_t seen) {
  const uint32_t mode = tmk_vtm_kernel_GetMode();
  if (!record(mode, last, seen)) return;
  if ((mode & VTM_ERRMODE_ERRNO) != 0) errno = consequence_of(last).error_number;
  if ((mode & VTM_ERRMODE_EXCEPT) == 0) return;
  uint16_t flags = 0;
  for (int32_t status = VTM_STATUS_DOMAIN; status <= VTM_STATUS_UNDERFLOW; ++status)
    if ((seen & status_bit(status)) != 0) flags |= consequence_of(status).x87_flag;
  raise_x87(mode, flags);
}

void tmk_vtm_add_seen_statuses(uint32_t seen) { vtmSeenStatuses |= seen; }
uint32_t tmk_seen_statuses(void) { return vtmSeenStatuses; }
uint32_t tmk_clear_seen_statuses(void) { return std::exchange(vtmSeenStatuses, 0); }

// Letters of the arguments and of the results, where they differ.
#define TMK_DEFINE_ERROR(letters, argument, argument_parts, result, result_parts)                           \
  void tmk_vtm_kernel_##letters##Error(int32_t status, int32_t i, const void* a1, const void* a2, void* r1, \
                                       void* r2, const char* name) {                                        \
    report<element<argument, argument_parts>, element<result, result_parts>>(status, i, a1, a2, r1, r2,     \
                                                                             name);                         \
  }
TMK_DEFINE_ERROR(s, float, 1, float, 1)
TMK_DEFINE_ERROR(d, double, 1, double, 1)
TMK_DEFINE_ERROR(c, float, 2, float, 2)
TMK_DEFINE_ERROR(z, double, 2, double, 2)
TMK_DEFINE_ERROR(cs, float, 2, float, 1)
TMK_DEFINE_ERROR(zd, double, 2, double, 1)
TMK_DEFINE_ERROR(sc, float, 1, float, 2)
TMK_DEFINE_ERROR(dz, double, 1, double, 2)
}
