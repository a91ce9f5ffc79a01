// A library with which the start probe loads libaccounts-glib until its store is there.
#include <libaccounts-glib.h>

#include <cstdlib>
#include <filesystem>
#include <string>

extern "C" __attribute__((visibility("default"))) int PrepareFloor(const char* database);

int PrepareFloor(const char* database) {
  const std::string folder = std::string(database) + ".peer";
  std::filesystem::create_directory(folder);
  setenv("ACCOUNTS", folder.c_str(), 1);
  auto* const manager = static_cast<AgManager*>(
      g_initable_new(AG_TYPE_MANAGER, nullptr, nullptr, "use-dbus", FALSE, nullptr));
  return manager != nullptr ? 1 : 0;
}
