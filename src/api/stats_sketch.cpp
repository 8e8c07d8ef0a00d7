// Quantiles of a stream: one task per variable, since omitted NaNs leave variables with counts of their own.
#include <cmath>
#include <limits>

#include "api/check.hpp"
#include "api/settings.hpp"
#include "api/stats.hpp"

namespace tmk {

namespace {

struct variable {
  detail::task_handle task;
  std::int64_t count = 0;
  bool has_nan = false;
};

}  // namespace

// The tasks point into it.
struct quantile_sketch::state {
  static constexpr int32_t one = 1;
  double epsilon, order = 0.5, answer = 0;
  int32_t n = 0;
  nan_policy nan;
  std::vector<variable> variables;

  const variable& require(const char* function, std::size_t j, double order) const {
    if (j >= variables.size())
      detail::refuse(function, "variable", std::to_string(j),
                     "is " + std::to_string(j) + ", want 0 to " + std::to_string(variables.size() - 1));
    if (!(order >= 0 && order <= 1))
      detail::refuse(function, "order", detail::number(order),
                     "is " + detail::number(order) + ", want 0 to 1");
    return variables[j];
  }

  void absorb(variable& v, std::vector<double>& values) {
    n = static_cast<int32_t>(values.size());
    __vtsdSSEditTask(v.task.get(), VTS_SS_PARAM_DATA, values.data());
    detail::check_status(
        "quantile_sketch::add",
        _vtsdSSStreamQuantiles(v.task.get(), 0, 0, VTS_SS_METHOD_STREAM_ABSORB, 0, tmk_threading_serial()));
    v.count += n;
  }
};

void quantile_sketch::release::operator()(state* p) const { delete p; }

quantile_sketch::quantile_sketch(std::size_t cols, double epsilon, nan_policy nan) {
  if (cols < 1) detail::refuse("quantile_sketch", "cols", "0", "is 0, want 1 or more");
  if (!(epsilon > 0 && epsilon <= 1))
    detail::refuse("quantile_sketch", "epsilon", detail::number(epsilon),
                   "is " + detail::number(epsilon) + ", want more than 0, at most 1");
  state_.reset(new state{.epsilon = epsilon, .nan = nan, .variables = {}});
  state_->variables.resize(cols);
  for (variable& v : state_->variables) {
    v.task = detail::new_task("quantile_sketch", &state::one, &state_->n, nullptr, nullptr);
    static constexpr int32_t storage = VTS_SS_ROWS;
    __vtsiSSEditTask(v.task.get(), VTS_SS_PARAM_OBSERVATIONS, &state_->n);
    __vtsiSSEditTask(v.task.get(), VTS_SS_PARAM_DATA_STORAGE, &storage);
    __vtsdSSEditStreamQuantiles(v.task.get(), &state::one, &state_->order, &state_->answer, &state::one,
                                &state_->epsilon);
  }
}

std::size_t quantile_sketch::cols() const { return state_->variables.size(); }
double quantile_sketch::epsilon() const { return state_->epsilon; }

void quantile_sketch::add(const data_view& x) {
  constexpr auto function = "quantile_sketch::add";
  detail::check_data(function, x, true);
  if (detail::cols_of(x) != cols())
    detail::refuse(function, "x.cols", std::to_string(detail::cols_of(x)),
                   "is " + std::to_string(detail::cols_of(x)) + ", want " + std::to_string(cols()));
  detail::refuse_nan(function, x, std::nullopt, state_->nan);
  constexpr std::size_t length = 8192;
  std::vector<double> values;
  values.reserve(length);
  const auto add_view = [&](const auto& view) {
    for (std::size_t first = 0; first < view.rows(); first += length)
      for (std::size_t j = 0; j < view.cols(); ++j) {
        variable& v = state_->variables[j];
        const std::size_t last = std::min(view.rows(), first + length);
        values.clear();
        for (std::size_t i = first; i < last; ++i)
          if (const double value = view(i, j); !std::isnan(value)) values.push_back(value);
        if (values.size() != last - first) v.has_nan = true;
        if (!values.empty()) state_->absorb(v, values);
      }
  };
  std::visit(add_view, x);
}

std::int64_t quantile_sketch::count(std::size_t variable) const {
  return state_->require("quantile_sketch::count", variable, 0).count;
}

double quantile_sketch::quantile(std::size_t variable, double order) const {
  state_->require("quantile_sketch::quantile", variable, order);
  return bounds(variable, order).value;
}

quantile_sketch::estimate quantile_sketch::bounds(std::size_t variable, double order) const {
  const auto& v = state_->require("quantile_sketch::bounds", variable, order);
  estimate e{std::numeric_limits<double>::quiet_NaN(), 0, 0, v.count};
  if (v.count == 0 || (v.has_nan && state_->nan == nan_policy::propagate)) return e;
  detail::check_status(
      "quantile_sketch::bounds",
      tmk_ss_dstream_quantile(v.task.get(), 0, order, &e.value, &e.lowest_rank, &e.highest_rank, &e.count));
  return e;
}

}  // namespace tmk
