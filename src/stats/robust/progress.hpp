// SPDX-License-Identifier: Apache-2.0
// The caller's function that watches rounds and may stop them.
#pragma once

#include "tmk/abi/ss_robust.h"

namespace tmk::stats::robust {

struct progress {
  TmkSSRobustProgress function = nullptr;
  void* context = nullptr;

  // Whether to go on.
  bool operator()(int64_t round, double change) const {
    return function == nullptr || function(context, round, change) == 0;
  }
};

}  // namespace tmk::stats::robust
