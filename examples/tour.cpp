// The tour: what the library does, on real data, page by page.
#include "tour.hpp"

#include <cstdio>

int main() {
  vector_math_page();
  std::puts("\n----------------------------------------------------------------------------\n");
  random_page();
  std::puts("\n----------------------------------------------------------------------------\n");
  statistics_page();
}
