#ifndef QORN_PLATFORM_BASE_STACK_TRACE_H_
#define QORN_PLATFORM_BASE_STACK_TRACE_H_

#include <array>
#include <string>

namespace base {
namespace debug {

// The calls that led to its construction. A plain value.
class StackTrace {
 public:
  StackTrace();

  // One line for each call, the innermost first, at most 62. Functions that no library exports
  // have an address only; programs export theirs with -rdynamic.
  std::string ToString() const;

 private:
  static constexpr int kMaxFrames = 62;

  std::array<void*, kMaxFrames> frames_{};
  int count_;
};

}  // namespace debug
}  // namespace base

#endif  // QORN_PLATFORM_BASE_STACK_TRACE_H_
