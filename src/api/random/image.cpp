// SPDX-License-Identifier: Apache-2.0
// Streams as bytes and files: "TMKSTRMS", version, 4 zero bytes, length of what follows, the image of the C
// interface, hash of everything before it. Integers are little-endian.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <tmk/random.hpp>

#include "api/call/settings.hpp"
#include "api/random/stream.hpp"
#include "platform/hash.hpp"

namespace tmk {

namespace {

using bytes = std::span<const std::byte>;

constexpr char magic[] = {'T', 'M', 'K', 'S', 'T', 'R', 'M', 'S'};
constexpr std::uint64_t version = 1;
constexpr std::size_t header_bytes = 24, hash_bytes = 8;
constexpr std::uint64_t longest_image = INT32_MAX;  // the C interface counts an image's bytes in 32 bits

// Where an image comes from, for the error that names it.
struct source {
  const char *function, *argument;
  std::string value;

  [[noreturn]] void refuse(int32_t status, const std::string& complaint) const {
    throw error(status, function, argument, value, "(" + value + ") " + complaint);
  }
  void check(int32_t status) const { detail::check_status(function, argument, value, status); }
};

void append(std::vector<std::byte>& image, std::uint64_t value) {
  for (int k = 0; k < 64; k += 8) image.push_back(static_cast<std::byte>(value >> k & 0xFF));
}
std::uint64_t integer_at(bytes image, std::size_t offset) {
  std::uint64_t value = 0;
  for (std::size_t k = 0; k < 8; ++k) value |= std::to_integer<std::uint64_t>(image[offset + k]) << 8 * k;
  return value;
}

bool is_c_image(bytes image) {
  constexpr char word[] = {'R', 'N', 'G'};
  return image.size() >= 4 &&
         (std::memcmp(&image[1], word, sizeof word) == 0 || std::memcmp(&image[0], word, sizeof word) == 0);
}

// The size of the whole image by its header; only so much is read.
std::uint64_t size_of_image(bytes image, const source& from) {
  const bool marked = image.size() >= sizeof magic && std::memcmp(image.data(), magic, sizeof magic) == 0;
  if (!marked && is_c_image(image))
    from.refuse(VTS_STATUS_BAD_IMAGE, "is an image of the C interface, for stream::load_c_image");
  if (image.size() < header_bytes) from.check(VTS_STATUS_FILE_READ);
  if (!marked) from.check(VTS_STATUS_BAD_IMAGE);
  if (integer_at(image, 8) != version) from.check(VTS_STATUS_BAD_IMAGE_VERSION);
  const std::uint64_t content = integer_at(image, 16);
  if (content > longest_image) from.refuse(VTS_STATUS_BAD_IMAGE, "is damaged");
  return header_bytes + content + hash_bytes;
}

// Without the header and the hash, which are checked.
bytes content_of(bytes image, const source& from) {
  const std::uint64_t size = size_of_image(image, from);
  if (image.size() < size) from.check(VTS_STATUS_FILE_READ);
  const bytes hashed = image.first(image.size() - hash_bytes);
  if (image.size() > size || integer_at(image, hashed.size()) != fnv1a(hashed))
    from.refuse(VTS_STATUS_BAD_IMAGE, "is damaged");
  return hashed.subspan(header_bytes);
}

VtsStream* load_c(bytes image, const source& from) {
  VtsStreamHandle handle = nullptr;
  detail::select_first_tier();
  from.check(tmk_vts_load_stream_bounded(&handle, image.data(), image.size()));
  return handle;
}

std::string reason() { return ": " + std::generic_category().message(errno); }

using file = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

file open_to_read(const source& from) {
  file f(std::fopen(from.value.c_str(), "rb"), &std::fclose);
  if (f == nullptr) from.refuse(VTS_STATUS_FILE_OPEN, "could not be opened" + reason());
  return f;
}

// Until `image` has `size` bytes or the file ends. Memory is taken as the bytes arrive, whatever their header
// promised.
void read_up_to(std::uint64_t size, std::FILE* f, std::vector<std::byte>& image, const source& from) {
  constexpr std::uint64_t piece = 1 << 16;
  for (std::size_t count = 1; count > 0 && image.size() < size;) {
    const std::size_t before = image.size();
    image.resize(before + static_cast<std::size_t>(std::min(piece, size - before)));
    count = std::fread(&image[before], 1, image.size() - before, f);
    if (count == 0 && std::ferror(f) != 0) from.refuse(VTS_STATUS_FILE_READ, "could not be read" + reason());
    image.resize(before + count);
  }
}

// A file under a name of its own until it is complete.
class new_file {
 public:
  explicit new_file(const std::string& path) : path_(path) {
    static std::atomic<unsigned> number = 0;
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    do {
      name_ = folder / (".tmk-" + std::to_string(getpid()) + '-' + std::to_string(number++));
      descriptor_ = open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (descriptor_ < 0 && errno == EEXIST);
  }
  new_file(const new_file&) = delete;
  ~new_file() {
    if (descriptor_ >= 0) close(descriptor_);
    if (!name_.empty()) unlink(name_.c_str());
  }
  int descriptor() const { return descriptor_; }

  // Takes the permissions of the file that it replaces. The bytes reach the disk before the name does.
  bool replace() {
    struct stat old;
    if (stat(path_.c_str(), &old) == 0) static_cast<void>(fchmod(descriptor_, old.st_mode & 07777) != 0);
    if (fsync(descriptor_) != 0 || close(std::exchange(descriptor_, -1)) != 0) return false;
    if (std::rename(name_.c_str(), path_.c_str()) != 0) return false;
    name_.clear();
    return true;
  }

 private:
  std::string path_, name_;
  int descriptor_;
};

bool write_all(int descriptor, bytes image) {
  while (!image.empty()) {
    const ssize_t count = write(descriptor, image.data(), image.size());
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) image = image.subspan(static_cast<std::size_t>(count));
  }
  return true;
}

// A device or a pipe cannot be replaced.
void write_in_place(bytes image, const source& to) {
  const int descriptor = open(to.value.c_str(), O_WRONLY | O_CLOEXEC);
  if (descriptor < 0) to.refuse(VTS_STATUS_FILE_OPEN, "could not be opened" + reason());
  const bool written = write_all(descriptor, image);
  const std::string why = written ? "" : reason();
  close(descriptor);
  if (!written) to.refuse(VTS_STATUS_FILE_WRITE, "could not be written" + why);
}

void write_file(bytes image, const source& to) {
  std::error_code unknown;
  const std::filesystem::path target = std::filesystem::weakly_canonical(to.value, unknown);  // of a link
  const std::string path = unknown || target.empty() ? to.value : target.string();
  const auto status = std::filesystem::status(path, unknown);
  if (exists(status) && !is_regular_file(status)) return write_in_place(image, to);
  new_file f(path);
  if (f.descriptor() < 0) to.refuse(VTS_STATUS_FILE_OPEN, "could not be opened" + reason());
  if (!write_all(f.descriptor(), image) || !f.replace())
    to.refuse(VTS_STATUS_FILE_WRITE, "could not be written" + reason());
}

}  // namespace

std::vector<std::byte> stream::save() const {
  require("stream::save");
  const stream now(*this);  // after the words taken
  VtsStream* const handle = now.handle();
  const auto content = static_cast<std::size_t>(__vtsGetStreamSize(handle));
  std::vector<std::byte> image;
  image.reserve(header_bytes + content + hash_bytes);
  for (const char c : magic) image.push_back(static_cast<std::byte>(c));
  append(image, version);
  append(image, content);
  image.resize(header_bytes + content);
  detail::check_status("stream::save", handle, __vtsSaveStreamM(handle, &image[header_bytes]));
  append(image, fnv1a(image));
  return image;
}

void stream::save(const std::string& path) const { write_file(save(), {"stream::save", "path", path}); }

stream stream::load(bytes image) {
  const source from = {"stream::load", "image", std::to_string(image.size()) + " bytes"};
  return stream(load_c(content_of(image, from), from));
}

stream stream::load(const std::string& path) {
  const source from = {"stream::load", "path", path};
  const file f = open_to_read(from);
  std::vector<std::byte> image;
  read_up_to(header_bytes, f.get(), image, from);
  read_up_to(size_of_image(image, from) + 1, f.get(), image, from);  // one more than there may be
  return stream(load_c(content_of(image, from), from));
}

stream stream::load_c_image(bytes image) {
  return stream(load_c(image, {"stream::load_c_image", "image", std::to_string(image.size()) + " bytes"}));
}

stream stream::load_c_image(const std::string& path) {
  const source from = {"stream::load_c_image", "path", path};
  const file f = open_to_read(from);
  std::vector<std::byte> image;
  read_up_to(4, f.get(), image, from);
  if (image.size() == 4 && !is_c_image(image)) from.check(VTS_STATUS_BAD_IMAGE);
  read_up_to(longest_image, f.get(), image, from);
  return stream(load_c(image, from));
}

}  // namespace tmk
