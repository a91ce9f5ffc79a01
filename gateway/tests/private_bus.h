// A bus of a test's own.
#ifndef QORN_GATEWAY_TESTS_PRIVATE_BUS_H_
#define QORN_GATEWAY_TESTS_PRIVATE_BUS_H_

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace gateway {

class PrivateBus {
 public:
  PrivateBus() {
    std::string folder = std::filesystem::temp_directory_path() / "qorn-bus-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) throw std::runtime_error("no folder for a bus");
    folder_ = folder;
    // Other users connect too.
    std::filesystem::permissions(folder_, std::filesystem::perms(0755));
    // As the system's bus, but that everybody may have every name and hear everything.
    std::ofstream(folder_ / "bus.conf")
        << "<busconfig><type>system</type><listen>" << address()
        << "</listen><auth>EXTERNAL</auth><policy context='default'><allow user='*'/><allow "
           "own='*'/>"
           "<allow send_destination='*' eavesdrop='true'/><allow eavesdrop='true'/></policy>"
           "</busconfig>";
    Start();
  }
  ~PrivateBus() {
    Stop();
    std::filesystem::remove_all(folder_);
  }
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  std::string address() const { return "unix:path=" + (folder_ / "bus").string(); }

  // Returns once the bus takes connections.
  void Start() {
    int ready[2];
    if (pipe(ready) != 0) throw std::runtime_error("no pipe");
    const std::string config = "--config-file=" + (folder_ / "bus.conf").string();
    const std::string print = "--print-address=" + std::to_string(ready[1]);
    const char* arguments[] = {"dbus-daemon", config.c_str(), "--nofork",
                               "--nopidfile", print.c_str(),  nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    if (posix_spawnp(&process_, "dbus-daemon", &actions, nullptr,
                     const_cast<char* const*>(arguments), environ) != 0) {
      throw std::runtime_error("dbus-daemon does not start");
    }
    posix_spawn_file_actions_destroy(&actions);
    close(ready[1]);
    char line[256];
    const bool good = read(ready[0], line, sizeof(line)) > 0;
    close(ready[0]);
    if (!good) throw std::runtime_error("dbus-daemon has ended");
  }

  void Stop() {
    if (process_ <= 0) return;
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
    process_ = 0;
    std::filesystem::remove(folder_ / "bus");
  }

 private:
  std::filesystem::path folder_;
  pid_t process_ = 0;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_TESTS_PRIVATE_BUS_H_
