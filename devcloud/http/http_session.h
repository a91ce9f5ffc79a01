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
#include "devcloud/http/request_queue.h"
#include "devcloud/http/transport.h"

namespace devcloud {

// Serves the requests of one connection, one after another. Heads may have 2 MiB and bodies 64 MiB.
// Network thread only.
class HttpSession : public std::enable_shared_from_this<HttpSession> {
 public:
  // `port` and `tls` describe the port that accepted the connection. `on_end` is called once, when
  // the session ends. The handler and the queue, through which requests are served, are borrowed.
  HttpSession(std::unique_ptr<Transport> transport, std::uint16_t port, bool tls,
              RequestHandler& handler, RequestQueue& queue,
              std::function<void(const HttpSession*)> on_end);
  ~HttpSession();

  void Start();
  // Calls the handler again if its request is stalled by the fault with this number; 0 stands for
  // any fault.
  void Resume(std::uint64_t fault_number);
  // Whether its request waits, for its turn or for a fault to end.
  bool is_waiting() const { return is_queued_ || is_stalled_; }
  // If this is a stream, sends what is new.
  void Wake();
  // Ends the session at once.
  void End();

 private:
  class Parser;

  void Read();
  void OnRead(bool ok, std::size_t size);
  // Feeds the unread bytes to the parser.
  void Parse();
  // Sends "100 Continue" to a client that waits for it before its body (RFC 9110 section 10.1.1).
  void SendContinue();
  void OnRequest();
  // The request has reached the head of the queue.
  void OnTurn();
  void OnMalformed(int status);
  void Deliver(Reply reply);
  void Drip(std::size_t sent);
  void OnDelivered();
  // Reads and drops whatever the client sends on a stream, to notice when it closes.
  void WatchStream();
  // Has one write under way at a time, so that a slow reader skips intermediate states instead of
  // filling the memory.
  void Stream();
  void Finish();
  // A handler that calls `next` on success and ends the session otherwise. It keeps the session
  // alive.
  Transport::Handler Then(void (HttpSession::*next)());

  const std::unique_ptr<Transport> transport_;
  RequestHandler& handler_;
  RequestQueue& queue_;
  const std::function<void(const HttpSession*)> on_end_;
  std::array<char, 65536> chunk_;
  std::string unread_;  // received but not parsed yet
  std::unique_ptr<Parser> parser_;
  RecordedRequest request_;
  Reply reply_;
  bool keep_alive_ = false;
  bool is_continued_ = false;
  bool is_queued_ = false;
  bool is_stalled_ = false;
  bool is_streaming_ = false;
  bool is_writing_ = false;  // a write on the stream is under way
  bool is_over_ = false;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_HTTP_SESSION_H_
