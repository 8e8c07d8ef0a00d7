// SPDX-License-Identifier: Apache-2.0
// Robust covariance, outliers and imputation for the Python layer.
#include <nanobind/stl/function.h>

#include <tmk/impute.hpp>
#include <tmk/random.hpp>
#include <tmk/robust.hpp>

#include "arrays.hpp"
#include "stats.hpp"

namespace tmk::python {

namespace {

// A callback in Python, which the computation calls without the lock; a result of False stops.
template <class Progress, class Arguments>
std::function<bool(const Progress&)> watcher(const nb::object& callback, Arguments arguments) {
  if (callback.is_none()) return {};
  return [callback, arguments](const Progress& progress) {
    const nb::gil_scoped_acquire lock;
    return !arguments(callback, progress).is(nb::bool_(false));
  };
}

std::function<bool(const robust_progress&)> robust_callback(const nb::object& callback) {
  return watcher<robust_progress>(callback, [](const nb::object& f, const robust_progress& p) {
    return nb::object(f(p.round, p.change));
  });
}

impute_watcher imputation_watcher(const nb::object& callback) {
  return watcher<impute_progress>(callback, [](const nb::object& f, const impute_progress& p) {
    return nb::object(f(p.imputation, p.round, p.change));
  });
}

nb::object array_of_rows(const std::vector<std::size_t>& rows) {
  return nb::cast(array_of(std::vector<std::int64_t>(rows.begin(), rows.end())));
}

nb::dict robust_table(const table& x, int method, double breakdown, double rejection, double tolerance,
                      std::int64_t max_rounds, bool reweight, int threads, const nb::object& progress) {
  const data_view view = view_of(x);
  const robust_options options{.method = static_cast<robust>(method),
                               .breakdown = breakdown,
                               .rejection = rejection,
                               .tolerance = tolerance,
                               .max_rounds = max_rounds,
                               .reweight = reweight,
                               .threads = threads,
                               .progress = robust_callback(progress)};
  const robust_estimate e = unlocked([&] { return robust_covariance(view, options); });
  nb::dict r;
  r["location"] = array_of(e.location), r["covariance"] = array_of(e.covariance);
  r["correlation"] = array_of(e.correlation), r["distances"] = array_of(e.distances);
  r["weights"] = array_of(e.weights);
  r["rounds"] = e.rounds, r["converged"] = e.converged;
  r["breakdown"] = e.breakdown, r["rejection"] = e.rejection;
  return r;
}

nb::dict outliers_table(const table& x, double alpha, int start_method, int threads,
                        const nb::object& progress) {
  const data_view view = view_of(x);
  const outlier_options options{alpha, static_cast<start>(start_method), threads, robust_callback(progress)};
  const outlier_result o = unlocked([&] { return outliers(view, options); });
  nb::dict r;
  r["rows"] = array_of_rows(o.rows), r["distances"] = array_of(o.distances);
  r["cutoff"] = o.cutoff, r["rounds"] = o.rounds, r["converged"] = o.converged;
  return r;
}

nb::dict em_dict(const em_estimates& e) {
  nb::dict r;
  r["mean"] = array_of(e.mean), r["covariance"] = array_of(e.covariance);
  r["log_likelihood"] = e.log_likelihood, r["rounds"] = e.rounds, r["converged"] = e.converged;
  return r;
}

nb::dict pooled_dict(const pooled_estimate& p) {
  nb::dict r;
  r["estimate"] = p.estimate, r["se"] = p.se, r["within"] = p.within, r["between"] = p.between;
  r["df"] = p.df, r["relative_increase"] = p.relative_increase,
  r["missing_information"] = p.missing_information;
  return r;
}

}  // namespace

void add_robust(nb::module_& m) {
  m.def("robust_covariance", robust_table, nb::arg(), nb::arg(), nb::arg(), nb::arg(), nb::arg(), nb::arg(),
        nb::arg(), nb::arg(), nb::arg().none());
  m.def("beyond", [](const doubles& distances, std::size_t cols, double alpha) {
    robust_estimate e;
    e.location.resize(cols);
    e.distances.assign(distances.data(), distances.data() + distances.size());
    return array_of_rows(e.outliers(alpha));
  });
  m.def("outliers", outliers_table, nb::arg(), nb::arg(), nb::arg(), nb::arg(), nb::arg().none());
  m.def("mahalanobis", [](const table& x, const doubles& location, const table& covariance, int threads) {
    const data_view view = view_of(x);
    const matrix_view<const double> c = square_of(covariance);
    matrix copy(c.rows(), c.cols());
    for (std::size_t i = 0; i < c.rows(); ++i)
      for (std::size_t j = 0; j < c.cols(); ++j) copy(i, j) = c(i, j);
    return array_of(unlocked([&] { return mahalanobis(view, span_of(location), copy, threads); }));
  });
  m.def(
      "em_estimate",
      [](const table& x, double tolerance, std::int64_t rounds, int threads, const nb::object& progress) {
        const data_view view = view_of(x);
        const em_options options{tolerance, rounds, threads, imputation_watcher(progress)};
        return em_dict(unlocked([&] { return em_estimate(view, options); }));
      },
      nb::arg(), nb::arg(), nb::arg(), nb::arg(), nb::arg().none());
  m.def(
      "impute",
      [](const table& x, int count, int rounds, std::uint64_t seed, stream* generator, bool one_chain,
         bool keep_chain, int threads, const nb::object& progress) {
        const data_view view = view_of(x);
        const impute_options options{count,     rounds,     seed,    generator,
                                     one_chain, keep_chain, threads, imputation_watcher(progress)};
        const imputations found = unlocked([&] { return impute(view, options); });
        std::vector<std::int64_t> holes;
        for (const auto& [row, col] : found.holes())
          holes.push_back(static_cast<std::int64_t>(row)), holes.push_back(static_cast<std::int64_t>(col));
        std::vector<double> values;
        for (std::size_t k = 0; k < found.count(); ++k)
          values.insert(values.end(), found.values(k).begin(), found.values(k).end());
        nb::dict r;
        const std::size_t hole_count = found.holes().size();
        r["holes"] = array_of(std::move(holes), {hole_count, 2});
        r["values"] = array_of(std::move(values), {found.count(), hole_count});
        r["chain"] = array_of(found.chain());
        r["start"] = em_dict(found.start());
        return r;
      },
      nb::arg(), nb::arg(), nb::arg(), nb::arg(), nb::arg().none(), nb::arg(), nb::arg(), nb::arg(),
      nb::arg().none());
  m.def("pool_estimates", [](const doubles& estimates, const doubles& variances, double complete_df) {
    return pooled_dict(pool_estimates(span_of(estimates), span_of(variances), complete_df));
  });
}

}  // namespace tmk::python
