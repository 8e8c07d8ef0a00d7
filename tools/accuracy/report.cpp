// SPDX-License-Identifier: Apache-2.0
#include "report.hpp"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>

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

// The record's line of a kernel: see record().
std::string record_line(const vector_function& f, const measured_kernel& kernel, bool searched) {
  const tally& t = kernel.errors;
  const auto count = static_cast<double>(t.count);
  std::string uses;
  for (const kernel_use& use : kernel.uses) uses += (uses.empty() ? "" : ",") + use_text(use);
  return name_of(f) + "\t" + uses + "\t" + error_text(t.worst.error) +
         text("\t%.1f\t%.4f\t%.3f\t", correct_bits(t, f), t.error_sum / count,
              100 * static_cast<double>(t.correctly_rounded) / count) +
         (t.count >> 32 ? "all" : std::to_string(t.count) + (searched ? " and search" : "")) + "\t" +
         argument_text(f, t.worst.where);
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

bool record(const std::string& path, const measurement& m, const std::vector<int>& tiers, bool searched) {
  // By function, in the order of the list, and tier.
  std::map<std::pair<std::size_t, int>, std::vector<std::string>> rows;
  const auto functions = tools::functions_with_value();
  const auto number_of = [&](std::string_view name) {
    return static_cast<std::size_t>(std::ranges::find(functions, name, &vector_function::name) -
                                    functions.begin());
  };
  const auto file = [&](const std::string& line) {
    const auto tab = line.find('\t');
    const auto is_named = [&](int tier) { return line.compare(tab + 1, 2, tmk_tier_name(tier)) == 0; };
    const auto tier = std::ranges::find_if(tools::all_tiers, is_named);
    if (tier != std::end(tools::all_tiers)) rows[{number_of(line.substr(0, tab)), *tier}].push_back(line);
  };
  std::string heading, line;
  std::ifstream old(path);
  std::getline(old, heading);
  while (std::getline(old, line)) file(line);
  old.close();
  for (int tier : tiers) rows[{number_of(m.function->name), tier}].clear();
  for (const measured_kernel& kernel : m.kernels) file(record_line(*m.function, kernel, searched));

  // A run that is cut short leaves the old record or the new one.
  const std::string next = path + ".new";
  std::ofstream out(next);
  out << "function\tkernel's slots\tmax ulp\tbits\tmean ulp\t% correctly rounded\targuments\tworst at\n";
  for (const auto& [place, lines] : rows)
    for (const std::string& row : lines) out << row << "\n";
  out.close();
  return out && std::rename(next.c_str(), path.c_str()) == 0;
}

}  // namespace tmk::accuracy
