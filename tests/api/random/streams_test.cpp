// SPDX-License-Identifier: Apache-2.0
// Streams as values: their seeds, their images in memory and files, and what they refuse.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <tmk/random.hpp>

#include "api/random/generators.hpp"
#include "api/random/seed.hpp"
#include "tmk/abi/vtm.h"
#include "tmk/abi/vts.h"

namespace tmk {
namespace {

std::vector<std::uint32_t> next_words(stream& g, int n) {
  std::vector<std::uint32_t> words(static_cast<std::size_t>(n));
  std::generate(words.begin(), words.end(), std::ref(g));
  return words;
}

void expect_refused(const std::function<void()>& call, int status, const std::string& argument,
                    const std::string& value) {
  try {
    call();
    ADD_FAILURE() << argument << ' ' << value;
  } catch (const error& e) {
    EXPECT_EQ(e.status(), status) << e.what();
    EXPECT_EQ(e.argument(), argument) << e.what();
    if (!value.empty()) {
      EXPECT_EQ(e.value(), value) << e.what();
    }
  }
}

// NumPy 2: numpy.random.SeedSequence(seed, spawn_key=(id,)).generate_state(6)
TEST(random_seeds, are_expanded_as_published) {
  const struct {
    std::vector<std::uint32_t> seed;
    std::int32_t id;
    std::vector<std::uint32_t> words;
  } rows[] = {
      {{1}, 0x800000, {0xd4453f1a, 0x29666856, 0xdb0dcefa, 0xf5fe1e00, 0xa4864359, 0x4b895649}},
      {{1}, 0x900005, {0xbf535a5a, 0x99bd7f10, 0x53af46e6, 0x3ebf8ebb, 0x2ea9a900, 0xe680e02d}},
      {{7}, 0x500110, {0xd9898a75, 0x063e5e04, 0x2d4539fb, 0xafa898ac}},
      {{0x89abcdef, 0x01234567}, 0x400000, {0x8fc1c84f, 0x84485537}},
      {{1, 2, 3, 4, 5, 6},
       0x1000000,
       {0xb2842be0, 0xb3916526, 0xc651270d, 0x35af7eb5, 0xa2355ea1, 0xa9a660f1}},
      {{}, 0x300000, {0x43041726, 0x87054ad7, 0x1ec60fc1, 0xfef6569f, 0x2c3a6b68, 0xd29626b4}},
  };
  for (const auto& row : rows) {
    auto words = detail::expand_seed(seed_sequence(row.seed), row.id);
    ASSERT_GE(words.size(), row.words.size());
    words.resize(row.words.size());
    EXPECT_EQ(words, row.words) << std::hex << row.id;
  }
}

// NumPy 2: numpy.random.SeedSequence(entropy, spawn_key=key).generate_state(n)
TEST(random_seeds, sequences_are_as_published) {
  using words = std::vector<std::uint32_t>;
  EXPECT_EQ(seed_sequence(2026).words(6),
            (words{0xa293040d, 0x838e72ea, 0x1e488ba7, 0x59bf224c, 0x6582396c, 0x5f633c17}));
  EXPECT_EQ(seed_sequence(2026).child(17).words(4), (words{0xf2e14fd8, 0x92328274, 0x73ba8183, 0x05039a6c}));
  EXPECT_EQ(seed_sequence({1, 2, 3, 4, 5}).child(3).child(9).words(3),
            (words{0x10cbf90f, 0xa6327645, 0x9b996721}));
  EXPECT_EQ(seed_sequence::of_text("tmk streams").words(3), (words{0xf52a7025, 0x344efce2, 0x408d63b1}));
  EXPECT_NE(seed_sequence::of_text("a").words(2), seed_sequence::of_text({"a\0", 2}).words(2));
  EXPECT_NE(seed_sequence::of_system().words(4), seed_sequence::of_system().words(4));
  EXPECT_THROW(seed_sequence(-1), error);
}

double first_uniform(stream g, std::size_t number) {
  std::vector<float> x(number);
  uniform(g, x);
  return x.back();
}

// Of related streams a draw would follow the number of the stream, or its neighbour's draw.
void expect_unrelated(const std::vector<double>& x, const std::string& what) {
  const double n = static_cast<double>(x.size());
  double neighbours = 0, number = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (i > 0) neighbours += (x[i] - 0.5) * (x[i - 1] - 0.5);
    number += (x[i] - 0.5) * (static_cast<double>(i) / n - 0.5);
  }
  EXPECT_LT(std::abs(12 * neighbours / std::sqrt(n)), 5) << what;
  EXPECT_LT(std::abs(12 * number / std::sqrt(n)), 5) << what;
}

TEST(random_seeds, neighbouring_seeds_give_unrelated_streams) {
  for (const generator id : every)
    for (const std::size_t draw : {1u, 2u, 3u}) {
      std::vector<double> x;
      for (int seed = 1; seed <= 3000; ++seed) x.push_back(first_uniform(stream(id, seed), draw));
      expect_unrelated(x, std::to_string(static_cast<int>(id)) + " draw " + std::to_string(draw));
    }
}

TEST(random_seeds, children_and_parallel_streams_are_unrelated) {
  for (const generator id : every) {
    stream parent(id, 3);
    static_cast<void>(parent());  // children do not depend on what was drawn
    auto family = parent.spawn(1500);
    for (stream& next : parent.spawn(1500)) family.push_back(std::move(next));
    std::vector<double> x;
    for (stream& child : family) x.push_back(first_uniform(child, 2));
    expect_unrelated(x, "children of " + std::to_string(static_cast<int>(id)));
    auto again = stream(id, 3).spawn(2)[1].spawn(3);
    EXPECT_EQ(next_words(again[2], 5), next_words(family[1].spawn(3)[2], 5));
    x.clear();
    for (stream& part : streams(id, 11, 40)) x.push_back(first_uniform(part, 1));
    expect_unrelated(x, "parts of " + std::to_string(static_cast<int>(id)));
    EXPECT_EQ(std::set(x.begin(), x.end()).size(), x.size());
  }
  expect_refused([] { static_cast<void>(streams(generator::wh, 1, 274)); }, -1, "parts", "274");
  expect_refused([] { static_cast<void>(stream::load(random(1).save()).spawn(1)); }, -1, "g", "0x1000000");
}

// Modulo a power of two, elements at distances with many factors of two differ in a few bits.
TEST(random_seeds, parts_of_one_sequence_do_not_repeat_each_other) {
  for (const generator id : {generator::mcg59, generator::mcg31m1})
    for (const int parts : {2, 3, 16, 64, 1000}) {
      auto all = streams(id, 5, parts);
      std::vector<std::vector<std::uint32_t>> words;
      for (stream& part : all) words.push_back(next_words(part, 500));
      for (std::size_t k = 1; k < words.size(); ++k)
        for (const std::size_t other : {k - 1, std::size_t{0}, k / 2})
          for (std::size_t lag = 0; lag < 8 && other != k; ++lag) {
            int alike = 0;
            for (std::size_t i = 0; i + lag < 500; ++i)
              alike += ((words[k][i] ^ words[other][i + lag]) & 0xFFFF) == 0 ||
                       ((words[other][i] ^ words[k][i + lag]) & 0xFFFF) == 0;
            ASSERT_LT(alike, 5) << static_cast<int>(id) << ' ' << parts << ' ' << k << ' ' << other << ' '
                                << lag;
          }
    }
}

TEST(random_seeds, sets_of_one_seed_are_unrelated) {
  for (const auto& [id, sets] : {std::pair(generator::mt2203, 6024), std::pair(generator::wh, 273)})
    for (const std::size_t draw : {1u, 2u, 35u, 100u}) {
      std::vector<double> x;
      for (int set = 0; set < sets; ++set) x.push_back(first_uniform(stream(id, 1, set), draw));
      expect_unrelated(x, std::to_string(sets) + " sets, draw " + std::to_string(draw));
      // Singles of 24 bits: 6024 of them repeat once on average.
      EXPECT_GE(std::set(x.begin(), x.end()).size(), x.size() - 8) << sets << ' ' << draw;
    }
}

TEST(random_seeds, every_bit_counts_and_the_generator_does) {
  const std::uint64_t seed = 0x1'0000'0001;
  for (const generator id : every) {
    stream one(id, 1), same(id, {1}), wide(id, seed), wide_words(id, {1, 1}),
        long_seed(id, {1, 1, 0, 0, 0, 9});
    const auto words = next_words(one, 8), wide_ones = next_words(wide, 8);
    EXPECT_EQ(words, next_words(same, 8));
    EXPECT_EQ(wide_ones, next_words(wide_words, 8));
    EXPECT_NE(words, wide_ones);
    EXPECT_NE(wide_ones, next_words(long_seed, 8));
  }
  EXPECT_NE(stream(generator::mt19937, 1)(), stream(generator::mt2203, 1)());
}

TEST(random_seeds, raw_words_are_the_generators_own) {
  stream published(generator::mt19937, raw_seed{0x123, 0x234, 0x345, 0x456}),
      none(generator::mt19937, raw_seed{});
  EXPECT_EQ(published(), 1067595299u);  // the first word of mt19937ar.out
  EXPECT_EQ(none(), stream(generator::mt19937, raw_seed{1})());
  const std::vector<std::uint32_t> words = {1, 2};
  EXPECT_EQ(stream(generator::philox4x32x10, raw_seed(words))(),
            stream(generator::philox4x32x10, raw_seed{1, 2})());
}

// Products of functions with mean 1 have mean 1 over the cube; over one dimension's points they have not.
TEST(random_streams, pairs_are_two_words_wherever_blocks_end) {
  for (const int before : {0, 1, 7, 8, 9, 1031}) {
    stream pairs(generator::mt19937, 1), words = pairs;
    EXPECT_EQ(next_words(pairs, before), next_words(words, before));
    for (int i = 0; i < 1500; ++i) {
      const std::uint64_t first = words();
      ASSERT_EQ(pairs.next_pair(), first << 32 | words()) << i << " after " << before;
    }
    EXPECT_EQ(first_uniform(pairs, 1), first_uniform(words, 1));
  }
}

// Of a generator with a counter, 2^64 elements are 2^62 blocks: 2^30 in the counter's second word.
TEST(random_streams, jump_over_more_elements_than_a_count_can_say) {
  stream g(generator::philox4x32x10, raw_seed{1, 2, 3, 0xF0000000, 5, 6}),
      far(generator::philox4x32x10, raw_seed{1, 2, 3, 0x30000000, 6, 6});
  EXPECT_EQ(g(), stream(generator::philox4x32x10, raw_seed{1, 2, 3, 0xF0000000, 5, 6})());
  g.jump();
  far();
  EXPECT_EQ(next_words(g, 9), next_words(far, 9));
  stream twister(generator::mt19937, 1), skipped = twister;
  twister.jump();
  twister.skip(7);
  for (const std::int64_t count : {INT64_MAX, INT64_MAX, std::int64_t{2 + 7}}) skipped.skip(count);
  EXPECT_EQ(next_words(twister, 700), next_words(skipped, 700));
  for (const generator g : {generator::mcg59, generator::r250}) {
    stream short_one(g, 1);
    const std::uint32_t next = stream(short_one)();
    expect_refused([&] { short_one.jump(); }, VTS_STATUS_NO_SKIPAHEAD, "g", "");
    EXPECT_EQ(short_one(), next);
  }
}

TEST(random_points, fill_as_many_dimensions_as_asked_for) {
  const struct {
    stream (*make)(int);
    std::size_t dimensions;
  } rows[] = {{&stream::sobol, 5}, {&stream::sobol, 40}, {&stream::niederreiter, 5}};
  for (const auto& [make, dimensions] : rows) {
    stream g = make(static_cast<int>(dimensions));
    constexpr std::size_t points = 4096;
    std::vector<double> x(points * dimensions);
    uniform(g, x);
    double mean = 0;
    for (std::size_t i = 0; i < points; ++i) {
      double product = 1;
      for (std::size_t d = 0; d < dimensions; ++d) product *= 1 + (x[i * dimensions + d] - 0.5) / 2;
      mean += product / points;
    }
    EXPECT_NEAR(mean, 1, 0.02) << dimensions;
    stream one = make(static_cast<int>(dimensions));
    one.leapfrog(1, INT32_MAX);
    std::vector<double> second(points);
    uniform(one, second);
    for (std::size_t i = 0; i < points; ++i) ASSERT_EQ(second[i], x[i * dimensions + 1]);
  }
}

TEST(random_points, other_counts_of_dimensions_are_refused) {
  const int bad = VTM_STATUS_BADARG;
  const std::span<const std::uint32_t> nowhere(static_cast<const std::uint32_t*>(nullptr), 3);
  expect_refused([] { static_cast<void>(stream::sobol(41)); }, bad, "dimensions", "41");
  expect_refused([] { static_cast<void>(stream::sobol(0)); }, bad, "dimensions", "0");
  expect_refused([] { static_cast<void>(stream::niederreiter(319)); }, bad, "dimensions", "319");
  expect_refused([] { stream::sobol(5).leapfrog(5, INT32_MAX); }, bad, "k", "5");
  expect_refused([] { stream(generator::sobol, 50u); }, bad, "dimensions", "50");
  expect_refused([] { stream(generator::sobol, raw_seed{50}); }, bad, "dimensions", "50");
  expect_refused([] { stream(generator::sobol, 0x1'0000'0005); }, bad, "dimensions", "4294967301");
  expect_refused([] { stream g(generator::sobol); }, bad, "dimensions", "none");
  expect_refused(
      [] {
        stream(generator::sobol, {2, VTS_SOBOL_DIRECTIONS, 1});
      },
      VTS_STATUS_BAD_ARGUMENT, "g", "0x600000");
  expect_refused([] { stream(generator::mt19937, -1); }, bad, "seed", "-1");
  expect_refused([&] { stream(generator::mt19937, nowhere); }, bad, "seeds", "null");
  expect_refused([] { static_cast<void>(leapfrog(stream::sobol(3), INT32_MAX)); }, VTS_STATUS_NO_LEAPFROG,
                 "g", "0x600000");
}

using image = std::vector<std::byte>;

image c_image_of(const stream& g) {
  image bytes(static_cast<std::size_t>(__vtsGetStreamSize(g.handle())));
  EXPECT_EQ(__vtsSaveStreamM(g.handle(), bytes.data()), 0);
  return bytes;
}

TEST(random_images, with_one_bit_changed_are_refused) {
  for (const stream& g : {stream(generator::mt19937, 1), stream(generator::philox4x32x10, 1)}) {
    image bytes = g.save();
    for (std::size_t bit = 0; bit < 8 * bytes.size(); ++bit) {
      bytes[bit / 8] ^= std::byte{1} << bit % 8;
      EXPECT_THROW(static_cast<void>(stream::load(bytes)), error) << bit;
      bytes[bit / 8] ^= std::byte{1} << bit % 8;
    }
    EXPECT_EQ(stream::load(bytes).save(), bytes);
  }
}

struct folder {
  std::filesystem::path path =
      std::filesystem::path(testing::TempDir()) / ("tmk-streams-" + std::to_string(getpid()));
  folder() {
    std::filesystem::remove_all(path);
    std::filesystem::create_directory(path);
  }
  ~folder() { std::filesystem::remove_all(path); }
  std::string file(const char* name) const { return (path / name).string(); }
  long files() const { return std::distance(std::filesystem::directory_iterator(path), {}); }
};

void write(const std::string& path, std::span<const std::byte> bytes) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

TEST(random_images, broken_ones_say_what_is_wrong) {
  const folder home;
  const image whole = stream(generator::mcg59, 1).save(), c_image = c_image_of(stream(generator::mcg59, 1));
  const auto altered = [&](std::size_t at, int value) {
    image bytes = whole;
    bytes.at(at) = static_cast<std::byte>(value);
    return bytes;
  };
  const auto first = [&](std::size_t count) {
    return image(whole.begin(), whole.begin() + std::ptrdiff_t(count));
  };
  image longer = whole;
  longer.push_back({});
  const struct {
    const char* what;
    image bytes;
    int status;
  } rows[] = {
      {"nothing", {}, VTS_STATUS_FILE_READ},
      {"half a header", first(20), VTS_STATUS_FILE_READ},
      {"no hash", first(whole.size() - 8), VTS_STATUS_FILE_READ},
      {"a byte too few", first(whole.size() - 1), VTS_STATUS_FILE_READ},
      {"a byte too many", longer, VTS_STATUS_BAD_IMAGE},
      {"other magic", altered(0, 'X'), VTS_STATUS_BAD_IMAGE},
      {"later version", altered(8, 2), VTS_STATUS_BAD_IMAGE_VERSION},
      {"two thousand millions of bytes", altered(19, 0x7F), VTS_STATUS_FILE_READ},
      {"more than there can be", altered(23, 1), VTS_STATUS_BAD_IMAGE},
      {"an image of the C interface", c_image, VTS_STATUS_BAD_IMAGE},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    const std::string path = home.file("image");
    write(path, row.bytes);
    expect_refused([&] { static_cast<void>(stream::load(row.bytes)); }, row.status, "image",
                   std::to_string(row.bytes.size()) + " bytes");
    expect_refused([&] { static_cast<void>(stream::load(path)); }, row.status, "path", path);
  }
  write(home.file("c"), c_image);
  for (stream g : {stream::load_c_image(c_image), stream::load_c_image(home.file("c"))})
    EXPECT_EQ(g(), stream(generator::mcg59, 1)());
  expect_refused([&] { static_cast<void>(stream::load_c_image(whole)); }, VTS_STATUS_BAD_IMAGE, "image", "");
  // Files without an end.
  expect_refused([] { static_cast<void>(stream::load("/dev/zero")); }, VTS_STATUS_BAD_IMAGE, "path",
                 "/dev/zero");
  expect_refused([] { static_cast<void>(stream::load_c_image("/dev/zero")); }, VTS_STATUS_BAD_IMAGE, "path",
                 "/dev/zero");
  expect_refused([&] { static_cast<void>(stream::load(home.path.string())); }, VTS_STATUS_FILE_READ, "path",
                 "");
}

TEST(random_images, a_failing_save_keeps_the_older_file) {
  const folder home;
  const std::string path = home.file("run.tmk");
  stream g(generator::mt19937, 1);
  g.save(path);
  const image before = g.save();
  g.skip(5);

  rlimit old;
  getrlimit(RLIMIT_FSIZE, &old);
  const rlimit small = {1000, old.rlim_max};
  const auto previous = std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);
  int status = 0;
  try {
    g.save(path);
  } catch (const error& e) {
    status = e.status();
  }
  setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, previous);

  EXPECT_EQ(status, VTS_STATUS_FILE_WRITE);
  EXPECT_EQ(stream::load(path).save(), before);
  EXPECT_EQ(home.files(), 1);
  expect_refused([&] { g.save(home.file("no/run.tmk")); }, VTS_STATUS_FILE_OPEN, "path", "");
  expect_refused([&] { g.save(home.path.string()); }, VTS_STATUS_FILE_OPEN, "path", "");
  if (std::filesystem::exists("/dev/full"))
    expect_refused([&] { g.save("/dev/full"); }, VTS_STATUS_FILE_WRITE, "path", "/dev/full");
}

TEST(random_images, replace_files_but_not_links_and_permissions) {
  const folder home;
  const std::string path = home.file("run.tmk"), link = home.file("link.tmk");
  stream g(generator::mt19937, 1);
  write(path, {});
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  std::filesystem::create_symlink("run.tmk", link);
  g.save(link);
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(stream::load(path).save(), g.save());
  EXPECT_EQ(std::filesystem::status(path).permissions(), static_cast<std::filesystem::perms>(0640));
  EXPECT_EQ(home.files(), 2);
}

}  // namespace
}  // namespace tmk
