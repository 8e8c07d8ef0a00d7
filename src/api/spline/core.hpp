// SPDX-License-Identifier: Apache-2.0
// What the files of the spline interface share: both precisions of the C interface under one name, its tasks,
// what a spline holds, and checks.
#pragma once

#include <tmk/abi/df.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <tmk/spline.hpp>
#include <type_traits>
#include <vector>

#include "api/call/check.hpp"

namespace tmk::detail {

template <class Real, class Double, class Single>
constexpr auto twin(Double* d, Single* s) {
  if constexpr (std::is_same_v<Real, double>)
    return d;
  else
    return s;
}

// Throws for a negative status of the C interface, with its sentence.
void check_fitting(const char* function, int32_t status);

// A table of run slots for a call of this thread: as many threads as its parallel_scope allows.
const ThreadingService* fitting_threads();

struct delete_fitting_task {
  void operator()(DFTask* task) const { tmk_df_kernel_DeleteTask(&task); }
};

// A partition as the C interface has it: `x` holds the points, or the two ends of a grid.
template <class Real>
struct partition {
  std::size_t points;
  const Real* x;
  bool grid;
};

template <class Real>
class fitting_task {
 public:
  fitting_task() = default;
  // Functions are set later; one that is not for searches does without an index of its points.
  fitting_task(const char* function, const partition<Real>& p, bool searched);

  DFTask* get() const { return task_.get(); }
  void set(int64_t attribute, int64_t value) {
    check_fitting(function_, tmk_df_kernel_iEditVal(get(), attribute, value));
  }
  void set(int64_t attribute, const Real* pointer) {
    check_fitting(function_,
                  twin<Real>(tmk_df_kernel_dEditPtr, tmk_df_kernel_sEditPtr)(get(), attribute, pointer));
  }

 private:
  const char* function_ = "";
  std::unique_ptr<DFTask, delete_fitting_task> task_;
};

// What copies of a spline share. `task` points to the arrays.
template <class Real>
struct spline_core {
  const char* name = "";
  std::size_t points = 0, functions = 0;
  int order = 0;
  std::size_t row = 0;  // coefficients of a function
  Real first = 0, last = 0;
  std::vector<Real> x;  // or the two ends
  std::vector<Real> y;  // of a step function
  std::vector<Real> knots;
  std::unique_ptr<Real[]> coefficients;
  fitting_task<Real> task;
  Real point(std::size_t i) const {
    return x.size() == points
               ? x[i]
               : first + static_cast<Real>(i) * ((last - first) / static_cast<Real>(points - 1));
  }
  bool even = false;  // a grid, or points so near one that a cell follows from a site's place in proportion
};

// x and y as a construction needs them, checked. `least` points.
template <class Real>
void check_points(const char* function, const abscissae<Real>& x, std::size_t least);
template <class Real>
void check_functions(const char* function, const char* name, const function_set<Real>& y, std::size_t points,
                     std::size_t functions);
template <class Real>
void check_periodic(const char* function, const function_set<Real>& y);
// That every coefficient is a finite number; else names the cell that asks for more than the type holds.
template <class Real>
void check_coefficients(const spline_core<Real>& core, const function_set<Real>& y);
void check_one_function(const char* function, std::size_t functions);
void check_side(const char* function, const char* name, side which);

// Whether no point is farther than fitting::even_within of a step from its place on a uniform grid.
template <class Real>
bool evenly_spaced(std::span<const Real> x);

// n points of a grid; the last is its end exactly.
template <class Real>
std::vector<Real> expand(const uniform_grid& grid);

// One pass over sites: do they ascend, and are all of them in the partition? With `inside` not wanted the
// pass ends at the first descent.
struct site_order {
  bool ascending, inside;
};
template <class Real>
site_order look_at(std::span<const Real> sites, Real first, Real last, bool inside_wanted);

constexpr int64_t site_hint(bool ascending) { return ascending ? DF_SITES_SORTED : DF_SITES_UNKNOWN; }

void check_output(const char* function, const char* name, const void* data, std::size_t size,
                  std::size_t want);

}  // namespace tmk::detail
