#include "base/stack_trace.h"

#include <cxxabi.h>
#include <execinfo.h>

#include <cstdlib>
#include <memory>

namespace base {
namespace debug {

namespace {

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};

std::string Demangle(const std::string& name) {
  // A C name can look like a mangled type: "i" would become "int".
  if (name.rfind("_Z", 0) != 0) return name;
  int status = 0;
  const std::unique_ptr<char, Free> readable(
      abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status));
  return readable ? readable.get() : name;
}

// `symbol` reads "module(name+offset) [address]"; the name may be missing.
std::string DemangleSymbol(const std::string& symbol) {
  const size_t open = symbol.rfind('(');
  const size_t plus = symbol.find('+', open);
  if (open == std::string::npos || plus == std::string::npos) return symbol;
  const std::string name = symbol.substr(open + 1, plus - open - 1);
  return symbol.substr(0, open + 1) + Demangle(name) + symbol.substr(plus);
}

}  // namespace

StackTrace::StackTrace() : count_(backtrace(frames_.data(), kMaxFrames)) {}

std::string StackTrace::ToString() const {
  const std::unique_ptr<char*, Free> symbols(backtrace_symbols(frames_.data(), count_));
  if (!symbols) return "";
  std::string text;
  for (int i = 0; i < count_; ++i) text += "\t" + DemangleSymbol(symbols.get()[i]) + "\n";
  return text;
}

}  // namespace debug
}  // namespace base
