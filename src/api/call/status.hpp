// SPDX-License-Identifier: Apache-2.0
// Statuses of the C interface as exceptions.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace tmk::detail {

struct status_sentence {
  int32_t status;
  const char* text;  // completes "argument g (0x800000) ..."
};

// The argument that a status is about.
struct status_subject {
  const char* argument;
  std::string value;
  std::span<const status_sentence> sentences;
};

// For a negative status: std::bad_alloc where the statistics or splines found no memory, else tmk::error with
// tmk_status_text's sentence about argument x.
void check_status(const char* function, int32_t status);

// For a negative status: tmk::error with the sentence that the subject has for it.
void check_status(const char* function, int32_t status, const status_subject& subject);

}  // namespace tmk::detail
