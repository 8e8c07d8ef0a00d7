// SPDX-License-Identifier: Apache-2.0
#include "report.hpp"

#include <algorithm>
#include <cmath>
#include <map>

#include "search.hpp"

namespace tmk::accuracy {
namespace {

using tools::call_shape;
using tools::kernel_use;
using tools::level_names;

std::string text(const char* format, auto... values) {
  char buffer[128];
  std::snprintf(buffer, sizeof buffer, format, values...);
  return buffer;
}

constexpr std::size_t source_width = 110;

std::string name_of(const vector_function& f) { return std::string(f.name); }

// Hexadecimal, normalised to a leading 1, with as many digits after the point as the value needs and at most
// `digits`.
std::string hex(long double x, int digits) {
  if (!std::isfinite(x) || x == 0) return text("%Lg", x);
  int exponent;
  const long double fraction = std::frexp(std::abs(x), &exponent);
  auto scaled = static_cast<unsigned long long>(std::llrint(std::ldexp(fraction, 4 * digits + 1)));
  if (scaled >> (4 * digits + 1)) scaled /= 2, ++exponent;
  std::string figures = text("%0*llx", digits, scaled & ((1ull << (4 * digits)) - 1));
  figures.erase(figures.find_last_not_of('0') + 1);
  return text("%s0x1%s%s", x < 0 ? "-" : "", figures.empty() ? "" : ".", figures.c_str()) +
         text("p%+d", exponent - 1);
}

// Digits that tell every number of the format apart, and those that show where between two it lies.
int format_digits(const vector_function& f) { return f.is_single() ? 6 : 13; }
int exact_digits(const vector_function& f) { return f.is_single() ? 8 : 15; }

std::string exact_hex(const vector_function& f, const exact_value& value) {
  return hex(value.rounded + std::ldexp(static_cast<long double>(value.residual), value.ulp_exponent),
             exact_digits(f));
}

std::string parts(bool both, const std::string& first, const std::string& second) {
  return both ? "(" + first + ", " + second + ")" : first;
}

std::string argument_text(const vector_function& f, const arguments& x) {
  const int digits = format_digits(f);
  const bool complex = f.is_complex() && f.shape != call_shape::real_argument;
  const auto element = [&](std::complex<double> z) {
    return parts(complex, hex(z.real(), digits), hex(z.imag(), digits));
  };
  switch (f.shape) {
    case call_shape::binary:
    case call_shape::scalar_exponent:
      return parts(true, element(x.a), element(x.b));
    case call_shape::linear_fraction: {
      std::string list = hex(x.a.real(), digits);
      for (double v : {x.b.real(), x.scalea, x.shifta, x.scaleb, x.shiftb}) list += ", " + hex(v, digits);
      return "(" + list + ")";
    }
    default:
      return element(x.a);
  }
}

bool has_two_parts(const vector_function& f) {
  return f.shape == call_shape::two_results || (f.is_complex() && f.shape != call_shape::real_result);
}

std::string got_text(const vector_function& f, const finding& worst) {
  const int digits = format_digits(f);
  return parts(has_two_parts(f), hex(worst.got[0], digits), hex(worst.got[1], digits));
}

std::string want_text(const vector_function& f, const finding& worst) {
  return parts(has_two_parts(f), exact_hex(f, worst.want[0]), exact_hex(f, worst.want[1]));
}

std::string error_text(double ulp) {
  return ulp >= 1e6 ? text("%.1e", ulp) : text(ulp < 1 ? "%.4f" : ulp < 10 ? "%.3f" : "%.0f", ulp);
}

double correct_bits(const tally& t, const vector_function& f) {
  const double all = f.is_single() ? 24 : 53;
  return t.worst_relative == 0 ? all : std::min(all, -std::log2(t.worst_relative));
}

std::string use_text(const kernel_use& use) {
  return std::string(tmk_tier_name(use.tier)) + " " + std::string(level_names[use.slot]);
}

// "W7 LA=HA": the first use, and those that share its kernel.
std::string uses_text(const measured_kernel& kernel) {
  std::string list;
  int tier = -1;
  for (const kernel_use& use : kernel.uses) {
    const std::string level(level_names[use.slot]);
    list += (list.empty() ? "" : "=") + (use.tier == tier ? level : use_text(use));
    tier = use.tier;
  }
  return list;
}

std::string levels_in(const measured_kernel& kernel, int tier) {
  std::string levels;
  for (const kernel_use& use : kernel.uses)
    if (use.tier == tier) levels += (levels.empty() ? "" : ", ") + std::string(level_names[use.slot]);
  return levels;
}

// A slot's cell: its own figures, or whose kernel it shares.
std::string cell(const measurement& m, int tier, int slot) {
  for (const measured_kernel& kernel : m.kernels) {
    const auto is_this = [=](const kernel_use& use) { return use.tier == tier && use.slot == slot; };
    if (std::ranges::none_of(kernel.uses, is_this)) continue;
    // A kernel's own level is HA where HA is among its slots, otherwise the first.
    const auto own = [](const kernel_use& use) { return use.slot == TMK_SLOT_HA; };
    const auto home = std::ranges::find_if(kernel.uses, own);
    const kernel_use& owner = home == kernel.uses.end() ? kernel.uses.front() : *home;
    if (owner.tier != tier) return "= " + use_text(owner);
    if (owner.slot != slot) return "= " + std::string(level_names[owner.slot]);
    const std::string error = error_text(kernel.errors.worst.error);
    return slot == TMK_SLOT_HA ? error : error + text(" (%.1f)", correct_bits(kernel.errors, *m.function));
  }
  return "";
}

}  // namespace

void print_heading(std::FILE* out) {
  std::fprintf(out, "%-12s %-16s %10s %8s %9s %6s  %s\n", "function", "tier, levels", "max ulp", "mean",
               "rounded", "bits", "worst at: got, want");
}

void print_lines(std::FILE* out, const measurement& m) {
  const vector_function& f = *m.function;
  for (const measured_kernel& kernel : m.kernels) {
    const tally& t = kernel.errors;
    const auto count = static_cast<double>(t.count);
    const std::string uses = f.vectorized ? uses_text(kernel) : "all (reference)";
    std::fprintf(out, "%-12s %-16s %10s %8.4f %8.3f%% %6.1f  %s: got %s, want %s\n", name_of(f).c_str(),
                 uses.c_str(), error_text(t.worst.error).c_str(), t.error_sum / count,
                 100 * static_cast<double>(t.correctly_rounded) / count, correct_bits(t, f),
                 argument_text(f, t.worst.where).c_str(), got_text(f, t.worst).c_str(),
                 want_text(f, t.worst).c_str());
  }
}

void print_source_comments(std::FILE* out, const measurement& m) {
  const vector_function& f = *m.function;
  int tier_before = -1;
  for (const measured_kernel& kernel : m.kernels) {
    const finding& worst = kernel.errors.worst;
    const int tier = kernel.uses.front().tier;
    if (tier != tier_before) std::fprintf(out, "%s, %s:\n", name_of(f).c_str(), tmk_tier_name(tier));
    tier_before = tier;
    const std::string where = text("// Maximum error %s ulp (%s) at ", error_text(worst.error).c_str(),
                                   levels_in(kernel, tier).c_str()) +
                              argument_text(f, worst.where) + ":";
    const std::string what = "got " + got_text(f, worst) + ", want " + want_text(f, worst) + ".";
    const bool fits = where.size() + 1 + what.size() <= source_width;
    std::fprintf(out, "%s%s%s\n", where.c_str(), fits ? " " : "\n//   ", what.c_str());
  }
}

void print_markdown(std::FILE* out, const std::vector<measurement>& all, const std::vector<int>& tiers,
                    std::int64_t samples) {
  std::fprintf(out, R"(<!-- Made by `./dev accuracy --markdown --samples %lld`: do not edit. -->
# Accuracy

Measured against MPFR and MPC, over %lld seeded samples per function (%lld per complex function):
drawn over the binades of the domain, evenly over its usual part, and around its bounds, zeros, poles and the
arguments known to be hard. Maxima are those of a search that climbs: %lld further samples (%lld of functions with
one kernel for all levels), judged by a wider format where there is one, then six rounds of neighbours of the worst.
Means and shares are those of the seeded samples.

The unit is the spacing of the result's format at the exact value (2^(max(e, e_min) - p) for
2^(e-1) <= |y| < 2^e), so 0.5 is a correctly rounded result; subnormal results are included, with the spacing
of the subnormals. An infinity is right where rounding the exact value gives it, a NaN where the function has
no value; `inf` in a table means that a number met a special. A complex result is judged by its worse part,
and the sign of a zero does not count.

)",
               static_cast<long long>(samples), static_cast<long long>(samples),
               static_cast<long long>(samples / samples_per_complex_sample),
               static_cast<long long>(thorough.samples), static_cast<long long>(brief.samples));
  for (int tier : tools::all_tiers)
    if (std::ranges::find(tiers, tier) == tiers.end())
      std::fprintf(out, "The tier %s was not measured: the processor of this run does not have it.\n\n",
                   tmk_tier_name(tier));

  std::fprintf(out, "## Functions with kernels of their own per level\n\n");
  std::fprintf(
      out,
      "Maximum error in ulp; in brackets the correct bits, -log2 of the largest relative error of a normal\n"
      "result. `= HA`: the slot holds that kernel. Below HA, and on W7 at HA too, roots and reciprocals "
      "begin with\n"
      "estimates of the processor, which differ between makers: another processor than this run's has other "
      "errors.\n\n"
      "| function |");
  for (int tier : tiers)
    for (std::string_view level : level_names)
      std::fprintf(out, " %s %.*s |", tmk_tier_name(tier), static_cast<int>(level.size()), level.data());
  std::fprintf(out, "\n|---|");
  for (std::size_t i = 0; i < tiers.size() * std::size(level_names); ++i) std::fprintf(out, "---|");
  std::fprintf(out, "\n");
  for (const measurement& m : all) {
    if (!m.function->vectorized) continue;
    std::fprintf(out, "| `%s` |", name_of(*m.function).c_str());
    for (int tier : tiers)
      for (int slot = 0; slot < 3; ++slot) std::fprintf(out, " %s |", cell(m, tier, slot).c_str());
    std::fprintf(out, "\n");
  }

  std::fprintf(
      out,
      "\n## Functions on the extended-precision kernel\n\n"
      "One kernel serves all levels and tiers.\n\n"
      "| function | max ulp | mean ulp | correctly rounded | worst argument |\n|---|---|---|---|---|\n");
  for (const measurement& m : all) {
    if (m.function->vectorized) continue;
    const tally& t = m.kernels.front().errors;
    const auto count = static_cast<double>(t.count);
    std::fprintf(out, "| `%s` | %s | %.4f | %.3f%% | `%s` |\n", name_of(*m.function).c_str(),
                 error_text(t.worst.error).c_str(), t.error_sum / count,
                 100 * static_cast<double>(t.correctly_rounded) / count,
                 argument_text(*m.function, t.worst.where).c_str());
  }
}

}  // namespace tmk::accuracy
