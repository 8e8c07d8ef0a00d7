// SPDX-License-Identifier: Apache-2.0
// A million European call options: the formula of Black and Scholes over whole arrays, on all cores, compared
// with a plain loop over the C library, and the errors of both against long double.
//
//   C = S N(d1) - K exp(-r T) N(d2),   d1 = (ln(S / K) + (r + v^2 / 2) T) / (v sqrt T),   d2 = d1 - v sqrt T
//
// with the spot price S, the strike K, the rate r, the volatility v, the time T to expiry, and the normal
// distribution function N.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <span>
#include <thread>
#include <tmk/math.hpp>
#include <tmk/random.hpp>
#include <vector>

namespace {

constexpr double rate = 0.03;

struct options {
  std::vector<double> spot, strike, volatility, years;
};

options drawn(std::size_t count) {
  tmk::stream stream(tmk::generator::philox4x32x10, 2026);
  const auto between = [&](double low, double high) {
    std::vector<double> x(count);
    tmk::uniform(stream, x, {.low = low, .high = high});
    return x;
  };
  return {between(50, 150), between(50, 150), between(0.1, 0.6), between(0.1, 2)};
}

// The formula for one option, in any precision.
template <class Real>
Real price(Real spot, Real strike, Real volatility, Real years) {
  using std::erfc, std::exp, std::log, std::sqrt;
  const Real deviation = volatility * sqrt(years);
  const Real d1 = (log(spot / strike) + (Real(rate) + volatility * volatility / 2) * years) / deviation;
  const Real root_half = sqrt(Real(0.5));
  const auto normal = [&](Real d) { return erfc(-d * root_half) / 2; };
  return spot * normal(d1) - strike * exp(-Real(rate) * years) * normal(d1 - deviation);
}

// The same over arrays. What a step leaves stays in the first cache until the next one takes it.
void price_block(std::span<const double> spot, std::span<const double> strike,
                 std::span<const double> volatility, std::span<const double> years, std::span<double> call) {
  constexpr std::size_t longest = 512;
  double deviations[longest], d1s[longest], d2s[longest], discounts[longest];
  for (std::size_t begin = 0; begin < spot.size(); begin += longest) {
    const std::size_t n = std::min(longest, spot.size() - begin);
    const auto part = [&](auto x) { return x.subspan(begin, n); };
    const auto s = part(spot), k = part(strike), v = part(volatility), t = part(years);
    const std::span deviation(deviations, n), d1(d1s, n), d2(d2s, n), discount(discounts, n), c = part(call);

    tmk::sqrt(t, deviation);
    tmk::mul(deviation, v, deviation);
    tmk::div(s, k, d1);
    tmk::ln(d1, d1);
    for (std::size_t i = 0; i < n; ++i) {
      d1[i] = (d1[i] + (rate + v[i] * v[i] / 2) * t[i]) / deviation[i];
      d2[i] = d1[i] - deviation[i];
      discount[i] = -rate * t[i];
    }
    tmk::exp(discount, discount);
    tmk::cdf_norm(d1, d1);
    tmk::cdf_norm(d2, d2);
    for (std::size_t i = 0; i < n; ++i) c[i] = s[i] * d1[i] - k[i] * discount[i] * d2[i];
  }
}

void price_all(const options& o, std::span<double> call, unsigned threads) {
  const std::size_t count = call.size(), share = (count + threads - 1) / threads;
  std::vector<std::jthread> pool;
  for (std::size_t begin = 0; begin < count; begin += share)
    pool.emplace_back([&, begin] {
      const std::size_t n = std::min(share, count - begin);
      const auto part = [&](const std::vector<double>& x) { return std::span(x).subspan(begin, n); };
      price_block(part(o.spot), part(o.strike), part(o.volatility), part(o.years), call.subspan(begin, n));
    });
}

template <class Run>
double milliseconds(Run run) {
  double best = 1e9;
  for (int i = 0; i < 3; ++i) {
    const auto start = std::chrono::steady_clock::now();
    run();
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    best = std::min(best, time.count());
  }
  return best;
}

}  // namespace

void black_scholes_page() {
  constexpr std::size_t count = 1'000'000;
  const options o = drawn(count);
  std::vector<double> call(count), plain(count);
  const unsigned threads = std::max(1u, std::thread::hardware_concurrency());

  const double loop = milliseconds([&] {
    for (std::size_t i = 0; i < count; ++i)
      plain[i] = price(o.spot[i], o.strike[i], o.volatility[i], o.years[i]);
  });
  const double one = milliseconds([&] { price_all(o, call, 1); });
  const double all = milliseconds([&] { price_all(o, call, threads); });

  // The price is a difference: its error is measured by the spot price, whose last place is the unit.
  double worst = 0, worst_plain = 0;
  for (std::size_t i = 0; i < count; i += 10) {
    const long double right = price<long double>(o.spot[i], o.strike[i], o.volatility[i], o.years[i]);
    const double ulp = std::nextafter(o.spot[i], 1e300) - o.spot[i];
    worst = std::max(worst, std::abs(static_cast<double>(call[i] - right)) / ulp);
    worst_plain = std::max(worst_plain, std::abs(static_cast<double>(plain[i] - right)) / ulp);
  }
  std::puts("A million call options by the formula of Black and Scholes");
  std::puts("                                   ms   times as fast   largest error, ulp of the spot price");
  const auto row = [&](const char* text, double time, double error) {
    std::printf("  %-28s %8.1f %12.1f %18.2f\n", text, time, loop / time, error);
  };
  row("a loop over the C library", loop, worst_plain);
  row("tmk, one thread", one, worst);
  char text[32];
  std::snprintf(text, sizeof text, "tmk, %u threads", threads);
  row(text, all, worst);
}

#ifndef TMK_IN_TOUR
int main() { black_scholes_page(); }
#endif
