// SPDX-License-Identifier: Apache-2.0
// Images of streams: in files and in memory, of today and of before, whole and broken.
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "random/core/chunks.hpp"
#include "random/streams.hpp"

namespace {

using image = std::vector<unsigned char>;

image image_of(VtsStreamHandle stream) {
  image bytes(static_cast<size_t>(__vtsGetStreamSize(stream)));
  EXPECT_EQ(__vtsSaveStreamM(stream, bytes.data()), 0);
  return bytes;
}

// From a block of exactly the size, so that a sanitizer detects a read past its end.
int32_t load_bounded(VtsStreamHandle* stream, const image& bytes) {
  const auto block = std::make_unique<unsigned char[]>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), block.get());
  return tmk_vts_load_stream_bounded(stream, block.get(), bytes.size());
}

struct temporary_file {
  std::string name = ::testing::TempDir() + "tmk-" + std::to_string(getpid()) + ".stream";
  ~temporary_file() { std::remove(name.c_str()); }
};

// An MCG59 stream with state 7 and 13^13, and a blob of 3 bytes under kind 0x32.
const image golden = {2,    'R',  'N',  'G', 20, 0, 0, 0, 16, 0, 0, 0, 1,    0,    0,    0,
                      0,    0,    0x40, 0,   7,  0, 0, 0, 0,  0, 0, 0, 0xFD, 0xC5, 0x23, 0x9B,
                      0x76, 0x13, 1,    0,   50, 0, 0, 0, 0,  0, 0, 0, 0,    0,    0,    0,
                      0,    0,    0,    0,   0,  0, 0, 0, 3,  0, 0, 0, 'a',  'b',  'c'};

image altered(std::initializer_list<std::pair<size_t, unsigned char>> bytes, image from = golden) {
  for (const auto& [at, value] : bytes) from.at(at) = value;
  return from;
}

TEST(persistence, the_image_is_the_same_everywhere) {
  owned_stream stream(VTS_BRNG_MCG59, {7}), loaded;
  EXPECT_EQ(__vtsGetStreamSize(stream), 36);
  void* blob = new_blob(3, 0);
  std::memcpy(blob, "abc", 3);
  __vtsAddChunk(stream, 50, nullptr, blob, 3);
  EXPECT_EQ(image_of(stream), golden);

  const temporary_file file;
  ASSERT_EQ(__vtsSaveStreamF(stream, file.name.c_str(), -1), 0);
  std::ifstream in(file.name, std::ios::binary);
  EXPECT_EQ(image(std::istreambuf_iterator<char>(in), {}), golden);
  const std::string longer = file.name + "x";
  ASSERT_EQ(__vtsLoadStreamF(&loaded.handle, longer.c_str(), static_cast<int32_t>(file.name.size())), 0);
  EXPECT_EQ(image_of(loaded), golden);
}

// An image that shows what the heap held before would also carry it to whoever gets the image.
TEST(persistence, images_do_not_depend_on_what_memory_held) {
  for (int32_t row = 0; row < 16; ++row) {
    const int32_t id = (row + 1) << 20;
    if ((row >= 9 && row <= 11) || (id == VTS_BRNG_NONDETERM && !__vtsCPUisRDRAND()) ||
        (id == VTS_BRNG_ARS5 && !__vtsCPUisAES()))
      continue;
    const auto image_over = [&](int fill) {
      void* const block = new_blob(static_cast<uint32_t>(__RegBrngsNew[row].stateBytes), fill);
      tmk_serv_deallocate(block);
      return image_of(owned_stream(id, {3}));
    };
    EXPECT_EQ(image_over(0x55), image_over(0xAA)) << row;
  }
}

TEST(persistence, every_generator_continues_from_every_position) {
  for (int32_t row = 0; row < 16; ++row) {
    const int32_t id = (row + 1) << 20;
    if ((row >= 9 && row <= 11) || id == VTS_BRNG_NONDETERM || (id == VTS_BRNG_ARS5 && !__vtsCPUisAES()))
      continue;
    owned_stream stream(id, {3, 0, 4, 1, 5, 9});
    const int32_t positions = __RegBrngsNew[row].stateBytes > 4096 ? 12 : 640;
    for (int32_t i = 0; i < positions; ++i) {
      owned_stream loaded;
      ASSERT_EQ(load_bounded(&loaded.handle, image_of(stream)), 0) << row << " at " << i;
      ASSERT_EQ(draw_bytes(loaded, 7), draw_bytes(stream, 7)) << row << " at " << i;
      if (i % 2 == 1) draw_bytes(stream, 2);
    }
  }
}

