// SPDX-License-Identifier: Apache-2.0
// The fitting task: a partition, functions over it, the description of a spline and pointers to its
// coefficients, all of which the caller owns; the task owns the two arrays of row pointers and the bucket
// index of the partition.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tmk/abi/df.h"

namespace tmk::fitting {

// Bounds of the cell of any point in a bucket.
struct bucket {
  uint32_t lo, hi;
};
constexpr int bucket_room = 1026;

// What a DFTask* points to. The 32-bit layout packs the 64-bit fields to 4 bytes, as the compilers for that
// interface do; both precisions agree up to bucket_scale.
template <class Real>
struct task {
  uint32_t wide_ints;
  uint8_t tag;  // always 4
  bool even;    // see points_are_even
  uint8_t unused[2];
  int32_t precision;  // 1 double, 0 single
  int32_t dims;       // always 1
  int64_t nx;
  const Real* x;  // with a uniform partition its two ends
  int64_t xhint, ny;
  const Real** y_rows;
  int64_t yhint, s_order, s_type, ic_type;
  const Real* ic;
  int64_t bc_type;
  const Real* bc;
  Real** coeff_rows;
  int64_t s_hint;
  int32_t aux_flag;
  int64_t nbuckets;
  bucket* buckets;
  Real bucket_scale;

  static task& of(DFTask* handle) { return *reinterpret_cast<task*>(handle); }

  bool uniform() const { return (xhint & DF_PARTITION_UNIFORM) != 0; }
  bool columns() const { return yhint == DF_COLUMNS; }
};

// The most by which points that are declared even differ from a uniform partition, in steps: 4e-11 in double
// precision.
template <class Real>
constexpr Real even_within = sizeof(Real) == 8 ? Real(3.6685e-11) : Real(2.4222e-5);

// For the C++ API, which has checked it: the given points of the task are even, so that a cell follows from a
// site's place in proportion. Cells are the same, in less time.
template <class Real>
void points_are_even(DFTask* handle) {
  task<Real>::of(handle).even = true;
}

// By nx and x, in the memory that the task has for it.
template <class Real>
void build_bucket_index(task<Real>& t);

}  // namespace tmk::fitting
