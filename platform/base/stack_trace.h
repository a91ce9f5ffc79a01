#ifndef QORN_PLATFORM_BASE_STACK_TRACE_H_
#define QORN_PLATFORM_BASE_STACK_TRACE_H_

#include <array>
#include <string>

namespace base {
namespace debug {

// The call stack at its construction. A plain value.
class StackTrace {
 public:
  StackTrace();

  // One line for each call, innermost first, at most 62. Functions that are not exported appear as
  // an address only; a program exports its own with -rdynamic.
  std::string ToString() const;

 private:
  static constexpr int kMaxFrames = 62;

  std::array<void*, kMaxFrames> frames_{};
  int count_;
};

}  // namespace debug
}  // namespace base

#endif  // QORN_PLATFORM_BASE_STACK_TRACE_H_
