// Streams: a handle that is copied, moved and released, and every status of it as tmk::error.
#include "api/random.hpp"

#include <tmk/abi/vts.h>

#include <cstdio>
#include <cstring>
#include <tmk/random.hpp>
#include <utility>

#include "api/check.hpp"
#include "api/settings.hpp"

namespace tmk {

namespace {

struct sentence {
  int32_t status;
  const char* text;
};
constexpr sentence sentences[] = {
    {VTS_STATUS_NO_MEMORY, "found no memory"},
    {VTS_STATUS_INVALID_BRNG, "is no generator"},
    {VTS_STATUS_NO_LEAPFROG, "is a generator that does not leapfrog"},
    {VTS_STATUS_NO_SKIPAHEAD, "is a generator that does not skip ahead"},
    {VTS_STATUS_NO_FIXED_WIDTH_BITS, "is a generator whose elements do not hold 32 random bits"},
    {VTS_STATUS_FILE_CLOSE, "could not be closed"},
    {VTS_STATUS_FILE_OPEN, "could not be opened"},
    {VTS_STATUS_FILE_WRITE, "could not be written"},
    {VTS_STATUS_FILE_READ, "ends before the stream does"},
    {VTS_STATUS_BAD_IMAGE, "does not hold a stream"},
    {VTS_STATUS_BAD_IMAGE_VERSION, "was written by a later version"},
    {VTS_STATUS_NO_RDRAND, "needs RDRAND, which the processor has not"},
    {VTS_STATUS_NO_AES, "needs AES instructions, which the processor has not"},
};

std::string hexadecimal(int32_t id) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%X", static_cast<unsigned>(id));
  return text;
}

int32_t id_of(generator g, int set) {
  constexpr int32_t one_family = 0x100000;
  const int32_t id = static_cast<int32_t>(g);
  const bool known = id >= one_family && id % one_family == 0 && id / one_family <= NRegBrngsNew;
  if (!known) detail::check_status("stream", "g", hexadecimal(id), VTS_STATUS_INVALID_BRNG);
  const int32_t sets = NumOffsets[id / one_family - 1];
  if (set < 0 || set >= sets)
    detail::refuse("stream", "set", std::to_string(set),
                   "is " + std::to_string(set) + ", want 0 to " + std::to_string(sets - 1));
  return id + set;
}

VtsStreamHandle load_image(const void* image, std::size_t bytes, const std::string& source) {
  VtsStreamHandle handle = nullptr;
  detail::select_first_tier();
  detail::check_status("stream::load", "path", source, tmk_vts_load_stream_bounded(&handle, image, bytes));
  return handle;
}

}  // namespace

void detail::check_status(const char* function, const char* argument, const std::string& value,
                          int32_t status) {
  if (status >= 0) return;
  const char* text = "failed";
  for (const sentence& s : sentences)
    if (s.status == status) text = s.text;
  throw error(status, function, argument, value, "(" + value + ") " + text);
}

void detail::check_status(const char* function, VtsStreamHandle g, int32_t status) {
  if (status < 0) check_status(function, "g", hexadecimal(__vtsGetStreamStateBrng(g)), status);
}

void stream::release::operator()(VtsStream* p) const { __vtsDeleteStream(&p); }

VtsStream* stream::require(const char* function) const {
  if (handle_ == nullptr) detail::refuse(function, "g", "empty", "is empty: it was moved from");
  return handle_.get();
}

VtsStream* stream::handle() const { return require("stream::handle"); }

stream::stream(generator g, std::span<const std::uint32_t> seeds, int set) {
  const int32_t id = id_of(g, set);
  if (seeds.size() > INT32_MAX)
    detail::refuse("stream", "seeds", std::to_string(seeds.size()), "has too many words");
  detail::select_first_tier();
  VtsStreamHandle handle = nullptr;
  const int32_t status = __vtsNewStreamEx(&handle, id, static_cast<int32_t>(seeds.size()), seeds.data());
  handle_.reset(handle);
  detail::check_status("stream", "g", hexadecimal(id), status);
}
stream::stream(generator g, std::initializer_list<std::uint32_t> seeds, int set)
    : stream(g, std::span(seeds.begin(), seeds.size()), set) {}
