// SPDX-License-Identifier: Apache-2.0
// tmk-bench-robust: robust covariance and outliers, on one thread, next to the same data's plain covariance
// and, where R and its package robustbase are installed, what they take. R runs as a program of its own and
// measures its calls by itself.
#include <cstdio>
#include <cstdlib>
#include <random>
#include <regex>
#include <string>
#include <tmk/robust.hpp>

#include "timing.hpp"

using namespace tmk::bench;

namespace {

struct problem {
  std::size_t n, p;
  std::vector<double> x;  // by rows, a tenth of them moved
  tmk::matrix_view<const double> view() const { return {x.data(), n, p}; }
};

problem make(std::size_t n, std::size_t p) {
  problem d{n, p, std::vector<double>(n * p)};
  std::mt19937_64 engine(1);
  std::normal_distribution<double> normal;
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j < p; ++j) d.x[i * p + j] = normal(engine) + (i % 10 == 0 ? 6 : 0);
  return d;
}

bool has_r() {
  return std::system("Rscript -e 'library(robustbase)' >/dev/null 2>&1") == 0;  // NOLINT(cert-env33-c)
}

// The least processor time in milliseconds of three evaluations of the expression, x being like the data.
double time_of_r(const problem& d, const char* expression) {
  char command[700];
  std::snprintf(command, sizeof command,
                "OPENBLAS_NUM_THREADS=1 Rscript -e 'suppressMessages(library(robustbase)); set.seed(1); "
                "x <- matrix(rnorm(%zu*%zu), ncol=%zu); i <- seq(1, %zu, 10); x[i,] <- x[i,] + 6; "
                "cat(1000 * min(sapply(1:3, function(k) sum(system.time(%s)[1:2]))))' 2>/dev/null",
                d.n, d.p, d.p, d.n, expression);
  FILE* const pipe = popen(command, "r");
  double milliseconds = 0;
  if (pipe == nullptr || std::fscanf(pipe, "%lf", &milliseconds) != 1) milliseconds = 0;
  if (pipe != nullptr) pclose(pipe);
  return milliseconds;
}

}  // namespace

int main(int argc, char** argv) {
  const options wish = start(argc, argv, "n=1000 p=5");
  const bool r = has_r();
  std::printf("%s, one thread, milliseconds\n\n", processor_name().c_str());
  std::puts("| n | p | covariance | TBS | OGK | outliers | R covMcd | R covMcd deterministic | R covOGK |");
  std::puts("|---|---|---|---|---|---|---|---|---|");
  for (const auto& [n, p] :
       {std::pair<std::size_t, std::size_t>{1000, 5}, {10000, 10}, {100000, 20}, {1000000, 10}}) {
    const std::string shape = "n=" + std::to_string(n) + " p=" + std::to_string(p);
    if (!std::regex_search(shape, std::regex(wish.filter))) continue;
    const problem d = make(n, p);
    const std::vector<double> seconds = median_seconds({
        [&] { tmk::moments(p).add(d.view()); },
        [&] { (void)tmk::robust_covariance(d.view()); },
        [&] { (void)tmk::robust_covariance(d.view(), {.method = tmk::robust::ogk}); },
        [&] { (void)tmk::outliers(d.view()); },
    });
    std::printf("| %zu | %zu |", n, p);
    for (const double s : seconds) std::printf(" %.2f |", 1e3 * s);
    struct peer {
      const char* expression;
      std::size_t most_values;  // with more it takes minutes
    };
    const peer peers[] = {{"covMcd(x)", 10000000},
                          {"covMcd(x, nsamp = \"deterministic\")", 100000},
                          {"covOGK(x, n.iter = 1, sigmamu = scaleTau2)", 2000000}};
    for (const auto& [expression, most_values] : peers) {
      const double milliseconds = r && n * p <= most_values ? time_of_r(d, expression) : 0;
      milliseconds > 0 ? std::printf(" %.0f |", milliseconds) : std::printf(" |");
    }
    std::puts("");
    std::fflush(stdout);
  }
}
