// A bus of a test's own.
#ifndef QORN_GATEWAY_TESTS_PRIVATE_BUS_H_
#define QORN_GATEWAY_TESTS_PRIVATE_BUS_H_

#include <signal.h>

#include <cstdio>
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
    const std::string config = (folder_ / "bus.conf").string();
    daemon_ = popen(("exec dbus-daemon --nofork --nopidfile --print-address=1 --print-pid=1 "
                     "--config-file=" +
                     config + " 2>/dev/null")
                        .c_str(),
                    "re");
    char address[256];
    if (daemon_ == nullptr || fgets(address, sizeof(address), daemon_) == nullptr ||
        fscanf(daemon_, "%d", &process_) != 1) {
      throw std::runtime_error("dbus-daemon does not start");
    }
  }

  void Stop() {
    if (process_ <= 0) return;
    kill(process_, SIGTERM);
    pclose(daemon_);
    process_ = 0;
    std::filesystem::remove(folder_ / "bus");
  }

 private:
  std::filesystem::path folder_;
  FILE* daemon_ = nullptr;
  pid_t process_ = 0;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_TESTS_PRIVATE_BUS_H_
