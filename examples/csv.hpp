// SPDX-License-Identifier: Apache-2.0
// One column of a comma-separated file with a heading line; a missing cell (NA) becomes a NaN.
#pragma once

#include <algorithm>
#include <fstream>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

inline std::vector<std::string> csv_cells(std::string line) {
  std::erase_if(line, [](char c) { return c == '"' || c == '\r'; });
  std::istringstream stream(line);
  std::vector<std::string> cells;
  for (std::string cell; std::getline(stream, cell, ',');) cells.push_back(cell);
  return cells;
}

inline std::vector<double> read_column(const std::string& path, const std::string& heading) {
  std::ifstream file(path);
  std::string line;
  if (!std::getline(file, line)) throw std::runtime_error("cannot read " + path);
  const std::vector<std::string> headings = csv_cells(line);
  const auto place = std::find(headings.begin(), headings.end(), heading);
  if (place == headings.end()) throw std::runtime_error(path + " has no column " + heading);

  std::vector<double> column;
  while (std::getline(file, line)) {
    const std::string cell = csv_cells(line).at(static_cast<std::size_t>(place - headings.begin()));
    column.push_back(cell == "NA" ? std::numeric_limits<double>::quiet_NaN() : std::stod(cell));
  }
  return column;
}
