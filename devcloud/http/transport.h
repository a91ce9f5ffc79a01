#ifndef QORN_DEVCLOUD_HTTP_TRANSPORT_H_
#define QORN_DEVCLOUD_HTTP_TRANSPORT_H_

#include <cstddef>
#include <functional>

namespace devcloud {

// One accepted connection, with or without TLS. Belongs to the network thread, as do the calls of
// its handlers; a handler never runs inside the call that it was given to. At most one of Open,
// Read, Write and Finish is under way at a time, except for one Read beside one Write, and what
// they are given must stay until its handler runs.
class Transport {
 public:
  using Handler = std::function<void(bool ok, std::size_t size)>;

  virtual ~Transport() = default;

  // The TLS handshake, where there is one.
  virtual void Open(Handler handler) = 0;
  // At least one byte, at most `size`; not ok at the end of the stream.
  virtual void Read(char* data, std::size_t size, Handler handler) = 0;
  // All of the bytes.
  virtual void Write(const char* data, std::size_t size, Handler handler) = 0;
  // Says that no more bytes come and waits for the other side to close, so that it reads what was
  // written before.
  virtual void Finish(Handler handler) = 0;
  // Ends with a TCP reset instead of an orderly close.
  virtual void Reset() = 0;
  // Handlers under way run with ok = false.
  virtual void Close() = 0;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_TRANSPORT_H_
