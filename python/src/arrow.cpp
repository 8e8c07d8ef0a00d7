// SPDX-License-Identifier: Apache-2.0
// Tables by Arrow's C stream interface (https://arrow.apache.org/docs/format/CStreamInterface.html): one
// batch after the other becomes a matrix of doubles, nulls NaN. The structs are those of that page.
#include "arrow.hpp"

#include <bit>
#include <cstring>
#include <limits>

#include "arrays.hpp"

struct ArrowSchema {
  const char *format, *name, *metadata;
  std::int64_t flags, n_children;
  ArrowSchema **children, *dictionary;
  void (*release)(ArrowSchema*);
  void* private_data;
};

struct ArrowArray {
  std::int64_t length, null_count, offset, n_buffers, n_children;
  const void** buffers;
  ArrowArray **children, *dictionary;
  void (*release)(ArrowArray*);
  void* private_data;
};

struct ArrowArrayStream {
  int (*get_schema)(ArrowArrayStream*, ArrowSchema*);
  int (*get_next)(ArrowArrayStream*, ArrowArray*);
  const char* (*get_last_error)(ArrowArrayStream*);
  void (*release)(ArrowArrayStream*);
  void* private_data;
};

namespace tmk::python {

namespace {

template <class T>
struct released {
  T value{};
  released() = default;
  released(const released&) = delete;
  ~released() { reset(); }
  void reset() {
    if (value.release != nullptr) value.release(&value);
    value = {};
  }
};

bool bit(const void* bits, std::int64_t i) {
  return (static_cast<const std::uint8_t*>(bits)[i / 8] >> (i % 8) & 1) != 0;
}

// n values of the values buffer from the first on as doubles, for each type of Arrow that is a number.
using reader = void (*)(const void* buffer, std::int64_t first, std::int64_t n, double* r);
template <class T>
void read(const void* buffer, std::int64_t first, std::int64_t n, double* r) {
  const char* const from = static_cast<const char*>(buffer) + first * static_cast<std::int64_t>(sizeof(T));
  for (std::int64_t i = 0; i < n; ++i) {
    T value;
    std::memcpy(&value, from + i * static_cast<std::int64_t>(sizeof(T)), sizeof(T));
    r[i] = static_cast<double>(value);
  }
}
void read_bits(const void* bits, std::int64_t first, std::int64_t n, double* r) {
  for (std::int64_t i = 0; i < n; ++i) r[i] = bit(bits, first + i);
}
constexpr struct {
  char format;
  reader read;
} readers[] = {{'g', read<double>},
               {'f', read<float>},
               {'l', read<std::int64_t>},
               {'i', read<std::int32_t>},
               {'s', read<std::int16_t>},
               {'c', read<std::int8_t>},
               {'L', read<std::uint64_t>},
               {'I', read<std::uint32_t>},
               {'S', read<std::uint16_t>},
               {'C', read<std::uint8_t>},
               {'b', read_bits}};

reader reader_of(const ArrowSchema& column) {
  for (const auto& row : readers)
    if (column.dictionary == nullptr && column.format[0] == row.format && column.format[1] == 0)
      return row.read;
  const std::string name = column.name != nullptr ? column.name : "";
  throw nb::type_error(
      ("x has a column '" + name + "' of the Arrow type '" + column.format + "', want numbers").c_str());
}

// A stream of record batches, whose columns are numbers, or of one such column.
class batches {
 public:
  explicit batches(const nb::capsule& capsule) : capsule_(capsule) {
    stream_ = static_cast<ArrowArrayStream*>(capsule.data("arrow_array_stream"));
    if (stream_->release == nullptr) throw nb::value_error("x is an Arrow stream that was read before");
    check(stream_->get_schema(stream_, &schema_.value));
    const ArrowSchema& s = schema_.value;
    is_struct_ = std::strcmp(s.format, "+s") == 0;
    const std::int64_t columns = is_struct_ ? s.n_children : 1;
    for (std::int64_t j = 0; j < columns; ++j) {
      const ArrowSchema& column = is_struct_ ? *s.children[j] : s;
      readers_.push_back(reader_of(column));
      names_.emplace_back(column.name != nullptr ? column.name : "");
    }
  }

  const std::vector<std::string>& names() const { return names_; }

  // The next batch, a column in each row of the result; none at the end.
  nb::object next() {
    released<ArrowArray> batch;
    {
      const nb::gil_scoped_release release;
      if (stream_->get_next(stream_, &batch.value) != 0) batch.value.length = -1;
    }
    if (batch.value.length < 0) check(1);
    if (batch.value.release == nullptr) return nb::none();
    const std::int64_t n = batch.value.length;
    std::vector<double> values(readers_.size() * static_cast<std::size_t>(n));
    {
      const nb::gil_scoped_release release;
      for (std::size_t j = 0; j < readers_.size(); ++j)
        read_column(batch.value, j, values.data() + j * static_cast<std::size_t>(n));
    }
    return nb::cast(array_of(std::move(values), {readers_.size(), static_cast<std::size_t>(n)}));
  }

 private:
  void check(int failed) {
    if (failed == 0) return;
    const char* const why = stream_->get_last_error(stream_);
    throw std::runtime_error(std::string("x, an Arrow stream, failed: ") +
                             (why != nullptr ? why : "no reason given"));
  }

  // A missing row of the batch makes its columns missing.
  void read_column(const ArrowArray& batch, std::size_t j, double* r) const {
    const ArrowArray& column = is_struct_ ? *batch.children[j] : batch;
    const std::int64_t first = column.offset + (is_struct_ ? batch.offset : 0);
    const void* const valid = column.null_count != 0 ? column.buffers[0] : nullptr;
    const void* const rows = is_struct_ && batch.null_count != 0 ? batch.buffers[0] : nullptr;
    readers_[j](column.buffers[1], first, batch.length, r);
    if (valid == nullptr && rows == nullptr) return;
    for (std::int64_t i = 0; i < batch.length; ++i)
      if ((valid != nullptr && !bit(valid, first + i)) || (rows != nullptr && !bit(rows, batch.offset + i)))
        r[i] = std::numeric_limits<double>::quiet_NaN();
  }

  nb::capsule capsule_;
  ArrowArrayStream* stream_;
  released<ArrowSchema> schema_;
  bool is_struct_ = true;
  std::vector<reader> readers_;
  std::vector<std::string> names_;
};

}  // namespace

void add_arrow(nb::module_& m) {
  nb::class_<batches> c(m, "ArrowBatches");
  c.def(nb::init<const nb::capsule&>());
  c.def("names", &batches::names);
  c.def("next", &batches::next);
}

}  // namespace tmk::python
