#ifndef QORN_DEVCLOUD_HTTP_TRANSPORT_H_
#define QORN_DEVCLOUD_HTTP_TRANSPORT_H_

#include <cstddef>
#include <functional>

namespace devcloud {

// One accepted connection, with or without TLS. Used on the network thread, where its handlers run
// too; a handler never runs inside the call that took it. One of Open, Read, Write and Finish may
// be under way at a time, or one Read and one Write; their buffers must live until the handler
// runs.
class Transport {
 public:
  using Handler = std::function<void(bool ok, std::size_t size)>;

  virtual ~Transport() = default;

  // Does the TLS handshake, if any.
  virtual void Open(Handler handler) = 0;
  // Reads between one byte and `size`; not ok at the end of the stream.
  virtual void Read(char* data, std::size_t size, Handler handler) = 0;
  // Writes all bytes.
  virtual void Write(const char* data, std::size_t size, Handler handler) = 0;
  // Closes the sending side and waits for the client to close its own, so that it reads everything
  // that was written.
  virtual void Finish(Handler handler) = 0;
  // Ends with a TCP reset instead of an orderly close.
  virtual void Reset() = 0;
  // Pending handlers run with ok = false.
  virtual void Close() = 0;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_TRANSPORT_H_
