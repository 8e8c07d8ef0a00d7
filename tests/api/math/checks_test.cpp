// SPDX-License-Identifier: Apache-2.0
// What the C++ interface refuses, and that it refuses before anything is written.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <numeric>
#include <tmk/math.hpp>
#include <vector>

#include "tmk/abi/vtm.h"

namespace tmk {
namespace {

constexpr double untouched = -77;

struct refusal {
  const char* what;
  std::function<void(std::span<double>)> call;  // with 16 elements to misuse
  const char* argument;
  const char* value;
};

const double one[] = {1};
const std::complex<double> complex_one[] = {1};
const int bad_index[] = {0, 4, 1};
const std::int64_t far_index[] = {0, std::int64_t{1} << 32};
const std::size_t unsigned_index[] = {0, SIZE_MAX};
const int mask[] = {1, 0, 1, 1};

const refusal refusals[] = {
    {"short result", [](auto m) { exp(m.first(5), m.subspan(8, 3)); }, "r", "3"},
    {"short second argument", [](auto m) { pow(m.first(4), m.subspan(4, 3), m.subspan(8, 4)); }, "b", "3"},
    {"short second result", [](auto m) { sin_cos(m.first(4), m.subspan(4, 4), m.subspan(8, 5)); }, "r2", "5"},
    {"null argument", [](auto m) { exp(std::span((const double*)nullptr, 2), m.first(2)); }, "a", "null"},
    {"null result", [](auto m) { exp(m.first(2), std::span((double*)nullptr, 2)); }, "r", "null"},
    {"overlap ahead", [](auto m) { exp(m.first(8), m.subspan(1, 8)); }, "r", "begins 8 bytes from a"},
    {"overlap behind", [](auto m) { exp(m.subspan(7, 8), m.first(8)); }, "r", "begins -56 bytes from a"},
    {"overlap with b", [](auto m) { pow(m.first(4), m.subspan(4, 4), m.subspan(6, 4)); }, "r",
     "begins 16 bytes from b"},
    {"same results", [](auto m) { modf(m.first(4), m.subspan(8, 4), m.subspan(8, 4)); }, "r2",
     "begins 0 bytes from r1"},
    {"widths differ in place",
     [](auto m) { abs(std::span(reinterpret_cast<std::complex<double>*>(m.data()), 4), m.first(4)); }, "r",
     "begins 0 bytes from a"},
    {"accuracy", [](auto m) { exp(m.first(1), m.last(1), static_cast<accuracy>(7)); }, "level", "7"},
    {"stride", [](auto m) { pack_strided(m.first(4), -2, m.last(3)); }, "stride", "-2"},
    {"huge stride", [](auto m) { unpack_strided(m.first(4), m.last(8), INT64_MIN); }, "stride",
     "-9223372036854775808"},
    {"index", [](auto m) { pack_indexed(m.first(4), bad_index, m.last(3)); }, "index[1]", "4"},
    {"wide index", [](auto m) { unpack_indexed(m.first(2), m.last(4), far_index); }, "index[1]",
     "4294967296"},
    {"index of size_t", [](auto m) { pack_indexed(m.first(4), unsigned_index, m.last(2)); }, "index[1]",
     "-1"},
    {"mask's size", [](auto m) { pack_masked(m.first(5), mask, m.last(5)); }, "mask", "4"},
    {"room for the mask", [](auto m) { pack_masked(m.first(4), mask, m.last(2)); }, "y", "2"},
    {"value's result", [](auto m) { mul(m.first(4), 2.0, m.last(3)); }, "r", "3"},
    {"view's rows", [](auto m) { exp(matrix_view(m.data(), 2, 3), matrix_view(m.data() + 8, 3, 2)); }, "r",
     "3"},
    {"view's columns", [](auto m) { exp(matrix_view(m.data(), 2, 3), matrix_view(m.data() + 8, 2, 2)); }, "r",
     "2"},
    {"null view", [](auto m) { exp(matrix_view<double>(nullptr, 2, 2), matrix_view(m.data(), 2, 2)); }, "a",
     "null"},
    {"views overlap", [](auto m) { exp(matrix_view(m.data(), 2, 2, 4, 1), matrix_view(m.data() + 4, 2, 2)); },
     "r", "overlap"},
    {"transposed in place",
     [](auto m) { exp(matrix_view(m.data(), 2, 2), matrix_view(m.data(), 2, 2, 1, 2)); }, "r", "overlap"},
    {"rows of the result overlap",
     [](auto m) { exp(matrix_view(m.data(), 2, 3), matrix_view(m.data() + 8, 2, 3, 2, 1)); }, "r", "strides"},
    {"kind of scope", [](auto) { const error_scope scope(static_cast<on_error>(7)); }, "what", "7"},
    {"empty repair", [](auto) { const error_scope scope(nullptr); }, "repair", "null"},
    {"threads", [](auto) { const parallel_scope none(0); }, "threads", "0"},
    {"thread's accuracy", [](auto) { set_accuracy(accuracy::inherited); }, "level", "0"},
    {"tier", [](auto) { select_tier(static_cast<tier>(9)); }, "wanted", "9"},
};

TEST(checks, refuse_and_leave_the_arrays_alone) {
  for (const refusal& row : refusals) {
    std::vector<double> memory(16, untouched);
    try {
      row.call(memory);
      ADD_FAILURE() << row.what << ": not refused";
    } catch (const error& e) {
      EXPECT_EQ(e.argument(), row.argument) << row.what << ": " << e.what();
      EXPECT_EQ(e.value(), row.value) << row.what << ": " << e.what();
      EXPECT_LT(e.status(), 0) << row.what;
    }
    EXPECT_EQ(memory, std::vector<double>(16, untouched)) << row.what;
  }
}

TEST(checks, message_names_function_argument_and_wish) {
  std::vector<double> a(5), r(3);
  try {
    inv_sqrt(a, r);
    FAIL();
  } catch (const error& e) {
    EXPECT_STREQ(e.what(), "tmk::inv_sqrt: argument r has size 3, want 5");
  }
}

TEST(checks, empty_arrays_and_neighbours_are_no_error) {
  std::vector<double> m(4, 0.0);
  exp(std::span<double>(), std::span<double>());
  exp(std::span(m).first(2), std::span(m).last(2));
  EXPECT_EQ(m, (std::vector<double>{0, 0, 1, 1}));
}

TEST(checks, malformed_cap_is_named) {
  const char* const cap = std::getenv("TMK_TIER");
  const std::string kept = cap != nullptr ? cap : "";
  const tier before = current_tier();
  setenv("TMK_TIER", "V9", 1);
  try {
    select_tier();
    ADD_FAILURE() << "V9 was taken for a tier";
  } catch (const error& e) {
    EXPECT_EQ(e.argument(), "TMK_TIER");
    EXPECT_EQ(e.value(), "V9");
    EXPECT_EQ(e.status(), TMK_TIER_BAD_CAP);
  }
  cap != nullptr ? setenv("TMK_TIER", kept.c_str(), 1) : unsetenv("TMK_TIER");
  EXPECT_EQ(current_tier(), before);
}

}  // namespace
}  // namespace tmk
