#include "gateway/process/service_manager.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "base/scoped_fd.h"

namespace gateway {

void Notify(const std::string& lines) {
  const char* name = std::getenv("NOTIFY_SOCKET");
  sockaddr_un address{};
  if (name == nullptr || (name[0] != '/' && name[0] != '@')) return;
  const size_t length = std::strlen(name);
  if (length >= sizeof(address.sun_path)) return;
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, name, length);
  // "@" stands for the zero byte that begins a name outside the file system.
  if (name[0] == '@') address.sun_path[0] = '\0';
  // A failure is not reported: the manager has a timeout of its own, and nobody else would care.
  const base::ScopedFd socket_fd(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  sendto(socket_fd.get(), lines.data(), lines.size(), MSG_NOSIGNAL,
         reinterpret_cast<const sockaddr*>(&address),
         static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length));
}

}  // namespace gateway
