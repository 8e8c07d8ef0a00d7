// SPDX-License-Identifier: Apache-2.0
// Loads damaged images of streams and uses what loads, for a build under the sanitizers: they judge.
//   tmk-fuzz-images [seed [round]]    a round that failed is repeated by its number
// TMK_FUZZ_SECONDS in the environment sets for how long (60).
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tmk/abi/serv.h"
#include "tmk/abi/vts.h"
#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/common_interface_defs.h>
#endif

namespace {

using image = std::vector<unsigned char>;

unsigned long seed, fuzz_round, loaded;

void tell_round() { std::fprintf(stderr, "repeat with: tmk-fuzz-images %lu %lu\n", seed, fuzz_round); }

bool is_abstract(int32_t id) { return id >= VTS_BRNG_IABSTRACT && id <= VTS_BRNG_SABSTRACT; }

image image_of(VtsStreamHandle stream) {
  image bytes(static_cast<size_t>(__vtsGetStreamSize(stream)));
  __vtsSaveStreamM(stream, bytes.data());
  return bytes;
}

// The older layouts: 16 bytes of header, and in version 0 chunks without keys.
image older(const image& now, unsigned char version) {
  image bytes = {version, 'R', 'N', 'G', 0, 0};
  for (const size_t at : {8, 9, 12, 13, 14, 15, 16, 17, 18, 19}) bytes.push_back(now[at]);
  bytes.insert(bytes.end(), now.begin() + 20, now.end());
  return bytes;
}

// The streams stay: their shared blobs are there for damaged images to lay hold of.
std::vector<image> whole_images(std::vector<VtsStreamHandle>& streams) {
  std::vector<image> images;
  const uint32_t seeds[] = {2, 0, 1, 8, 2, 8};
  uint32_t shared = 1;
  for (int32_t id = VTS_BRNG_MCG31M1; id <= VTS_BRNG_PHILOX4X32X10; id += 0x100000) {
    VtsStreamHandle stream = nullptr;
    static uint32_t array[8];
    const auto refill = [](VtsStreamHandle, int32_t*, uint32_t*, const int32_t*, const int32_t* most,
                           const int32_t*) -> int32_t { return *most; };
    const int32_t status = is_abstract(id) ? __vtsiNewAbstractStream(&stream, 8, array, refill)
                                           : __vtsNewStreamEx(&stream, id, 6, seeds);
    if (status >= 0) {
      images.push_back(image_of(stream));
      images.push_back(older(images.back(), 1));
      for (uint32_t kind = 0; kind < 14; ++kind, ++shared) {
        const uint32_t key[4] = {kind % 3 == 0 ? shared : 0, 0, 0, 0}, bytes = 16 * (kind % 5);
        __vtsAddChunk(stream, kind, key, std::memset(tmk_serv_allocate(bytes, 128), 1, bytes), bytes);
      }
      images.push_back(image_of(stream));
      images.push_back(older(images.back(), 0));
    }
    streams.push_back(stream);
  }
  return images;
}

void damage(image& bytes, std::mt19937& random) {
  const auto below = [&](size_t n) { return random() % std::max<size_t>(n, 1); };
  static constexpr uint32_t telling[] = {0, 1, 4, 16, 0x7F, 0xFF, 0xFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  for (size_t edits = 1 + below(6); edits > 0 && !bytes.empty(); --edits) {
    // Half of the edits are where sizes, identifiers and positions are stored: the first bytes and the last.
    const size_t size = bytes.size(), near = std::min<size_t>(size, 64);
    const size_t at = below(2) ? below(size) : below(2) ? below(near) : size - 1 - below(near);
    switch (below(7)) {
      case 0:
        bytes[at] ^= static_cast<unsigned char>(1u << below(8));
        break;
      case 1:
        bytes[at] = static_cast<unsigned char>(random());
        break;
      case 2:
      case 3: {
        const uint32_t word = telling[below(std::size(telling))];
        std::memcpy(&bytes[at], &word, std::min(sizeof word, size - at));
        break;
      }
      case 4:
        bytes.resize(at);
        break;
      case 5:
        bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(at), below(40),
                     static_cast<unsigned char>(below(4)));
        break;
      default:
        bytes[size > 19 ? 16 + below(4) : at] = static_cast<unsigned char>(below(280));
    }
  }
}

void use(VtsStreamHandle stream) {
  ++loaded;
  const int32_t id = __vtsGetStreamStateBrng(stream);
  VtsBrngProperties record;
  __vtsGetBrngProperties(id, &record);
  VtsStreamHandle copy = nullptr;
  __vtsCopyStream(&copy, stream);
  __vtsCopyStreamState(stream, copy);
  const auto block = std::make_unique<unsigned char[]>(700 * 16);
  for (const int32_t n : {1, 3, 640}) {
    record.iBrng(stream, n, block.get());
    record.dBrng(stream, n, reinterpret_cast<double*>(block.get()), 0, 1);
    record.sBrng(stream, n, reinterpret_cast<float*>(block.get()), 0, 1);
  }
  __vtsSkipAheadStream(copy, 1000);
  __vtsLeapfrogStream(copy, 1, 3);
  __vtsLeapfrogStream(copy, 1, 0x7FFFFFFF);
  record.iBrng(copy, 5, block.get());
  image_of(copy);
  __vtsDeleteStream(&copy);
}

void load_and_use(const image& bytes, const std::string& file) {
  const auto block = std::make_unique<unsigned char[]>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), block.get());
  VtsStreamHandle stream = nullptr;
  if (tmk_vts_load_stream_bounded(&stream, block.get(), bytes.size()) >= 0) use(stream);
  __vtsDeleteStream(&stream);
  if (fuzz_round % 4 != 0) return;

  std::ofstream(file, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  // An abstract stream calls an address of its image: those load, and are left alone.
  if (__vtsLoadStreamF(&stream, file.c_str(), -1) >= 0 && !is_abstract(__vtsGetStreamStateBrng(stream)))
    use(stream);
  __vtsDeleteStream(&stream);
}

}  // namespace

int main(int count, char** arguments) {
  const char* limit = std::getenv("TMK_FUZZ_SECONDS");
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(limit ? std::atol(limit) : 60);
  seed = count > 1 ? std::strtoul(arguments[1], nullptr, 0) : std::random_device()();
  const bool one_round = count > 2;
  fuzz_round = one_round ? std::strtoul(arguments[2], nullptr, 0) : 0;
#if defined(__SANITIZE_ADDRESS__)
  __sanitizer_set_death_callback(tell_round);
#endif
  std::printf("seed %lu\n", seed);
  std::fflush(stdout);

  std::signal(SIGALRM, [](int) {
    tell_round();
    std::abort();
  });

  std::vector<VtsStreamHandle> streams;
  const std::vector<image> whole = whole_images(streams);
  const std::string file = "/tmp/tmk-fuzz-" + std::to_string(getpid());
  do {
    std::seed_seq numbers{seed, fuzz_round};
    std::mt19937 random(numbers);
    image bytes = whole[random() % whole.size()];
    damage(bytes, random);
    alarm(20);  // a hang is a failure, too
    load_and_use(bytes, file);
    ++fuzz_round;
  } while (!one_round && std::chrono::steady_clock::now() < end);
  std::remove(file.c_str());
  for (VtsStreamHandle& stream : streams) __vtsDeleteStream(&stream);
  std::printf("%lu images, %lu loaded\n", fuzz_round, loaded);
  return loaded > 0 || one_round ? 0 : 1;
}
