// SPDX-License-Identifier: Apache-2.0
// Outliers: the mean and covariance of all data next to a robust estimate, and a picture of both. The program
// writes robust-hbk.svg and robust-stackloss.svg to the directory that is its argument, if there is one.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <tmk/robust.hpp>

#include "csv.hpp"

#ifndef TMK_DATA_DIR
#define TMK_DATA_DIR "data"
#endif

struct fit {
  std::vector<double> location;
  tmk::matrix covariance;
};

constexpr double radius = 2.7162;  // 97.5 % of normal data in two variables are within this distance

// Places of a picture of 480 by 360 points for two variables.
struct frame {
  double left, low, width, height;

  explicit frame(const tmk::summary& s) {
    double end[2], begin[2];
    for (const int j : {0, 1}) {
      begin[j] = std::min(s.min[j], s.mean[j] - radius * s.sd[j]);
      end[j] = std::max(s.max[j], s.mean[j] + radius * s.sd[j]);
    }
    width = 1.1 * (end[0] - begin[0]), left = begin[0] - width / 22;
    height = 1.1 * (end[1] - begin[1]), low = begin[1] - height / 22;
  }
  std::string place(double x, double y, const char* format) const {
    char text[80];
    std::snprintf(text, sizeof text, format, (x - left) / width * 480, 360 - (y - low) / height * 360);
    return text;
  }
};

// The ellipse of a fit: its centre and the columns of the covariance's triangular factor.
std::string ellipse(const frame& f, const fit& e, const char* style) {
  const double a = std::sqrt(e.covariance(0, 0)), b = e.covariance(0, 1) / a,
               c = std::sqrt(e.covariance(1, 1) - b * b);
  std::string path = std::string("<path fill='none' ") + style + " d='M";
  for (int k = 0; k <= 72; ++k) {
    const double t = k * 0.0872664625997, u = radius * std::cos(t), v = radius * std::sin(t);
    path += f.place(e.location[0] + a * u, e.location[1] + b * u + c * v, " %.1f %.1f");
  }
  return path + "'/>\n";
}

// The ellipse of all data in grey, the robust one in blue, outliers in red.
void draw(const std::string& file, const std::vector<double>& x, const tmk::summary& s,
          const tmk::robust_estimate& r) {
  const frame f(s);
  std::ofstream out(file);
  out << "<svg xmlns='http://www.w3.org/2000/svg' width='480' height='360'>\n"
         "<rect width='480' height='360' fill='white'/>\n"
      << ellipse(f, {s.mean, s.cov}, "stroke='grey' stroke-dasharray='6 4'")
      << ellipse(f, {r.location, r.covariance}, "stroke='royalblue' stroke-width='2'");
  const auto outliers = r.outliers();
  for (std::size_t i = 0; i < x.size() / 2; ++i) {
    const bool bad = std::binary_search(outliers.begin(), outliers.end(), i);
    out << f.place(x[2 * i], x[2 * i + 1], "<circle cx='%.1f' cy='%.1f' r='3' fill='")
        << (bad ? "crimson" : "black") << "'/>\n";
  }
  out << "</svg>\n";
}

void show(const char* name, const char* first, const char* second, const char* directory) {
  const std::string path = std::string(TMK_DATA_DIR) + '/' + name + ".csv";
  const auto a = read_column(path, first), b = read_column(path, second);
  std::vector<double> x;
  for (std::size_t i = 0; i < a.size(); ++i) x.push_back(a[i]), x.push_back(b[i]);
  const tmk::matrix_view<const double> view(x.data(), a.size(), 2);

  const tmk::summary s = tmk::describe(view);
  const tmk::robust_estimate r = tmk::robust_covariance(view);
  std::printf("%s: correlation of %s and %s %.3f, robust %.3f; outliers:", name, first, second, s.cor(0, 1),
              r.correlation(0, 1));
  for (const std::size_t i : r.outliers()) std::printf(" %zu", i + 1);
  std::puts("");
  if (directory != nullptr) draw(std::string(directory) + "/robust-" + name + ".svg", x, s, r);
}

int main(int argc, char** argv) {
  const char* const directory = argc > 1 ? argv[1] : nullptr;
  show("hbk", "X1", "X3", directory);
  show("stackloss", "Air.Flow", "stack.loss", directory);
}
