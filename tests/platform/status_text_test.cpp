// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>

#include "tmk/abi/status.h"

namespace {

// The enumerators called *_STATUS_* of a C header.
std::map<std::string, int32_t> statuses_of(const std::string& header) {
  std::ifstream file(TMK_SOURCE_DIR "/include/tmk/abi/" + header);
  const std::string text((std::istreambuf_iterator<char>(file)), {});
  const std::regex enumerator("(V[A-Z]+|TPP|DF)_STATUS_([A-Z0-9_]+) = (-?[0-9]+)");
  std::map<std::string, int32_t> r;
  for (std::sregex_iterator i(text.begin(), text.end(), enumerator), end; i != end; ++i)
    r[(*i)[0]] = std::stoi((*i)[3]);
  return r;
}

TEST(status_text, every_status_of_the_headers_has_a_sentence_of_its_own) {
  const struct {
    const char* header;
    size_t at_least;
  } headers[] = {{"vtm.h", 7}, {"vts.h", 24}, {"ss.h", 98}, {"tpp.h", 3}, {"df.h", 30}};
  std::map<std::string, std::set<int32_t>> codes_of_text;
  for (const auto& [header, at_least] : headers) {
    const auto statuses = statuses_of(header);
    EXPECT_GE(statuses.size(), at_least) << header;
    for (const auto& [name, code] : statuses) {
      EXPECT_STRNE(tmk_status_text(code), "unknown status") << name;
      codes_of_text[tmk_status_text(code)].insert(code);
    }
  }
  for (const auto& [text, codes] : codes_of_text) EXPECT_EQ(codes.size(), 1u) << text;
}

TEST(status_text, shared_numbers_name_both_interfaces_and_others_none) {
  for (const int32_t code : {-2, -3, -1011})
    EXPECT_NE(std::string(tmk_status_text(code)).find("; "), std::string::npos);
  for (const int32_t code : {INT32_MIN, -4025, 5, INT32_MAX})
    EXPECT_STREQ(tmk_status_text(code), "unknown status");
}

}  // namespace
