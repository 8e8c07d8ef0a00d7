// SPDX-License-Identifier: Apache-2.0
// The C entry points of mergeable moments.
#include <cmath>

#include "platform/checks.hpp"
#include "platform/guarded.hpp"
#include "stats/pooled/handles.hpp"
#include "stats/pooled/sums.hpp"

namespace {

using namespace tmk::stats::pooled;

int32_t check_new(int64_t columns, const TmkSSOptions* options) {
  if (options == nullptr || !is_nan_policy(options->nanPolicy)) return TMK_SS_BAD_OPTIONS;
  const int64_t most = options->crossProduct != 0 ? most_matrix_columns : INT32_MAX;
  return columns < 1 || columns > most ? VTS_STATUS_SS_BAD_DIMENSION : 0;
}

int32_t check_block(const TmkSSMoments& m, const TmkSSData* block) {
  if (const int32_t bad = check_shape(block, 0); bad != 0) return bad;
  if (columns_of(*block) != m.sums.variables.size()) return TMK_SS_MISMATCH;
  if (const int32_t bad = check_weights(*block, m.options.weightsAreCounts != 0); bad != 0) return bad;
  return check_nans(*block, m.options.nanPolicy);
}

bool same_kind(const TmkSSMoments& a, const TmkSSMoments& b) {
  return a.sums.variables.size() == b.sums.variables.size() &&
         (a.options.crossProduct != 0) == (b.options.crossProduct != 0) &&
         a.options.nanPolicy == b.options.nanPolicy &&
         (a.options.weightsAreCounts != 0) == (b.options.weightsAreCounts != 0);
}

// A sum of weights that leaves the range of double would leave no mean.
int32_t check_total(const moment_sums& a, const moment_sums& b) {
  for (size_t j = 0; j < a.variables.size(); ++j)
    if (!std::isfinite(a.variables[j].weight + b.variables[j].weight)) return TMK_SS_BAD_WEIGHTS;
  return 0;
}

}  // namespace

int32_t tmk_ss_pooled_moments_new(TmkSSMoments** moments, int64_t columns, const TmkSSOptions* options) {
  if (const int32_t bad = check_new(columns, options); bad != 0) return bad;
  return make_handle(moments, [&] {
    return TmkSSMoments{*options, no_sums(static_cast<size_t>(columns), options->crossProduct != 0)};
  });
}

int32_t tmk_ss_pooled_moments_copy(TmkSSMoments** copy, const TmkSSMoments* moments) {
  return copy_handle(copy, moments);
}

int32_t tmk_ss_pooled_moments_delete(TmkSSMoments** moments) { return delete_handle(moments); }

int32_t tmk_ss_pooled_moments_add(TmkSSMoments* moments, const TmkSSData* block,
                                  const ThreadingService* threading) {
  return with_handle(moments, [&] {
    tmk::require(check_block(*moments, block));
    const moment_sums sums = summarise(*block, moments->options, threading);
    tmk::require(check_total(moments->sums, sums));
    merge(moments->sums, sums);
    return 0;
  });
}

int32_t tmk_ss_pooled_moments_merge(TmkSSMoments* moments, const TmkSSMoments* other) {
  return with_handle(moments, [&] {
    if (other == nullptr) return int32_t{VTS_STATUS_SS_TASK_NULL};
    if (!same_kind(*moments, *other)) return int32_t{TMK_SS_MISMATCH};
    tmk::require(check_total(moments->sums, other->sums));
    merge(moments->sums, moments == other ? moment_sums(other->sums) : other->sums);
    return 0;
  });
}

int32_t tmk_ss_pooled_moments_reset(TmkSSMoments* moments) {
  return with_handle(moments, [&] {
    moments->sums = no_sums(moments->sums.variables.size(), moments->options.crossProduct != 0);
    return 0;
  });
}

int32_t tmk_ss_pooled_moments_query(const TmkSSMoments* moments, int64_t* columns, TmkSSOptions* options,
                                    int64_t* complete) {
  return with_handle(moments, [&] {
    if (columns != nullptr) *columns = static_cast<int64_t>(moments->sums.variables.size());
    if (options != nullptr) *options = moments->options;
    if (complete != nullptr) *complete = moments->sums.joint.n;
    return 0;
  });
}

int32_t tmk_ss_pooled_moments_counts(const TmkSSMoments* moments, int64_t* counts) {
  return with_handle(moments, [&] {
    if (counts == nullptr) return int32_t{VTS_STATUS_SS_DATA_NULL};
    for (const variable_sums& v : moments->sums.variables) *counts++ = v.n;
    return 0;
  });
}
