// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <Python.h>

namespace tmk::python {

// A dictionary of all ufuncs of one accuracy slot by name, aliases included; null with an exception set.
PyObject* make_ufuncs(int slot);

}  // namespace tmk::python
