// SPDX-License-Identifier: Apache-2.0
// The extension module: ufuncs by level, tiers, threads and the list of bad elements.
#define TMK_DEFINES_NUMPY_API
#include <nanobind/nanobind.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include "arrow.hpp"
#include "interpolate.hpp"
#include "kernels.hpp"
#include "numpy_api.hpp"
#include "random.hpp"
#include "stats.hpp"
#include "tmk/abi/threading.h"
#include "ufuncs.hpp"

namespace nb = nanobind;
namespace tmk::python {

namespace {

// Errors of import_array and import_umath.
int import_numpy() {
  import_array1(-1);
  import_umath1(-1);
  return 0;
}

std::string select_tier(const std::string& name) {
  for (const int tier : {TMK_TIER_W7, TMK_TIER_V3, TMK_TIER_V4})
    if (name == tmk_tier_name(tier)) {
      if (tmk_select_tier(tier) < 0)
        throw nb::value_error(("name: this processor, or TMK_TIER, allows no " + name).c_str());
      return name;
    }
  if (name != "auto")
    throw nb::value_error(("name is '" + name + "', want 'W7', 'V3', 'V4' or 'auto'").c_str());
  const int found = tmk_select_tier(TMK_TIER_WIDEST);
  if (found < 0) throw nb::value_error("the environment's TMK_TIER is none of W7, V3 and V4");
  return tmk_tier_name(found);
}

// Runs f(*arguments), whose arrays are contiguous, and lists what was bad: (indices, statuses), and the
// result.
nb::tuple collect(const nb::callable& f, const nb::args& arguments) {
  nb::list indices, statuses;
  nb::object result;
  {
    collector c;
    result = f(*arguments);
    for (const bad_element& e : c.found) indices.append(e.index), statuses.append(e.status);
  }
  return nb::make_tuple(indices, statuses, result);
}

NB_MODULE(_core, m) {
  if (import_numpy() < 0) throw nb::python_error();
  if (tmk_select_tier(TMK_TIER_AUTO) < 0)
    throw nb::import_error(
        "the environment's TMK_TIER is none of W7, V3 and V4, or one that this processor has not");
  m.def("ufuncs", [](int slot) {
    PyObject* const all = make_ufuncs(slot);
    if (all == nullptr) throw nb::python_error();
    return nb::steal<nb::dict>(all);
  });
  m.def("tier", [] { return tmk_tier_name(tmk_current_tier()); });
  m.def("select_tier", select_tier);
  m.def("threads", threads);
  m.def("set_threads", set_threads);
  m.def("most_threads", tmk_threading_limit);
  m.def("collect", collect);
  nb::module_ stats = m.def_submodule("stats");
  add_stats(stats);
  add_robust(stats);
  add_arrow(stats);
  nb::module_ random = m.def_submodule("random");
  add_random(random);
  nb::module_ interpolate = m.def_submodule("interpolate");
  add_interpolate(interpolate);
  m.attr("LOW") = static_cast<int>(TMK_SLOT_LA);
  m.attr("HIGH") = static_cast<int>(TMK_SLOT_HA);
  m.attr("FAST") = static_cast<int>(TMK_SLOT_EP);
}

}  // namespace

}  // namespace tmk::python
