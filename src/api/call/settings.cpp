// SPDX-License-Identifier: Apache-2.0
// Accuracy by thread, tier by process.
#include "api/call/settings.hpp"

#include <tmk/abi/vtm.h>

#include <cstdlib>
#include <string>
#include <tmk/scopes.hpp>

#include "api/call/refuse.hpp"

namespace tmk {

namespace {

accuracy thread_accuracy() { return static_cast<accuracy>(tmk_vtm_kernel_GetMode() & VTM_ACCURACY_MASK); }

// The error names the cap where that is malformed, and the requested tier otherwise.
[[noreturn]] void refuse_tier(int32_t status, int32_t wanted) {
  const char* cap = std::getenv("TMK_TIER");
  const std::string text = cap != nullptr ? cap : "";
  if (status == TMK_TIER_BAD_CAP)
    throw error(status, "select_tier", "TMK_TIER", text, "is " + text + ", want W7, V3 or V4");
  const std::string value = std::to_string(wanted);
  if (status == TMK_TIER_UNKNOWN)
    throw error(status, "select_tier", "wanted", value, "is " + value + ", want a tier");
  const char* tier_name = tmk_tier_name(wanted);
  throw error(status, "select_tier", "wanted", tier_name,
              std::string("is ") + tier_name + ", which the processor has not" +
                  (text.empty() ? "" : " or TMK_TIER=" + text + " forbids"));
}

int32_t select(int32_t wanted) {
  const int32_t selected = tmk_select_tier(wanted);
  if (selected < 0) refuse_tier(selected, wanted);
  return selected;
}

}  // namespace

// An initialiser that throws runs again at the next call.
void detail::select_first_tier() { [[maybe_unused]] static const int32_t selected = select(TMK_TIER_AUTO); }

void set_accuracy(accuracy level) {
  const int value = static_cast<int>(level);
  detail::refuse_unless_in("set_accuracy", "level", value, VTM_LA, VTM_EP);
  tmk_vtm_kernel_SetMode(static_cast<uint32_t>(value));
}

accuracy_scope::accuracy_scope(accuracy level) : previous_(thread_accuracy()) { set_accuracy(level); }
accuracy_scope::~accuracy_scope() { tmk_vtm_kernel_SetMode(static_cast<uint32_t>(previous_)); }

tier select_tier(tier wanted) {
  // Only the first selection, through the C interface, may choose the tier automatically.
  if (static_cast<int32_t>(wanted) >= TMK_TIER_AUTO)
    refuse_tier(TMK_TIER_UNKNOWN, static_cast<int32_t>(wanted));
  return static_cast<tier>(select(static_cast<int32_t>(wanted)));
}

tier current_tier() {
  detail::select_first_tier();
  return static_cast<tier>(tmk_current_tier());
}

std::string_view name(tier t) {
  const char* text = tmk_tier_name(static_cast<int32_t>(t));
  return text != nullptr ? text : "";
}

}  // namespace tmk
