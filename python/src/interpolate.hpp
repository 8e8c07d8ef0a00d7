// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nanobind/nanobind.h>

namespace tmk::python {

// Registers splines in both precisions.
void add_interpolate(nanobind::module_& m);

}  // namespace tmk::python
