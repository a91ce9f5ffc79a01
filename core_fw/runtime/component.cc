#include "core_fw/runtime/component.h"

#include "base/logging.h"
#include "base/stack_trace.h"

bool Component::QueryInterface(const std::string& /*name*/, void** /*out*/) { return false; }

bool Component::Init(void* runtime_object) {
  runtime = runtime_object;
  return runtime != nullptr;
}

bool Component::Start() { return true; }

const char* Component::GetName() { return ""; }

int Component::QueryState() { return 0; }

Component::~Component() {
  // A component that disappears while others still hold its interface is hard to find later, so the
  // call stack is logged as an error even when everything is in order.
  if (logging::GetMinLogLevel() > logging::LOG_ERROR) return;
  try {
    const base::debug::StackTrace trace;
    logging::LogMessage(__FILE__, __LINE__, logging::LOG_ERROR).stream()
        << ": COMPONENT_DESTROY is called" << trace.ToString();
  } catch (...) {  // Out of memory: the line or its stack is lost.
  }
}
