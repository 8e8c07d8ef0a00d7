// SPDX-License-Identifier: Apache-2.0
// NumPy's C interface, as every source of the extension includes it.
#pragma once

#include <Python.h>

#define NPY_NO_DEPRECATED_API NPY_2_0_API_VERSION
#define NPY_TARGET_VERSION NPY_2_0_API_VERSION
#define PY_ARRAY_UNIQUE_SYMBOL tmk_array_api
#define PY_UFUNC_UNIQUE_SYMBOL tmk_ufunc_api
#ifndef TMK_DEFINES_NUMPY_API
#define NO_IMPORT_ARRAY
#define NO_IMPORT_UFUNC
#endif
#include <numpy/arrayobject.h>
#include <numpy/ufuncobject.h>