TEST(persistence, a_registered_generator_and_an_abstract_one_load_where_they_live) {
  owned_stream stream(counting_id(), {40}), loaded;
  draw_bytes(stream, 2);
  ASSERT_EQ(load_bounded(&loaded.handle, image_of(stream)), 0);
  EXPECT_EQ(draw_bytes(loaded, 3), draw_bytes(stream, 3));

  uint32_t array[4];
  owned_stream abstract, again, refused;
  ASSERT_EQ(
      __vtsiNewAbstractStream(&abstract.handle, 4, array,
                              [](VtsStreamHandle, int32_t*, uint32_t* buffer, const int32_t*, const int32_t*,
                                 const int32_t* idx) -> int32_t { return buffer[*idx] = 3, 1; }),
      0);
  const image bytes = image_of(abstract);
  ASSERT_EQ(__vtsLoadStreamM(&again.handle, bytes.data()), 0);
  EXPECT_EQ(draw_bytes(again, 1), draw_bytes(abstract, 1));
  EXPECT_EQ(load_bounded(&refused.handle, bytes), VTS_STATUS_BAD_IMAGE);
}

TEST(persistence, broken_images_say_what_is_wrong) {
  const image mt = image_of(owned_stream(VTS_BRNG_MT19937, {1}));
  const struct {
    const char* what;
    image bytes;
    int32_t status;
  } cases[] = {
      {"version 3", altered({{0, 3}}), VTS_STATUS_BAD_IMAGE_VERSION},
      {"magic", altered({{2, 'M'}}), VTS_STATUS_BAD_IMAGE},
      {"short header", altered({{4, 19}}), VTS_STATUS_BAD_IMAGE},
      {"header beyond the end", altered({{5, 200}}), VTS_STATUS_FILE_READ},
      {"state length", altered({{8, 17}}), VTS_STATUS_BAD_IMAGE},
      {"state length of four thousand millions", altered({{11, 0xFF}}), VTS_STATUS_BAD_IMAGE},
      {"set of a family without sets", altered({{16, 1}}), VTS_STATUS_BAD_IMAGE},
      {"negative generator", altered({{19, 0x80}}), VTS_STATUS_BAD_IMAGE},
      {"empty legacy row",
       altered({{8, 0xF0}, {9, 0xFF}, {10, 0xFF}, {11, 0xFF}, {16, 23}, {17, 1}, {18, 0}}),
       VTS_STATUS_BAD_IMAGE},
      {"one chunk more", altered({{12, 2}}), VTS_STATUS_FILE_READ},
      {"blob beyond the end", altered({{59, 0xFF}}), VTS_STATUS_FILE_READ},
      {"blob smaller than its kind", altered({{36, 2}}), VTS_STATUS_BAD_IMAGE},
      {"position outside the state", altered({{20 + 4 * 624 + 1, 3}}, mt), VTS_STATUS_BAD_IMAGE},
  };
  for (const auto& c : cases) {
    VtsStreamHandle stream = nullptr;
    EXPECT_EQ(load_bounded(&stream, c.bytes), c.status) << c.what;
    EXPECT_EQ(stream, nullptr) << c.what;

    const temporary_file file;
    std::ofstream(file.name, std::ios::binary)
        .write(reinterpret_cast<const char*>(c.bytes.data()), static_cast<std::streamsize>(c.bytes.size()));
    EXPECT_EQ(__vtsLoadStreamF(&stream, file.name.c_str(), -1), c.status) << c.what;
    EXPECT_EQ(stream, nullptr) << c.what;
  }
}

TEST(persistence, a_truncated_image_is_refused_at_every_length) {
  for (size_t bytes = 0; bytes < golden.size(); ++bytes) {
    VtsStreamHandle stream = nullptr;
    const image part(golden.begin(), golden.begin() + static_cast<std::ptrdiff_t>(bytes));
    EXPECT_EQ(load_bounded(&stream, part), VTS_STATUS_FILE_READ) << bytes;
    EXPECT_EQ(stream, nullptr) << bytes;
  }
}

