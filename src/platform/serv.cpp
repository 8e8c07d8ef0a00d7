// SPDX-License-Identifier: Apache-2.0
// The service layer: memory, environment and messages.
#include "tmk/abi/serv.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

namespace {

enum class arguments { name, name_and_index, index_and_value };

struct message {
  arguments takes;
  const char* format;
};

constexpr int first_message = 735;

constexpr message messages[] = {
    {arguments::name_and_index, "tmk: %s: argument %d is not valid\n"},
    {arguments::name, "tmk: %s: the call failed\n"},
    {arguments::name, "tmk: %s: argument outside the domain\n"},
    {arguments::name, "tmk: %s: argument at a singularity\n"},
    {arguments::name, "tmk: %s: result too large for the format (overflow)\n"},
    {arguments::name, "tmk: %s: result too small for the format (underflow)\n"},
    {arguments::name, "tmk: %s: unknown error\n"},
    {arguments::index_and_value, "  argument [%d] = %.17g\n"},
    {arguments::index_and_value, "  result [%d] = %.17g\n"},
    {arguments::index_and_value, "  argument [%d] = %.17g\n"},
    {arguments::index_and_value, "  first result [%d] = %.17g\n"},
    {arguments::index_and_value, "  second result [%d] = %.17g\n"},
    {arguments::index_and_value, "  first argument [%d] = %.17g\n"},
    {arguments::index_and_value, "  second argument [%d] = %.17g\n"},
    {arguments::index_and_value, "  result [%d] = %.17g\n"},
    {arguments::index_and_value, "  first argument [%d] = %.17g\n"},
    {arguments::index_and_value, "  second argument [%d] = %.17g\n"},
    {arguments::index_and_value, "  first result [%d] = %.17g\n"},
    {arguments::index_and_value, "  second result [%d] = %.17g\n"},
};

}  // namespace

void* tmk_serv_allocate(size_t size, size_t alignment) {
  void* pointer = nullptr;
  if (alignment < sizeof(void*)) alignment = sizeof(void*);
  return posix_memalign(&pointer, alignment, size) == 0 ? pointer : nullptr;
}

void tmk_serv_deallocate(void* pointer) { std::free(pointer); }

int32_t tmk_serv_memcpy_s(void* destination, size_t destination_size, const void* source, size_t count) {
  if (destination == nullptr) return EINVAL;
  if (source == nullptr || count > destination_size) {
    std::memset(destination, 0, destination_size);
    return source == nullptr ? EINVAL : ERANGE;
  }
  std::memcpy(destination, source, count);
  return 0;
}

int32_t tmk_serv_getenv(const char* name, char* buffer, int32_t size) {
  if (size < 1) return 0;
  const char* value = std::getenv(name);
  if (value == nullptr) value = "";
  const size_t length = strnlen(value, static_cast<size_t>(size) - 1);
  std::memcpy(buffer, value, length);
  buffer[length] = '\0';
  return static_cast<int32_t>(length);
}

int32_t tmk_serv_print(int32_t channel, int32_t number, int32_t count, ...) {
  const int32_t row = number - first_message;
  if (channel != 1 || row < 0 || row >= static_cast<int32_t>(std::size(messages))) return -1;
  const message& m = messages[row];
  if (count != (m.takes == arguments::name ? 1 : 2)) return -1;

  va_list list;
  va_start(list, count);
  const int32_t printed = std::vfprintf(stderr, m.format, list);
  va_end(list);
  return printed;
}
