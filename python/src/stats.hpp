// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nanobind/nanobind.h>

namespace tmk::python {

// Registers the classes and functions of statistics in a module, and how tmk::error becomes a Python
// exception.
void add_stats(nanobind::module_& m);
// Robust covariance, outliers and imputation, in the same module.
void add_robust(nanobind::module_& m);

}  // namespace tmk::python
