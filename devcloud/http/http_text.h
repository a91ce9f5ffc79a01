#ifndef QORN_DEVCLOUD_HTTP_HTTP_TEXT_H_
#define QORN_DEVCLOUD_HTTP_HTTP_TEXT_H_

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devcloud/http/recorded_request.h"

namespace devcloud {

// An HTTP response, before it is bytes.
struct Answer {
  int status = 200;
  std::string content_type = "text/plain";
  std::string body = {};
  std::vector<std::string> header_lines =
      {};  // "Name: value", sent after the lines of every answer
};

// An answer of one line of text, without its line break.
Answer PlainText(int status, const std::string& line);

// The answer's bytes for HTTP/1.1. The body is left out if the status forbids one (RFC 9110 section
// 6.4.1).
std::string Serialize(const Answer& answer, bool keep_alive);

// The lines between the request line and the first blank line, without their line ends.
std::vector<std::string> HeaderLines(std::string_view raw);

// The target without its query.
std::string PathOf(const RecordedRequest& request);

// The trimmed value of the first header line with this name, which is not case-sensitive; "" if
// there is none.
std::string HeaderOf(const RecordedRequest& request, std::string_view name);

// The fields of a form, split at each "&" and at the first "=" of a field; values are not decoded.
// Empty fields are skipped, since gateways begin their forms with "&". Null if a name occurs twice,
// which RFC 6749 section 3.2 forbids.
std::optional<std::map<std::string, std::string>> ParseForm(std::string_view body);

// Decodes application/x-www-form-urlencoded text; a "%" without two hexadecimal digits is kept.
std::string UrlDecode(std::string_view text);

// Escapes text for XML and HTML, for element content and double-quoted attributes.
std::string EscapeMarkup(std::string_view text);

// Without spaces and tabs at both ends.
std::string_view Trim(std::string_view text);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_HTTP_TEXT_H_
