#ifndef QORN_PLATFORM_BASE_BIND_H_
#define QORN_PLATFORM_BASE_BIND_H_

#include <functional>
#include <utility>

namespace base {

// A task. Copyable: a copy copies everything that the task binds.
using Closure = std::function<void()>;

// Marks a pointer that a closure borrows: the object must outlive every run of the closure.
template <typename T>
T* Unretained(T* object) {
  return object;
}

// Makes a closure of a function, or of a member function and its object, with all its arguments.
// Arguments are copied into the closure; std::ref borrows one.
template <typename Function, typename... Args>
Closure Bind(Function&& function, Args&&... args) {
  return Closure(std::bind_front(std::forward<Function>(function), std::forward<Args>(args)...));
}

}  // namespace base

#endif  // QORN_PLATFORM_BASE_BIND_H_
