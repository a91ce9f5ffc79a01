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
  if (logging::GetMinLogLevel() > logging::LOG_ERROR) return;
  try {
    const base::debug::StackTrace trace;
    logging::LogMessage(__FILE__, __LINE__, logging::LOG_ERROR).stream()
        << ": COMPONENT_DESTROY is called" << trace.ToString();
  } catch (...) {  // Memory ended: the line is lost, or its trace.
  }
}
