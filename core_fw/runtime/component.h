// The base class that a component and the runtime share.
#ifndef QORN_CORE_FW_RUNTIME_COMPONENT_H_
#define QORN_CORE_FW_RUNTIME_COMPONENT_H_

#include <string>

// What a component's library hands to the runtime from its exported function
//   extern "C" Component* GetComponent();
// The order of the operations and the one field are part of the binary contract between runtime
// and components: never reorder. The runtime calls them from one thread, but QueryInterface from
// any.
class Component {
 public:
  Component() = default;
  Component(const Component&) = delete;
  Component& operator=(const Component&) = delete;

  // Writes the interface of that name to `*out` and answers true; false, `*out` untouched, when
  // the component has none, as here. The component keeps the interface.
  virtual bool QueryInterface(const std::string& name, void** out);
  // Keeps the runtime that loads the component, which is borrowed; true if it is not null.
  virtual bool Init(void* runtime_object);
  // Called once after Init; true here.
  virtual bool Start();
  // The component's name, which it keeps; "" here.
  virtual const char* GetName();
  // Ends the component's work; true when that succeeded. A component that was never asked for an
  // interface may keep its threads.
  virtual bool Finalize() = 0;
  // 0 here.
  virtual int QueryState();
  // Logs that the component goes, with the calls that led to it, at severity 4.
  virtual ~Component();

 protected:
  void* runtime = nullptr;  // What Init was given.
};

#endif  // QORN_CORE_FW_RUNTIME_COMPONENT_H_
