// The frame around every interface operation: trace lines and the last catch.
#ifndef QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_OPERATION_H_
#define QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_OPERATION_H_

#include <string_view>

#include "base/location.h"
#include "core_fw/account/include/account_manager.h"

namespace account {

namespace internal {
AccountResult RunOperation(const tracked_objects::Location& from, std::string_view name,
                           AccountResult (*call)(void*), void* body) noexcept;
}  // namespace internal

// Logs "NAMEStart", runs the body, and logs "NAMEEnd" with the message of the result, at the
// severity of a failure unless the result is 1. Returns the body's result, or kAccountFailure if
// the body throws: no exception may reach another component. A line that cannot be written for
// lack of memory is dropped and does not change the result. Any thread.
//
// The template only hands the body on, so that the frame is compiled once and not for each of 30
// operations.
template <typename Body>
AccountResult RunOperation(const tracked_objects::Location& from, std::string_view name,
                           Body body) noexcept {
  return internal::RunOperation(
      from, name, [](void* data) -> AccountResult { return (*static_cast<Body*>(data))(); }, &body);
}

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_OPERATION_H_
