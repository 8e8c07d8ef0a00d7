// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nanobind/nanobind.h>

namespace tmk::python {

// Registers streams, and what makes one a bit generator of NumPy's.
void add_random(nanobind::module_& m);

}  // namespace tmk::python
