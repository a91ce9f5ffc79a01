#ifndef QORN_PLATFORM_RUNTIME_RUNTIME_H_
#define QORN_PLATFORM_RUNTIME_RUNTIME_H_

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/lock.h"
#include "base/thread_annotations.h"

class Component;

namespace runtime {

// Holds the configuration and the loaded components. One at a time in a process: the thread that
// makes it loads the components and destroys it; the rest may be called from any thread.
class Runtime {
 public:
  // Reads the configuration: an XML file with one "config" element, in it one element for each
  // key, named as the key, its text the value. Of equal keys the first holds. Null, with one line
  // in `*error` that names the file and, for its content, line and column, when the file cannot be
  // read, is not well-formed or has another root, and when there is a runtime already.
  static Runtime* Create(const std::string& config_file, std::string* error);

  // Null before Create and after Destroy.
  static Runtime* GetInstance();

  // Delivers the events that are queued, finalizes the components in reverse order of loading,
  // then destroys them and unmaps their libraries. A library stays mapped when its component never
  // handed out an interface or its Finalize answered false, since its threads may still run; the
  // configuration's memory then stays until the process ends. Does nothing without a runtime.
  static void Destroy();

  Runtime(const Runtime&) = delete;
  Runtime& operator=(const Runtime&) = delete;

  // False, `*value` untouched, when the key is absent; a key without text is "".
  bool GetConfigOption(const std::string& key, std::string* value) const;

  // Loads a component: maps the library, calls its GetComponent, then Init and Start. False, with
  // one line in `*error` that names the library, when a step fails or the component is loaded
  // already.
  bool LoadComponent(const std::string& library, std::string* error);

  // Asks each component in the order of loading; the first that has the interface writes it to
  // `*out`. False, `*out` untouched, when none has. The interface is borrowed until Destroy.
  bool QueryInterface(const std::string& name, void** out);

 private:
  struct LoadedComponent;
  using Config = std::map<std::string, std::string>;

  explicit Runtime(Config config);
  ~Runtime() = default;

  std::vector<std::shared_ptr<LoadedComponent>> Components();
  bool IsLoaded(const Component* component);
  // Whether no component's thread can run any more.
  bool End();

  const Config config_;
  base::Lock lock_;
  std::vector<std::shared_ptr<LoadedComponent>> components_ GUARDED_BY(lock_);
};

}  // namespace runtime

#endif  // QORN_PLATFORM_RUNTIME_RUNTIME_H_
