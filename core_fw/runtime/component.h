// The base class of every component. The runtime and all components compile against this header.
#ifndef QORN_CORE_FW_RUNTIME_COMPONENT_H_
#define QORN_CORE_FW_RUNTIME_COMPONENT_H_

#include <string>

// A component. Its library returns one to the runtime from its exported function
//   extern "C" Component* GetComponent();
// The order of the operations and the one field are part of the binary contract between runtime
// and components: never reorder. The runtime makes all calls from one thread, except
// QueryInterface, which may come from any.
class Component {
 public:
  Component() = default;
  Component(const Component&) = delete;
  Component& operator=(const Component&) = delete;

  // Writes the interface of that name to `*out` and returns true. Returns false with `*out`
  // untouched if the component has no such interface, as here. The component owns the interface.
  virtual bool QueryInterface(const std::string& name, void** out);
  // Keeps a borrowed pointer to the runtime that loads the component; true if it is not null.
  virtual bool Init(void* runtime_object);
  // Called once after Init. Returns true here.
  virtual bool Start();
  // The component's name, which the component owns; "" here.
  virtual const char* GetName();
  // Stops the component's work; true if that succeeded. A component that was never asked for an
  // interface may keep its threads running.
  virtual bool Finalize() = 0;
  // 0 here.
  virtual int QueryState();
  // Logs the destruction and the call stack that led to it, at severity 4.
  virtual ~Component();

 protected:
  void* runtime = nullptr;  // The argument of Init.
};

#endif  // QORN_CORE_FW_RUNTIME_COMPONENT_H_
