// SPDX-License-Identifier: Apache-2.0
// Every element-wise function as a ufunc of NumPy, made from functions.def, names.def and the generated
// texts.
#include "ufuncs.hpp"

#include <cstring>
#include <deque>
#include <string>

#include "kernels.hpp"
#include "numpy_api.hpp"

namespace tmk::python {

namespace {

enum class form {
  unary,
  binary,
  scalar_exponent,
  two_results,
  linear_fraction,
  real_result,
  real_argument,
  moves
};

// The rows of functions.def that are element-wise.
struct function {
  char letter;
  const char* stem;
  python::form form;
  const VtmDispatchRecord* record;
};
constexpr function functions[] = {
#define pack_stride moves
#define pack_mask moves
#define pack_index moves
#define unpack_stride moves
#define unpack_mask moves
#define unpack_index moves
#define TMK_FUNCTION(letter, stem, shape, slots, wide, stage) \
  {#letter[0], #stem, form::shape, &tmk_vtm_kernel_##letter##stem##_ttab},
#include "vector/registry/functions.def"
#undef TMK_FUNCTION
#undef pack_stride
#undef pack_mask
#undef pack_index
#undef unpack_stride
#undef unpack_mask
#undef unpack_index
};

struct name_row {
  const char *stem, *name, *aliases;
};
constexpr name_row names[] = {
#define TMK_NAME(stem, name, aliases) {#stem, #name, aliases},
#include "names.def"
#undef TMK_NAME
};

// What a function gives, and the errors measured for each of its levels.
struct text_row {
  const char *stem, *meaning, *errors[3];
};
constexpr text_row texts[] = {
#include "ufunc_texts.inc"
};

const char* text_of(const char* stem, int slot, bool errors) {
  for (const text_row& row : texts)
    if (std::strcmp(row.stem, stem) == 0) return errors ? row.errors[slot] : row.meaning;
  return "";
}

constexpr int type_of(char letter, bool complex) {
  const bool single = letter == 's' || letter == 'c';
  return complex ? (single ? NPY_CFLOAT : NPY_CDOUBLE) : (single ? NPY_FLOAT : NPY_DOUBLE);
}

constexpr std::uint8_t size_of(int type) { return type == NPY_FLOAT ? 4 : type == NPY_CDOUBLE ? 16 : 8; }

struct operands {
  int arguments, results, scalars;
};
constexpr operands operands_of(form s) {
  switch (s) {
    case form::binary:
      return {2, 1, 0};
    case form::two_results:
      return {1, 2, 0};
    case form::linear_fraction:
      return {6, 1, 4};
    default:
      return {1, 1, 0};
  }
}

// NumPy keeps pointers to all of this for as long as the process lives.
struct description {
  std::deque<kernel> kernels;
  std::vector<PyUFuncGenericFunction> loops;
  std::vector<void*> data;
  std::vector<char> types;
  std::string doc;
};

constexpr std::ptrdiff_t block = 1024;

template <std::size_t Size>
void copy_strided(std::ptrdiff_t n, const char* from, std::ptrdiff_t from_step, char* to,
                  std::ptrdiff_t to_step) {
  for (std::ptrdiff_t i = 0; i < n; ++i) std::memcpy(to + i * to_step, from + i * from_step, Size);
}

// Every other element has registers in the library's kernels, which move bits of any type.
void copy(std::uint8_t size, std::ptrdiff_t n, const char* from, std::ptrdiff_t from_step, char* to,
          std::ptrdiff_t to_step) {
  if (from_step == 2 * size && to_step == size && size != 16) {
    const auto& record = size == 4 ? tmk_vtm_kernel_sPackI_ttab : tmk_vtm_kernel_dPackI_ttab;
    return reinterpret_cast<void (*)(std::int64_t, const void*, std::int64_t, void*, std::int32_t)>(
        record.kernel[0])(n, from, 2, to, 1);
  }
  (size == 4   ? copy_strided<4>
   : size == 8 ? copy_strided<8>
               : copy_strided<16>)(n, from, from_step, to, to_step);
}

// Whether a result is an argument of a later element, as in reduce and accumulate: then elements go one by
// one.
bool depends(const kernel& k, std::ptrdiff_t n, char** p, const npy_intp* steps) {
  if (k.arguments != 2 || n < 2) return false;
  const auto range = [&](int i) {
    const char *a = p[i], *b = p[i] + (n - 1) * steps[i];
    return std::pair(std::min(a, b), std::max(a, b) + k.sizes[i]);
  };
  const auto [low, high] = range(2);
  for (int i = 0; i < 2; ++i) {
    if (p[i] == p[2] && steps[i] == steps[2] && steps[2] != 0) continue;
    const auto [first, last] = range(i);
    if (first < high && low < last) return true;
  }
  return false;
}

void one_by_one(const kernel& k, std::ptrdiff_t n, char** p, const npy_intp* steps) {
  char* at[most_operands];
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    for (int j = 0; j < k.operands(); ++j) at[j] = p[j] + i * steps[j];
    k.call(1, at);
  }
}

// Through a buffer for each operand that is not contiguous.
void in_blocks(const kernel& k, std::ptrdiff_t n, char** p, const npy_intp* steps) {
  alignas(64) char buffers[most_operands][block * 16];
  char* at[most_operands];
  for (int j = 0; j < k.arguments; ++j)
    if (steps[j] == 0) copy(k.sizes[j], std::min(n, block), p[j], 0, buffers[j], k.sizes[j]);
  for (std::ptrdiff_t from = 0; from < n; from += block) {
    const std::ptrdiff_t count = std::min(block, n - from);
    for (int j = 0; j < k.operands(); ++j) {
      const bool direct = steps[j] == k.sizes[j];
      at[j] = direct ? p[j] + from * steps[j] : buffers[j];
      if (!direct && j < k.arguments && steps[j] != 0)
        copy(k.sizes[j], count, p[j] + from * steps[j], steps[j], buffers[j], k.sizes[j]);
    }
    k.call(count, at);
    for (int j = k.arguments; j < k.operands(); ++j)
      if (at[j] == buffers[j])
        copy(k.sizes[j], count, buffers[j], k.sizes[j], p[j] + from * steps[j], steps[j]);
  }
}

void loop(char** p, const npy_intp* dimensions, const npy_intp* steps, void* data) {
  const kernel& k = *static_cast<const kernel*>(data);
  const std::ptrdiff_t n = dimensions[0];
  if (n <= 0) return;
  bool contiguous = true, scalars = true;
  for (int j = 0; j < k.operands(); ++j) {
    const bool single = j >= k.arguments - k.scalars && j < k.arguments;
    if (single)
      scalars = scalars && steps[j] == 0;
    else
      contiguous = contiguous && steps[j] == k.sizes[j];
  }
  if ((k.scalars != 0 && !(scalars && contiguous)) || depends(k, n, p, steps))
    return one_by_one(k, n, p, steps);
  if (contiguous) return k.call(n, p);
  in_blocks(k, n, p, steps);
}

// An operand's type: of a complex function some are real.
int type_of_operand(const function& f, int operand, int arguments) {
  const bool is_complex = f.letter == 'c' || f.letter == 'z';
  const bool real = (f.form == form::real_result && operand >= arguments) ||
                    (f.form == form::real_argument && operand < arguments);
  return type_of(f.letter, is_complex && !real);
}

// Pickles name a ufunc by its module, which NumPy tells since 2.2; before, all modules are searched.
void set_module(PyObject* ufunc, const char* module) {
  PyObject* const name = PyUnicode_FromString(module);
  if (name == nullptr || PyObject_SetAttrString(ufunc, "__module__", name) != 0) PyErr_Clear();
  Py_XDECREF(name);
}

PyObject* make_ufunc(const name_row& name, int slot, const char* level) {
  static std::deque<description> descriptions;
  description& d = descriptions.emplace_back();
  operands o{};
  for (const function& f : functions) {
    if (std::strcmp(f.stem, name.stem) != 0) continue;
    o = operands_of(f.form);
    kernel k{f.record, slot, o.arguments, o.results, o.scalars, std::strcmp(f.stem, "Modf") == 0, {}};
    for (int j = 0; j < k.operands(); ++j) {
      const int type = type_of_operand(f, j, o.arguments);
      k.sizes[j] = size_of(type);
      d.types.push_back(static_cast<char>(type));
    }
    d.kernels.push_back(k);
    d.loops.push_back(loop);
  }
  for (kernel& k : d.kernels) d.data.push_back(&k);
  d.doc = std::string(text_of(name.stem, slot, false)) + "\n\nOne of tmk's functions, " + level +
          ".\n\nErrors measured, the largest of any processor:\n\n" + text_of(name.stem, slot, true);
  return PyUFunc_FromFuncAndData(d.loops.data(), d.data.data(), d.types.data(),
                                 static_cast<int>(d.kernels.size()), o.arguments, o.results, PyUFunc_None,
                                 name.name, d.doc.c_str(), 0);
}

}  // namespace

PyObject* make_ufuncs(int slot) {
  static constexpr struct {
    const char *module, *text;
  } levels[] = {{"tmk.low", "low accuracy (below 4 ulp)"},
                {"tmk", "high accuracy (below 1 ulp, complex powers below 2)"},
                {"tmk.fast", "fast (about half the bits)"}};
  PyObject* const all = PyDict_New();
  for (const name_row& name : names) {
    PyObject* const ufunc = all != nullptr ? make_ufunc(name, slot, levels[slot].text) : nullptr;
    if (ufunc == nullptr || PyDict_SetItemString(all, name.name, ufunc) != 0) {
      Py_XDECREF(ufunc);
      Py_XDECREF(all);
      return nullptr;
    }
    set_module(ufunc, levels[slot].module);
    for (std::string rest = name.aliases; !rest.empty();) {
      const std::size_t end = std::min(rest.find(' '), rest.size());
      PyDict_SetItemString(all, rest.substr(0, end).c_str(), ufunc);
      rest.erase(0, end + 1);
    }
    Py_DECREF(ufunc);
  }
  return all;
}

}  // namespace tmk::python
