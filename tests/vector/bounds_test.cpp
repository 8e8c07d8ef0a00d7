// SPDX-License-Identifier: Apache-2.0
// Every kernel of every tier against multiple-precision values: what its level promises, and the bounds of
// bounds.def, for random arguments of the function's domain and for those where kernels came off worst.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "oracle/batch.hpp"
#include "oracle/oracle.hpp"
#include "tools/common/kernels.hpp"

namespace {

using namespace tmk::accuracy;
using namespace tmk::tools;

struct bound_row {
  std::string_view function;
  bool is_wide;
  std::array<double, 3> ulp;  // by slot
};
constexpr bool W7 = false, wide = true;
constexpr double level = HUGE_VAL;
constexpr bound_row bounds[] = {
#define TMK_BOUND(function, tiers, la, ha, ep) {#function, tiers, {la, ha, ep}},
#include "vector/bounds.def"
};

// What a function's level promises where bounds.def says nothing else: HA 1 ulp, and the others a number of
// bits. The unit of subnormal results is large: one of them is allowed.
double promised_bits(const vector_function& f, const kernel_use& use) {
  return f.is_single() ? (use.slot == TMK_SLOT_LA ? 0x1p-21 : 0x1p-11)
                       : (use.slot == TMK_SLOT_LA ? 0x1p-50 : 0x1p-26);
}

bool is_kept(const vector_function& f, const kernel_use& use, const exact_result& exact,
             const std::array<double, 2>& got) {
  const double ulp = result_error(f, exact, got);
  const auto row = std::ranges::find_if(bounds, [&](const bound_row& b) {
    return b.function == f.name && b.is_wide == (use.tier != TMK_TIER_W7);
  });
  const double bound = row != std::end(bounds) ? row->ulp[use.slot] : level;
  if (ulp > bound) return false;
  // Some complex functions promise 2 ulp at HA, and have a row.
  if (ulp <= 1 || (f.is_complex() && use.slot == TMK_SLOT_HA && bound < level)) return true;
  const double relative = f.has_complex_result()
                              ? modulus_relative_error(exact, got)
                              : std::max(relative_error(exact[0], got[0]), relative_error(exact[1], got[1]));
  return use.slot != TMK_SLOT_HA && relative <= promised_bits(f, use);
}

// Complex quotients of level EP square the divisor, wherever that leads.
bool leaves_range(const vector_function& f, const kernel_use& use, const arguments& x) {
  if (!f.is_complex() || f.stem != "Div" || use.slot != TMK_SLOT_EP) return false;
  const double end = f.is_single() ? 0x1p60 : 0x1p500;
  const auto inside = [end](double size) { return size >= 1 / end && size <= end; };
  return !inside(std::abs(x.a)) || !inside(std::abs(x.b));
}

template <class Real, int32_t Size>
void expect_kept(const vector_function& f, batch<Real, Size>& sample) {
  const oracle exact(f.name);
  std::vector<exact_result> values;
  for (const arguments& x : sample.inputs()) values.push_back(exact(x));
  for (const kernel& k : distinct_kernels(f, available_tiers(), {TMK_SLOT_LA, TMK_SLOT_HA, TMK_SLOT_EP})) {
    sample.run(k.address);
    for (const kernel_use& use : k.uses)
      for (size_t i = 0; i < values.size(); ++i) {
        if (leaves_range(f, use, sample.inputs()[i])) continue;
        const auto got = sample.result(static_cast<int32_t>(i));
        ASSERT_TRUE(is_kept(f, use, values[i], got))
            << std::hexfloat << f.name << sample.inputs()[i].a << sample.inputs()[i].b << " = " << got[0]
            << ", " << got[1] << std::defaultfloat << ", " << result_error(f, values[i], got) << " ulp, "
            << level_names[use.slot] << " on " << tmk_tier_name(use.tier);
      }
  }
}

class bounds_of_errors : public testing::Test {
 protected:
  bounds_of_errors() : mode_(tmk_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE | VTM_DENORMALS_KEPT)) {}
  ~bounds_of_errors() override {
    if (mode_ != 0) tmk_vtm_kernel_SetMode(mode_);
    tmk_select_tier(TMK_TIER_WIDEST);
  }

 private:
  uint32_t mode_;
};

template <int32_t Size>
void expect_kept_on_random_arguments(const vector_function& f) {
  if (f.is_single())
    expect_kept(f, *std::make_unique<batch<float, Size>>(f, 11));
  else
    expect_kept(f, *std::make_unique<batch<double, Size>>(f, 12));
}

TEST_F(bounds_of_errors, are_kept_on_random_arguments) {
  for (const vector_function& f : functions_with_value())
    if (f.vectorized) expect_kept_on_random_arguments<1024>(f);
}

// Tests of the extended-precision functions judge more; these go through the kernels.
TEST_F(bounds_of_errors, are_kept_by_reference_kernels) {
  for (const vector_function& f : functions_with_value())
    if (!f.vectorized) expect_kept_on_random_arguments<64>(f);
}

TEST_F(bounds_of_errors, are_kept_on_hard_arguments) {
  const auto functions = functions_with_value();
  std::ifstream file(TMK_SOURCE_DIR "/tests/reference/hard_inputs.txt");
  int lines = 0;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream words(line);
    std::string name;
    words >> name;
    const auto f = std::ranges::find(functions, name, &vector_function::name);
    ASSERT_NE(f, functions.end()) << line;
    std::vector<double> values;
    for (std::string word; words >> word;) values.push_back(std::strtod(word.c_str(), nullptr));
    const std::optional<arguments> x = listed_arguments(*f, values);
    ASSERT_TRUE(x) << line;
    if (f->is_single())
      expect_kept(*f, *std::make_unique<batch<float, 1>>(*f, std::span(&*x, 1)));
    else
      expect_kept(*f, *std::make_unique<batch<double, 1>>(*f, std::span(&*x, 1)));
    ++lines;
  }
  EXPECT_GE(lines, 25);
}

// A misspelt row would bind nothing.
TEST_F(bounds_of_errors, are_those_of_functions_with_kernels) {
  const auto functions = functions_with_value();
  std::set<std::pair<std::string_view, bool>> seen;
  for (const bound_row& row : bounds) {
    const auto f = std::ranges::find(functions, row.function, &vector_function::name);
    EXPECT_TRUE(f != functions.end() && f->vectorized) << row.function;
    EXPECT_TRUE(seen.insert({row.function, row.is_wide}).second) << row.function << " twice";
  }
}

}  // namespace
