// SPDX-License-Identifier: Apache-2.0
#include <tmk/error.hpp>

namespace tmk {

error::error(int status, std::string_view function, std::string argument, std::string value,
             std::string_view complaint)
    : std::runtime_error("tmk::" + std::string(function) + ": argument " + argument + ' ' +
                         std::string(complaint)),
      status_(status),
      argument_(std::move(argument)),
      value_(std::move(value)) {}

}  // namespace tmk
