// SPDX-License-Identifier: Apache-2.0
// What every constructor refuses instead of following a pointer to nowhere.
#include "fitting/construction_case.hpp"

namespace {

using namespace tmk::tests;

TEST(constructors, need_a_task_and_rows) {
  using all = constructors<double>;
  const struct {
    all::function construct;
    int64_t order, s_type, bc_type;
  } rows[] = {{all::linear, 2, 0, DF_BC_NONE},
              {all::natural, 4, 0, DF_BC_FREE_END},
              {all::by_bends, 4, 9, DF_BC_FREE_END},
              {all::hermite, 4, 3, DF_BC_NONE},
              {all::bessel, 4, 4, DF_BC_NONE},
              {all::akima, 4, 5, DF_BC_NONE},
              {all::hyman, 4, 2, DF_BC_NONE},
              {all::quadratic, 3, 0, DF_BC_QUADRATIC_VALUE},
              {all::quadratic, 3, 1, 12}};
  const std::vector<double> x{0, 1, 2, 3, 4, 5}, y{0, 1, 0, 1, 0, 1}, values{0, 0}, ic{-1, 1, 2, 3, 4, 5, 6};
  std::vector<double> coefficients(24);
  for (const auto& row : rows) {
    EXPECT_EQ(row.construct(nullptr, 0, 0, tmk_threading_serial()), DF_STATUS_NULL_TASK);
    const int64_t ic_type = row.s_type == DF_TYPE_SUBBOTIN && row.order == 3 ? DF_IC_KNOTS : DF_IC_FIRST;
    DFTask* task = nullptr;
    ASSERT_EQ(0, tmk_df_kernel_dNewTask1D(&task, 6, x.data(), 0, 1, y.data(), DF_SEPARATE, 0));
    const auto describe = [&](double* c) {
      return tmk_df_kernel_dEditPPSpline1D(task, row.order, row.s_type, row.bc_type, values.data(), ic_type,
                                           ic.data(), c, DF_SEPARATE);
    };
    ASSERT_EQ(0, describe(nullptr));
    EXPECT_EQ(row.construct(task, 0, 0, tmk_threading_serial()), DF_STATUS_NULL_COEFF);
    ASSERT_EQ(0, describe(coefficients.data()));
    EXPECT_EQ(row.construct(task, 0, 0, tmk_threading_serial()), DF_STATUS_OK);
    // A second function whose row nobody has set.
    ASSERT_EQ(0, tmk_df_kernel_iEditVal(task, DF_NY, 2));
    ASSERT_EQ(0, tmk_df_kernel_dEditPtr(task, DF_Y, y.data()));
    EXPECT_EQ(row.construct(task, 0, 0, tmk_threading_serial()), DF_STATUS_NULL_Y);
    tmk_df_kernel_DeleteTask(&task);
  }
}

}  // namespace
