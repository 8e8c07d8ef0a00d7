// SPDX-License-Identifier: Apache-2.0
// What every function of the C++ interface throws when an argument or an element cannot be served.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <tmk/detail/standard_library.hpp>

namespace tmk {

/// A refused call, or the first bad element of a call inside an error_scope that raises.
class error : public std::runtime_error {
 public:
  /// The message reads "tmk::<function>: argument <argument> <complaint>".
  error(int status, std::string_view function, std::string argument, std::string value,
        std::string_view complaint);

  /// The C interface's number: a math_status for a bad element, VTM_STATUS_BADARG for a refused argument,
  /// what tmk_select_tier returns for a tier.
  int status() const noexcept { return status_; }

  /// The argument's name as the declaration has it, with an index for one element ("a[3]"), or the name of
  /// an environment variable.
  const std::string& argument() const noexcept { return argument_; }

  /// What the argument held, as text: a size, a number, "null".
  const std::string& value() const noexcept { return value_; }

 private:
  int status_;
  std::string argument_, value_;
};

}  // namespace tmk
