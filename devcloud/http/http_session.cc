#include "devcloud/http/http_session.h"

#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <utility>

#include "devcloud/http/http_text.h"

namespace devcloud {
namespace {

namespace http = boost::beast::http;

// Far above what gateways send, but one request cannot fill the memory.
constexpr std::uint32_t kMaxHeadBytes = 2u << 20;
constexpr std::uint64_t kMaxBodyBytes = 64u << 20;
constexpr char kContinue[] = "HTTP/1.1 100 Continue\r\n\r\n";

int StatusFor(const boost::system::error_code& error) {
  if (error == http::error::header_limit) return 431;
  if (error == http::error::body_limit || error == http::error::buffer_overflow) return 413;
  return 400;
}

}  // namespace

class HttpSession::Parser : public http::request_parser<http::string_body> {
 public:
  Parser() {
    header_limit(kMaxHeadBytes);
    body_limit(kMaxBodyBytes);
    eager(true);  // without it, put() would stop behind the head
  }
};

HttpSession::HttpSession(std::unique_ptr<Transport> transport, std::uint16_t port, bool tls,
                         RequestHandler& handler, RequestQueue& queue,
                         std::function<void(const HttpSession*)> on_end)
    : transport_(std::move(transport)),
      handler_(handler),
      queue_(queue),
      on_end_(std::move(on_end)),
      parser_(std::make_unique<Parser>()) {
  request_.port = port;
  request_.tls = tls;
}

HttpSession::~HttpSession() = default;

void HttpSession::Start() { transport_->Open(Then(&HttpSession::Read)); }

void HttpSession::Resume(std::uint64_t fault_number) {
  if (!is_stalled_ || (fault_number != 0 && fault_number != reply_.fault_number)) return;
  is_stalled_ = false;
  Deliver(handler_.Respond(request_, keep_alive_));
}

void HttpSession::Wake() {
  if (is_streaming_) Stream();
}

void HttpSession::End() {
  if (std::exchange(is_over_, true)) return;  // Close() runs pending handlers, which end it again
  if (is_waiting()) {
    // The log showed the request as unanswered; from here on it never will be answered.
    reply_.delivery = Reply::Delivery::kReset;
    handler_.RecordReply(request_, reply_);
  }
  transport_->Close();
  on_end_(this);
}

void HttpSession::Read() {
  const auto self = shared_from_this();
  transport_->Read(chunk_.data(), chunk_.size(),
                   [self](bool ok, std::size_t size) { self->OnRead(ok, size); });
}

void HttpSession::OnRead(bool ok, std::size_t size) {
  if (!ok) return End();
  unread_.append(chunk_.data(), size);
  Parse();
}

void HttpSession::Parse() {
  while (!unread_.empty()) {
    boost::system::error_code error;
    const std::size_t used = parser_->put(boost::asio::buffer(unread_), error);
    // Only what the parser took: the rest may belong to the next request of the connection.
    request_.raw.append(unread_, 0, used);
    unread_.erase(0, used);
    if (error && error != http::error::need_more) return OnMalformed(StatusFor(error));
    if (parser_->is_done()) return OnRequest();
    if (used == 0) break;
  }
  if (parser_->is_header_done() && !is_continued_ &&
      boost::beast::iequals(parser_->get()[http::field::expect], "100-continue")) {
    return SendContinue();
  }
  Read();
}

void HttpSession::SendContinue() {
  is_continued_ = true;
  transport_->Write(kContinue, sizeof(kContinue) - 1, Then(&HttpSession::Read));
}

void HttpSession::OnRequest() {
  const auto& message = parser_->get();
  request_.method = std::string(message.method_string());
  request_.target = std::string(message.target());
  request_.header_lines = HeaderLines(request_.raw);
  request_.body = message.body();
  keep_alive_ = message.keep_alive();
  handler_.Record(&request_);
  reply_ = {};
  is_queued_ = true;
  queue_.Enter([self = shared_from_this()] { self->OnTurn(); });
}

void HttpSession::OnTurn() {
  if (is_over_) return;
  is_queued_ = false;
  Deliver(handler_.Respond(request_, keep_alive_));
}

void HttpSession::OnMalformed(int status) {
  request_.raw += std::exchange(unread_, "");
  handler_.Record(&request_);
  // Where the next request would begin is unknown, so the connection cannot go on.
  const Answer answer = PlainText(status, "The request cannot be read.");
  Deliver({.bytes = Serialize(answer, false), .delivery = Reply::Delivery::kClose});
}

void HttpSession::Deliver(Reply reply) {
  reply_ = std::move(reply);
  handler_.RecordReply(request_, reply_);
  if (reply_.delivery == Reply::Delivery::kStall) {
    is_stalled_ = true;
  } else if (reply_.delivery == Reply::Delivery::kDrip) {
    Drip(0);
  } else {
    transport_->Write(reply_.bytes.data(), reply_.bytes.size(), Then(&HttpSession::OnDelivered));
  }
}

void HttpSession::Drip(std::size_t sent) {
  if (sent == reply_.bytes.size()) return OnDelivered();
  const auto self = shared_from_this();
  transport_->Write(reply_.bytes.data() + sent, 1, [self, sent](bool ok, std::size_t) {
    if (ok) {
      self->Drip(sent + 1);
    } else {
      self->End();
    }
  });
}

void HttpSession::OnDelivered() {
  if (reply_.delivery == Reply::Delivery::kReset) {
    transport_->Reset();
    return End();
  }
  if (reply_.delivery == Reply::Delivery::kStream) {
    is_streaming_ = true;
    WatchStream();
    return Stream();
  }
  if (reply_.delivery == Reply::Delivery::kClose || !keep_alive_) return Finish();
  // Beast's parsers serve one message each.
  parser_ = std::make_unique<Parser>();
  RecordedRequest next;
  next.port = request_.port;
  next.tls = request_.tls;
  request_ = std::move(next);
  is_continued_ = false;
  Parse();  // a client that pipelines has sent the next request already
}

void HttpSession::WatchStream() {
  transport_->Read(chunk_.data(), chunk_.size(), Then(&HttpSession::WatchStream));
}

void HttpSession::Stream() {
  if (is_writing_ || is_over_) return;
  reply_.bytes = reply_.next();
  if (reply_.bytes.empty()) return;
  is_writing_ = true;
  const auto self = shared_from_this();
  transport_->Write(reply_.bytes.data(), reply_.bytes.size(), [self](bool ok, std::size_t) {
    self->is_writing_ = false;
    if (ok) {
      self->Stream();
    } else {
      self->End();
    }
  });
}

void HttpSession::Finish() { transport_->Finish(Then(&HttpSession::End)); }

Transport::Handler HttpSession::Then(void (HttpSession::*next)()) {
  const auto self = shared_from_this();
  return [self, next](bool ok, std::size_t) {
    if (ok) {
      ((*self).*next)();
    } else {
      self->End();
    }
  };
}

}  // namespace devcloud
