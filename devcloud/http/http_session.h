#ifndef QORN_DEVCLOUD_HTTP_HTTP_SESSION_H_
#define QORN_DEVCLOUD_HTTP_HTTP_SESSION_H_

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "devcloud/http/recorded_request.h"
#include "devcloud/http/reply.h"
#include "devcloud/http/request_handler.h"
#include "devcloud/http/transport.h"

namespace devcloud {

// The requests of one connection, one after another. Heads may have 2 MiB, bodies 64 MiB.
// Belongs to the network thread.
class HttpSession : public std::enable_shared_from_this<HttpSession> {
 public:
  // `on_end` is called once, when the session is over. The handler is borrowed.
  HttpSession(std::unique_ptr<Transport> transport, std::uint16_t port, bool tls,
              RequestHandler& handler, std::function<void(const HttpSession*)> on_end);
  ~HttpSession();

  void Start();
  // Asks the handler again, if it has said that the request stalls by the fault of this number; 0
  // stands for any.
  void Resume(std::uint64_t fault_number);
  // Sends what is new on a stream.
  void Wake();
  // Ends the session at once.
  void End();

 private:
  class Parser;

  void Read();
  void OnRead(bool ok, std::size_t size);
  // Gives the bytes that have come to the parser.
  void Parse();
  // Lets a client that waits for it send its body (RFC 9110 section 10.1.1).
  void SendContinue();
  void OnRequest();
  void OnMalformed(int status);
  void Deliver(Reply reply);
  void Drip(std::size_t sent);
  void OnDelivered();
  // Ends the session when the client closes its stream; what it sends on it is dropped.
  void WatchStream();
  // One write at a time, so that a slow reader gets fewer and later pieces and holds up nobody.
  void Stream();
  void Finish();
  Transport::Handler Then(void (HttpSession::*next)());

  const std::unique_ptr<Transport> transport_;
  RequestHandler& handler_;
  const std::function<void(const HttpSession*)> on_end_;
  std::array<char, 65536> chunk_;
  std::string unread_;  // came, but not parsed yet
  std::unique_ptr<Parser> parser_;
  RecordedRequest request_;
  Reply reply_;
  bool keep_alive_ = false;
  bool is_continued_ = false;
  bool is_stalled_ = false;
  bool is_streaming_ = false;
  bool is_writing_ = false;  // on the stream
  bool is_over_ = false;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_HTTP_SESSION_H_
