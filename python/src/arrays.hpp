// SPDX-License-Identifier: Apache-2.0
// Arrays of NumPy as the C++ API takes them, and its results as arrays.
#pragma once

#include <nanobind/nanobind.h>
#include <nanobind/ndarray.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/pair.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include <optional>
#include <tmk/stats.hpp>
#include <vector>

namespace tmk::python {

namespace nb = nanobind;

// The Python layer hands over two-dimensional arrays of float64 or float32, of any strides, read-only ones as
// well.
using table = nb::ndarray<nb::ro, nb::ndim<2>, nb::device::cpu>;
using doubles = nb::ndarray<const double, nb::ndim<1>, nb::c_contig, nb::device::cpu>;
using labels = nb::ndarray<const std::int64_t, nb::ndim<1>, nb::c_contig, nb::device::cpu>;
using numpy_doubles = nb::ndarray<nb::numpy, double>;

inline data_view view_of(const table& x) {
  const auto view = [&]<class Real>(const Real* data) {
    return matrix_view<const Real>(data, x.shape(0), x.shape(1), x.stride(0), x.stride(1));
  };
  if (x.dtype() == nb::dtype<float>()) return view(static_cast<const float*>(x.data()));
  if (x.dtype() == nb::dtype<double>()) return view(static_cast<const double*>(x.data()));
  throw nb::type_error("x is neither float32 nor float64");
}

inline std::span<const double> span_of(const doubles& x) { return {x.data(), x.size()}; }

inline weight_view weights_of(const std::optional<doubles>& weights) {
  return weights ? weight_view(span_of(*weights)) : weight_view();
}

// An array that owns a copy.
template <class T>
nb::ndarray<nb::numpy, T> array_of(std::vector<T> values, std::vector<std::size_t> shape) {
  auto* const owned = new std::vector<T>(std::move(values));
  const nb::capsule owner(owned, [](void* p) noexcept { delete static_cast<std::vector<T>*>(p); });
  return nb::ndarray<nb::numpy, T>(owned->data(), shape.size(), shape.data(), owner);
}
template <class T>
nb::ndarray<nb::numpy, T> array_of(std::vector<T> values) {
  const std::size_t size = values.size();
  return array_of(std::move(values), {size});
}
inline numpy_doubles array_of(const matrix& m) { return array_of(m.values(), {m.rows(), m.cols()}); }

inline matrix_view<const double> square_of(const table& m) {
  const data_view view = view_of(m);
  if (const auto* doubles = std::get_if<matrix_view<const double>>(&view)) return *doubles;
  throw nb::type_error("the matrix is not float64");
}

// The computation f() without Python's lock.
template <class Call>
auto unlocked(const Call& f) {
  const nb::gil_scoped_release release;
  return f();
}

inline nb::bytes bytes_of(const std::vector<std::byte>& image) {
  return nb::bytes(image.data(), image.size());
}
inline std::span<const std::byte> bytes_in(const nb::bytes& image) {
  return {static_cast<const std::byte*>(image.data()), image.size()};
}

}  // namespace tmk::python
