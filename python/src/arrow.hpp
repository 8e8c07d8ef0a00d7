// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nanobind/nanobind.h>

namespace tmk::python {

// Registers the reader of Arrow's C stream.
void add_arrow(nanobind::module_& m);

}  // namespace tmk::python
