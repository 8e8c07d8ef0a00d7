// SPDX-License-Identifier: Apache-2.0
// Statistics for the Python layer (tmk/stats.py), which checks types and gives names; here views are made,
// the lock is released and results become arrays.
#include "stats.hpp"

#include <tmk/error.hpp>

#include "arrays.hpp"

namespace tmk::python {

namespace {

std::vector<double> to_vector(const doubles& x) { return {x.data(), x.data() + x.size()}; }

nb::dict describe_table(const table& x, const std::optional<doubles>& weights, int threads, int policy,
                        const doubles& orders, bool matrices, bool counts) {
  const data_view view = view_of(x);
  const describe_options options{weights_of(weights), threads,  static_cast<nan_policy>(policy),
                                 to_vector(orders),   matrices, counts};
  const summary s = unlocked([&] { return describe(view, options); });
  nb::dict r;
  r["n"] = array_of(s.n), r["nans"] = array_of(s.nans), r["weight"] = array_of(s.weight);
  r["mean"] = array_of(s.mean), r["variance"] = array_of(s.variance), r["std"] = array_of(s.sd);
  r["skewness"] = array_of(s.skewness), r["kurtosis"] = array_of(s.kurtosis);
  r["min"] = array_of(s.min), r["max"] = array_of(s.max);
  r["median"] = array_of(s.median), r["mad"] = array_of(s.mad);
  r["quantiles"] = array_of(s.quantiles);
  r["complete"] = s.complete;
  r["cov"] = matrices ? nb::object(nb::cast(array_of(s.cov))) : nb::none();
  r["corr"] = matrices ? nb::object(nb::cast(array_of(s.cor))) : nb::none();
  return r;
}

nb::dict pooled_table(const table& x, const labels& groups, const std::optional<doubles>& weights,
                      int threads, int policy, bool counts) {
  const data_view view = view_of(x);
  const std::span<const std::int64_t> group(groups.data(), groups.size());
  const pooled_options options{weights_of(weights), threads, static_cast<nan_policy>(policy), counts};
  const pooled_estimates p = unlocked([&] { return pooled_covariance(view, group, options); });
  std::vector<double> covariances;
  for (const matrix& c : p.covariances)
    covariances.insert(covariances.end(), c.values().begin(), c.values().end());
  const std::size_t cols = p.mean.size();
  nb::dict r;
  r["labels"] = array_of(p.labels), r["n"] = array_of(p.n), r["weight"] = array_of(p.weight);
  r["means"] = array_of(p.means),
  r["covariances"] = array_of(std::move(covariances), {p.labels.size(), cols, cols});
  r["mean"] = array_of(p.mean), r["covariance"] = array_of(p.covariance);
  return r;
}

void add_moments(nb::module_& m) {
  using vector_getter = std::vector<double> (moments::*)() const;
  nb::class_<moments> c(m, "Moments");
  c.def("__init__", [](moments* self, std::size_t cols, bool cross, int policy, bool counts) {
    new (self) moments(cols, {cross, static_cast<nan_policy>(policy), counts});
  });
  c.def("add", [](moments& self, const table& x, const std::optional<doubles>& weights, int threads) {
    const data_view view = view_of(x);
    const weight_view w = weights_of(weights);
    unlocked([&] { self.add(view, w, threads); });
  });
  c.def("merge", &moments::merge);
  c.def("copy", [](const moments& self) { return moments(self); });
  c.def("reset", &moments::reset);
  c.def("cols", &moments::cols);
  c.def("options", [](const moments& self) {
    const moments_options& o = self.options();
    return nb::make_tuple(o.cross_product, static_cast<int>(o.nan), o.weights_are_counts);
  });
  c.def("count", [](const moments& self) { return array_of(self.count()); });
  c.def("complete", &moments::complete);
  constexpr struct {
    const char* name;
    vector_getter get;
  } getters[] = {{"weight", &moments::weight},     {"mean", &moments::mean},
                 {"variance", &moments::variance}, {"std", &moments::sd},
                 {"skewness", &moments::skewness}, {"kurtosis", &moments::kurtosis},
                 {"min", &moments::min},           {"max", &moments::max}};
  for (const auto& [name, get] : getters)
    c.def(name, [get = get](const moments& self) { return array_of((self.*get)()); });
  c.def("raw", [](const moments& self, int order) { return array_of(self.raw(order)); });
  c.def("central", [](const moments& self, int order) { return array_of(self.central(order)); });
  c.def("cross_product", [](const moments& self) { return array_of(self.cross_product()); });
  c.def("cov", [](const moments& self) { return array_of(self.covariance()); });
  c.def("corr", [](const moments& self) { return array_of(self.correlation()); });
  c.def("to_bytes", [](const moments& self) { return bytes_of(self.to_bytes()); });
  c.def_static("from_bytes", [](const nb::bytes& image) { return moments::from_bytes(bytes_in(image)); });
}

void add_sketch(nb::module_& m) {
  nb::class_<quantile_sketch> c(m, "QuantileSketch");
  c.def("__init__", [](quantile_sketch* self, std::size_t cols, double epsilon, int policy) {
    new (self) quantile_sketch(cols, epsilon, static_cast<nan_policy>(policy));
  });
  c.def("add", [](quantile_sketch& self, const table& x) {
    const data_view view = view_of(x);
    unlocked([&] { self.add(view); });
  });
  c.def("merge", &quantile_sketch::merge);
  c.def("copy", [](const quantile_sketch& self) { return quantile_sketch(self); });
  c.def("reset", &quantile_sketch::reset);
  c.def("cols", &quantile_sketch::cols);
  c.def("epsilon", &quantile_sketch::epsilon);
  c.def("count", &quantile_sketch::count);
  c.def("quantile", &quantile_sketch::quantile);
  const auto tuple = [](const quantile_sketch::estimate& e) {
    return nb::make_tuple(e.value, e.lowest_rank, e.highest_rank, e.count);
  };
  c.def("bounds", [tuple](const quantile_sketch& self, std::size_t variable, double order) {
    return tuple(self.bounds(variable, order));
  });
  c.def("rank", [tuple](const quantile_sketch& self, std::size_t variable, double value) {
    return tuple(self.rank(variable, value));
  });
  c.def("to_bytes", [](const quantile_sketch& self) { return bytes_of(self.to_bytes()); });
  c.def_static("from_bytes",
               [](const nb::bytes& image) { return quantile_sketch::from_bytes(bytes_in(image)); });
}

// tmk.error, a ValueError with the argument's name and value. Its text leaves out the C++ namespace.
void translate_errors(nb::module_& m) {
  static PyObject* type = nullptr;
  type = PyErr_NewExceptionWithDoc(
      "tmk.error",
      "A refused argument: `argument` is its name, `value` what it held, `status` the library's number.",
      PyExc_ValueError, nullptr);
  if (type == nullptr) throw nb::python_error();
  m.attr("error") = nb::handle(type);
  nb::register_exception_translator([](const std::exception_ptr& p, void*) {
    try {
      std::rethrow_exception(p);
    } catch (const tmk::error& e) {
      std::string text = e.what();
      if (text.starts_with("tmk::")) text.erase(0, 5);
      const nb::object instance = nb::steal(PyObject_CallFunction(type, "s", text.c_str()));
      instance.attr("argument") = e.argument();
      instance.attr("value") = e.value();
      instance.attr("status") = e.status();
      PyErr_SetObject(type, instance.ptr());
    }
  });
}

}  // namespace

void add_stats(nb::module_& m) {
  translate_errors(m);
  add_moments(m);
  add_sketch(m);
  m.def("describe", describe_table);
  m.def("quantiles", [](const table& x, const doubles& orders, const std::optional<doubles>& weights,
                        int threads, int policy, bool counts) {
    const data_view view = view_of(x);
    const quantile_options options{weights_of(weights), threads, static_cast<nan_policy>(policy), counts};
    return array_of(unlocked([&] { return quantiles(view, span_of(orders), options); }));
  });
  m.def("pooled_covariance", pooled_table);
  m.def("partial", [](const table& cov, const std::vector<std::size_t>& given, bool correlation) {
    return array_of((correlation ? partial_correlation : partial_covariance)(square_of(cov), given));
  });
  m.def("nearest_correlation", [](const table& x) { return array_of(nearest_correlation(square_of(x))); });
}

}  // namespace tmk::python
