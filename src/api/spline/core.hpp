// SPDX-License-Identifier: Apache-2.0
// What the files of the spline API share: the C interface in both precisions under one name, what a spline
// holds, and checks.
#pragma once

#include <tmk/abi/df.h>

#include <array>
#include <cstdint>
#include <memory>
#include <tmk/spline.hpp>

#include "api/call/refuse.hpp"
#include "api/call/status.hpp"
#include "api/call/threads.hpp"

namespace tmk::detail {

template <class Real>
struct textbook;
#define TMK_TEXTBOOK(letter, Real)                                          \
  template <>                                                               \
  struct textbook<Real> {                                                   \
    using spline = DF##letter##Spline;                                      \
    using points = DF##letter##Points;                                      \
    using properties = DF##letter##SplineProperties;                        \
    using rule = DF##letter##Rule;                                          \
    static constexpr auto* make = tmk_df_textbook_##letter##new;            \
    static constexpr auto* release = tmk_df_textbook_##letter##delete;      \
    static constexpr auto* query = tmk_df_textbook_##letter##query;         \
    static constexpr auto* terms = tmk_df_textbook_##letter##terms;         \
    static constexpr auto* evaluate = tmk_df_textbook_##letter##evaluate;   \
    static constexpr auto* integrate = tmk_df_textbook_##letter##integrate; \
    static constexpr auto* cells = tmk_df_textbook_##letter##cells;         \
  };
TMK_TEXTBOOK(d, double)
TMK_TEXTBOOK(s, float)
#undef TMK_TEXTBOOK

// What copies of a spline share.
template <class Real>
struct spline_core {
  struct release {
    void operator()(typename textbook<Real>::spline* s) const { textbook<Real>::release(&s); }
  };
  const char* name;  // of the function that made it
  std::unique_ptr<typename textbook<Real>::spline, release> handle;
  typename textbook<Real>::properties properties;

  explicit spline_core(const char* function) : name(function), properties{} {}
  std::size_t functions() const { return static_cast<std::size_t>(properties.ny); }
};

template <class Real>
using outside_rules = std::array<outside_rule<Real>, 2>;

// The rules as the C interface takes them. They point to the caller's functions and terms.
template <class Real>
std::array<typename textbook<Real>::rule, 2> c_rules(const outside_rules<Real>& rules) {
  const auto convert = [](const outside_rule<Real>& rule) -> typename textbook<Real>::rule {
    using function = std::function<Real(Real, std::size_t, int)>;
    if (!rule.function)
      return {static_cast<int32_t>(rule.how), rule.terms.empty() ? nullptr : rule.terms.data(), nullptr,
              nullptr};
    return {TMK_DF_OUTSIDE_FUNCTION, nullptr,
            [](Real site, int64_t f, int32_t derivative, void* parameter) {
              return (*static_cast<const function*>(parameter))(site, static_cast<std::size_t>(f),
                                                                derivative);
            },
            const_cast<function*>(&rule.function)};
  };
  return {convert(rules[0]), convert(rules[1])};
}

// A spline's arguments. `least` points.
template <class Real>
void check_points(const char* function, const abscissae<Real>& x, std::size_t least);
template <class Real>
void check_functions(const char* function, const char* name, const function_set<Real>& y, std::size_t points,
                     std::size_t functions);
template <class Real>
void check_conditions(const char* function, family kind, std::size_t points, const boundary& left,
                      const boundary& right);
template <class Real>
void check_periodic(const char* function, const function_set<Real>& y);
// That every coefficient is a finite number; else names the cell whose coefficients are the largest.
template <class Real>
void check_coefficients(const spline_core<Real>& core, const abscissae<Real>& x, const function_set<Real>& y);

// Arguments of a call.
void check_one_function(const char* function, std::size_t functions);
void check_side(const char* function, const char* name, side which);
// An array of the caller's that has `want` elements.
template <class T>
void check_array(const char* function, const char* name, std::span<T> values, std::size_t want) {
  const operand o{name, {values.data(), values.size()}, sizeof(T)};
  check_size(function, o, want);
  check_data(function, o);
}
template <class T, class Other>
void check_apart(const char* function, const char* name, std::span<T> out, const char* other_name,
                 std::span<Other> other) {
  check_overlap(function, {name, {out.data(), out.size()}, sizeof(T)},
                {other_name, {other.data(), other.size()}, sizeof(Other)}, false);
}

}  // namespace tmk::detail
