// SPDX-License-Identifier: Apache-2.0
// tmk-bench-impute: EM and rounds of augmentation over data with holes, compared with a plain product of the
// data with themselves, which is what a pass over complete data costs.
#include <omp.h>

#include <cmath>
#include <memory>
#include <tmk/impute.hpp>
#include <vector>

#include "linalg/blas.hpp"
#include "runner.hpp"
#include "tmk/abi/ss.h"
#include "tmk/abi/vtm.h"

using namespace tmk::bench;

namespace {

// n observations of p normal variables of correlation 1/2, a share of them missing.
struct problem {
  int32_t p, n;
  std::vector<double> data, imputed, mean, covariance;
  VtsStreamHandle stream = nullptr;

  problem(int32_t variables, int32_t observations, double share)
      : p(variables),
        n(observations),
        data(static_cast<size_t>(p) * n),
        imputed(data.size()),
        mean(p),
        covariance(static_cast<size_t>(p) * p) {
    const uint32_t seed = 7;
    std::vector<double> common(n), chance(data.size());
    expect_success(__vtsNewStreamEx(&stream, VTS_BRNG_PHILOX4X32X10, 1, &seed));
    expect_success(_vtsdRngGaussian(2, stream, static_cast<int32_t>(data.size()), data.data(), 0, 1));
    expect_success(_vtsdRngGaussian(2, stream, n, common.data(), 0, 1));
    expect_success(_vtsdRngUniform(0, stream, static_cast<int32_t>(chance.size()), chance.data(), 0, 1));
    for (size_t i = 0; i < data.size(); ++i) data[i] = chance[i] < share ? NAN : data[i] + common[i / p];
  }
  ~problem() { __vtsDeleteStream(&stream); }
  problem(const problem&) = delete;
  problem& operator=(const problem&) = delete;

  TmkSSData view() const { return {data.data(), 0, n, p, p, 1, nullptr}; }
  void em(int64_t rounds) {
    const TmkSSData x = view();
    const TmkSSEmOptions options{rounds, 1e-300, nullptr, nullptr};
    expect_success(tmk_ss_em(&x, &options, mean.data(), covariance.data(), nullptr, tmk_threading_serial()));
  }
  void impute(int64_t rounds) {
    const TmkSSData x = view();
    const TmkSSImputeOptions options{1, rounds, 0, {2, 1e-300, nullptr, nullptr}};
    expect_success(tmk_ss_impute(&x, &options, &stream, imputed.data(), nullptr, nullptr, nullptr,
                                 tmk_threading_serial()));
  }
  void product() {
    const double one = 1, zero = 0;
    tmk::linalg::serial<double>::syrk("U", "N", &p, &n, &one, data.data(), &p, &zero, covariance.data(), &p);
  }
};

void add(std::vector<group>& groups, int32_t p, int32_t n, int percent) {
  constexpr int64_t rounds = 20;
  const std::string shape =
      " n=" + std::to_string(n) + " p=" + std::to_string(p) + " " + std::to_string(percent) + " % holes";
  const auto make = [=](auto call) {
    return [=] {
      const auto d = std::make_shared<problem>(p, n, percent / 100.0);
      std::vector<subject> all = by_tier([d, call] { call(*d); });
      all.push_back({"product", [d] {
                       for (int64_t r = 0; r < rounds; ++r) d->product();
                     }});
      return all;
    };
  };
  const int64_t values = rounds * p * n;
  groups.push_back({"EM" + shape, values, make([](problem& d) { d.em(rounds); })});
  groups.push_back({"augmentation" + shape, values, make([](problem& d) { d.impute(rounds); })});
}

std::vector<group> all_groups() {
  std::vector<group> groups;
  for (const int percent : {1, 10, 40}) {
    add(groups, 5, 1'000, percent);
    add(groups, 20, 100'000, percent);
    add(groups, 100, 10'000, percent);
  }
  return groups;
}

}  // namespace

int main(int argc, char** argv) {
  omp_set_num_threads(1);
  const options wish = start(argc, argv, "EM n=100000 p=20 10 % holes");
  run_groups(all_groups(), wish, page_heading(wish, R"(# Performance of imputation

%s.

Nanoseconds per value and round on one thread, over 20 rounds with what comes before them (standardisation, sorting by
pattern, and for augmentation two rounds of EM), median of %d repetitions in random order in one process.
%s
The product is BLAS's of the matrix with itself, which a round over complete data would take.
)"));
}
