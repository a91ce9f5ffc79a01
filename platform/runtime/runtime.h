// The component runtime: reads config.xml, loads components, and finds their interfaces by name.
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

// Holds the configuration and the loaded components. A process has at most one at a time. The
// thread that creates it also loads the components and destroys it; everything else may be called
// from any thread.
class Runtime {
 public:
  // Reads the configuration: an XML file with one "config" element that contains one element for
  // each key, with the key as its name and the value as its text. Of equal keys the first counts.
  // Null if the file cannot be read, is not well-formed or has another root, or if there is already
  // a runtime;
  // `*error` is then one line that names the file and, for errors in its content, line and column.
  static Runtime* Create(const std::string& config_file, std::string* error);

  // Null before Create and after Destroy.
  static Runtime* GetInstance();

  // Delivers the queued events, finalizes the components in reverse order of loading, then destroys
  // them and unmaps their libraries. A library stays mapped if its component never handed out an
  // interface or its Finalize returned false, because its threads may still run; the configuration
  // then stays in memory until the process ends. Does nothing without a runtime.
  static void Destroy();

  Runtime(const Runtime&) = delete;
  Runtime& operator=(const Runtime&) = delete;

  // False, with `*value` untouched, if the key is absent; a key without text is "".
  bool GetConfigOption(const std::string& key, std::string* value) const;

  // Loads a component: maps the library, calls its GetComponent, then Init and Start. False, with
  // one line in `*error` that names the library, if a step fails or the component is already
  // loaded.
  bool LoadComponent(const std::string& library, std::string* error);

  // Asks each component in the order of loading; the first that has the interface writes it to
  // `*out`. False, with `*out` untouched, if none has it. The interface is valid until Destroy.
  bool QueryInterface(const std::string& name, void** out);

 private:
  struct LoadedComponent;
  using Config = std::map<std::string, std::string>;

  explicit Runtime(Config config);
  ~Runtime() = default;

  std::vector<std::shared_ptr<LoadedComponent>> Components();
  bool IsLoaded(const Component* component);
  // Finalizes and destroys the components. True if none of their threads can still run.
  bool End();

  const Config config_;
  base::Lock lock_;
  std::vector<std::shared_ptr<LoadedComponent>> components_ GUARDED_BY(lock_);
};

}  // namespace runtime

#endif  // QORN_PLATFORM_RUNTIME_RUNTIME_H_
