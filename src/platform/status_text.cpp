// SPDX-License-Identifier: Apache-2.0
// The meaning of statuses in words, found by bisection.
#include <algorithm>
#include <iterator>

#include "tmk/abi/df.h"
#include "tmk/abi/ss.h"
#include "tmk/abi/status.h"
#include "tmk/abi/tpp.h"
#include "tmk/abi/vtm.h"
#include "tmk/abi/vts.h"

namespace {

struct status_row {
  int32_t code;
  const char* text;
};

constexpr status_row rows[] = {
#define TMK_STATUS(code, text) {code, text},
#include "platform/status_text.def"
#undef TMK_STATUS
};

constexpr auto ascends = [](const status_row& a, const status_row& b) { return a.code >= b.code; };
static_assert(std::adjacent_find(std::begin(rows), std::end(rows), ascends) == std::end(rows));

}  // namespace

const char* tmk_status_text(int32_t code) {
  const auto* row = std::lower_bound(std::begin(rows), std::end(rows), code,
                                     [](const status_row& r, int32_t wanted) { return r.code < wanted; });
  return row != std::end(rows) && row->code == code ? row->text : "unknown status";
}