stream::stream(generator g, std::uint32_t seed, int set) : stream(g, std::span(&seed, 1), set) {}

stream::stream(const stream& other) {
  VtsStreamHandle handle = nullptr;
  const int32_t status = __vtsCopyStream(&handle, other.require("stream"));
  handle_.reset(handle);
  detail::check_status("stream", other.handle(), status);
}
stream& stream::operator=(const stream& other) { return *this = stream(other); }

generator stream::kind() const {
  return static_cast<generator>(__vtsGetStreamStateBrng(require("stream::kind")) & ~0xFFFFF);
}
int stream::set() const { return __vtsGetStreamStateBrng(require("stream::set")) & 0xFFFFF; }

void stream::skip(std::int64_t count) {
  VtsStream* const handle = require("stream::skip");
  if (count < 0)
    detail::refuse("stream::skip", "count", std::to_string(count),
                   "is " + std::to_string(count) + ", want 0 or more");
  detail::check_status("stream::skip", handle, __vtsSkipAheadStream(handle, count));
}

void stream::leapfrog(int k, int parts) {
  VtsStream* const handle = require("stream::leapfrog");
  if (parts < 1)
    detail::refuse("stream::leapfrog", "parts", std::to_string(parts),
                   "is " + std::to_string(parts) + ", want 1 or more");
  if (k < 0 || k >= parts)
    detail::refuse("stream::leapfrog", "k", std::to_string(k),
                   "is " + std::to_string(k) + ", want 0 to " + std::to_string(parts - 1));
  detail::check_status("stream::leapfrog", handle, __vtsLeapfrogStream(handle, k, parts));
}

std::vector<stream> leapfrog(const stream& g, int parts) {
  if (parts < 1) stream(g).leapfrog(0, parts);  // throws
  std::vector<stream> result(static_cast<std::size_t>(parts), g);
  for (int k = 0; k < parts; ++k) result[static_cast<std::size_t>(k)].leapfrog(k, parts);
  return result;
}

void stream::save(const std::string& path) const {
  detail::check_status("stream::save", "path", path,
                       __vtsSaveStreamF(require("stream::save"), path.c_str(), -1));
}

std::vector<std::byte> stream::save() const {
  VtsStream* const handle = require("stream::save");
  std::vector<std::byte> image(static_cast<std::size_t>(__vtsGetStreamSize(handle)));
  detail::check_status("stream::save", "g", "memory", __vtsSaveStreamM(handle, image.data()));
  return image;
}

// By way of memory: the loader that distrusts its image knows where that ends.
stream stream::load(const std::string& path) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
  if (file == nullptr) detail::check_status("stream::load", "path", path, VTS_STATUS_FILE_OPEN);
  std::vector<char> image;
  char part[4096];
  while (const std::size_t count = std::fread(part, 1, sizeof part, file.get()))
    image.insert(image.end(), part, part + count);
  return stream(load_image(image.data(), image.size(), path));
}

stream stream::load(std::span<const std::byte> image) {
  return stream(load_image(image.data(), image.size(), std::to_string(image.size()) + " bytes"));
}

stream::result_type stream::operator()() {
  VtsStream* const handle = require("stream::operator()");
  result_type word;
  int32_t status = _vtsiRngUniformBits32(0, handle, 1, &word);
  if (status == VTS_STATUS_NO_FIXED_WIDTH_BITS) {
    double half[2];
    status = _vtsdRngUniform(0, handle, 2, half, 0, 0x1p16);
    const auto bits = [](double x) { return x < 0xFFFF ? static_cast<result_type>(x) : 0xFFFFu; };
    word = bits(half[0]) << 16 | bits(half[1]);
  }
  detail::check_status("stream::operator()", handle, status);
  return word;
}

}  // namespace tmk
