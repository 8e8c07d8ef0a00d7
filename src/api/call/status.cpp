// SPDX-License-Identifier: Apache-2.0
#include "api/call/status.hpp"

#include <tmk/abi/df.h>
#include <tmk/abi/ss.h>
#include <tmk/abi/status.h>

#include <algorithm>
#include <new>
#include <tmk/error.hpp>

namespace tmk::detail {

void check_status(const char* function, int32_t status) {
  if (status >= 0) [[likely]]
    return;
  if (status == VTS_STATUS_SS_MEMORY || status == DF_STATUS_NO_MEMORY) throw std::bad_alloc();
  throw error(status, function, "x", std::to_string(status),
              std::string("failed: ") + tmk_status_text(status));
}

void check_status(const char* function, int32_t status, const status_subject& subject) {
  if (status >= 0) return;
  const auto row = std::ranges::find(subject.sentences, status, &status_sentence::status);
  throw error(status, function, subject.argument, subject.value,
              "(" + subject.value + ") " + (row != subject.sentences.end() ? row->text : "failed"));
}

}  // namespace tmk::detail