TEST(persistence, older_images_load) {
  const image state(golden.begin() + 20, golden.begin() + 36);
  const image kind = {50, 0, 0, 0}, key(16, 9), rest(golden.begin() + 56, golden.end());
  const auto image_with = [&](image magic, unsigned char chunks, std::initializer_list<image> parts) {
    image bytes = magic;
    for (const unsigned char b : {0xEE, 0xEE, 16, 0, int{chunks}, 0, 0xEE, 0xEE, 0, 0, 0x40, 0})
      bytes.push_back(b);
    bytes.insert(bytes.end(), state.begin(), state.end());
    for (const image& part : parts) bytes.insert(bytes.end(), part.begin(), part.end());
    return bytes;
  };
  const image last = {'R', 'N', 'G', 2};
  const struct {
    const char* what;
    image bytes;
    int32_t status, chunks;
    uint32_t key_word;
  } cases[] = {
      {"version 0", image_with({0, 'R', 'N', 'G'}, 1, {kind, rest}), 0, 1, 0},
      {"version 1", image_with({1, 'R', 'N', 'G'}, 1, {kind, key, rest}), 0, 1, 0x09090909},
      {"version last, no chunks", image_with(last, 0, {}), 0, 0, 0},
      {"version last, a chunk", image_with(last, 1, {kind, key, rest}), VTS_STATUS_FILE_READ, 0, 0},
  };
  for (const auto& c : cases) {
    owned_stream loaded, plain(VTS_BRNG_MCG59, {7});
    ASSERT_EQ(load_bounded(&loaded.handle, c.bytes), c.status) << c.what;
    if (c.status < 0) continue;
    EXPECT_EQ(__vtsGetNumChunks(loaded), c.chunks) << c.what;
    if (c.chunks > 0) {
      EXPECT_EQ(tmk::rng::first_chunk(loaded)->key[3], c.key_word) << c.what;
      EXPECT_EQ(std::memcmp(__vtsSearchChunk(loaded, 50), "abc", 3), 0) << c.what;
    }
    EXPECT_EQ(draw_bytes(loaded, 5), draw_bytes(plain, 5)) << c.what;
  }
}

// A longer blob under a shared key would let a later save read past the shared one.
TEST(persistence, loaded_blobs_are_shared_when_their_sizes_agree) {
  const uint32_t key[4] = {5, 5, 5, 5}, before = _GlobRODataTableCount;
  {
    owned_stream stream(VTS_BRNG_MCG59, {7}), loaded, longer;
    __vtsAddChunk(stream, 50, key, new_blob(3, 1), 3);
    image bytes = image_of(stream);
    ASSERT_EQ(load_bounded(&loaded.handle, bytes), 0);
    EXPECT_EQ(__vtsSearchChunk(loaded, 50), __vtsSearchChunk(stream, 50));
    bytes[56] = 40;
    bytes.insert(bytes.end(), 37, 2);
    ASSERT_EQ(load_bounded(&longer.handle, bytes), 0);
    EXPECT_NE(__vtsSearchChunk(longer, 50), __vtsSearchChunk(stream, 50));
    EXPECT_EQ(image_of(longer).back(), 2);
  }
  EXPECT_EQ(_GlobRODataTableCount, before);
}

TEST(persistence, files_that_cannot_be_opened_or_filled) {
  owned_stream stream(VTS_BRNG_MCG59, {7});
  VtsStreamHandle loaded;
  EXPECT_EQ(__vtsLoadStreamF(&loaded, "/nowhere/at/all", -1), VTS_STATUS_FILE_OPEN);
  EXPECT_EQ(loaded, nullptr);
  EXPECT_EQ(__vtsSaveStreamF(stream, "/nowhere/at/all", -1), VTS_STATUS_FILE_OPEN);
  EXPECT_EQ(__vtsSaveStreamF(stream, "ignored", 0), VTS_STATUS_FILE_OPEN);
  if (access("/dev/full", W_OK) == 0) {
    EXPECT_EQ(__vtsSaveStreamF(stream, "/dev/full", -1), VTS_STATUS_FILE_CLOSE);
  }
}

}  // namespace
