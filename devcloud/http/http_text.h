#ifndef QORN_DEVCLOUD_HTTP_HTTP_TEXT_H_
#define QORN_DEVCLOUD_HTTP_HTTP_TEXT_H_

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devcloud/http/recorded_request.h"

namespace devcloud {

struct Answer {
  int status = 200;
  std::string content_type = "text/plain";
  std::string body;
  std::vector<std::string>
      header_lines;  // "Name: value", sent after the lines made for every answer
};

// The answer's bytes for HTTP/1.1. A status that forbids a body (RFC 9110 section 6.4.1) is sent
// without one.
std::string Serialize(const Answer& answer, bool keep_alive);

// The lines between the request line and the first blank line.
std::vector<std::string> HeaderLines(std::string_view raw);

// The target without its query.
std::string PathOf(const RecordedRequest& request);

// The value of the first header line of this name, whatever its case, without blanks at its ends;
// "" when there is none.
std::string HeaderOf(const RecordedRequest& request, std::string_view name);

// The fields of a form, with their values as they stand: split at each "&" and at the first "=" of
// a field. Empty fields are skipped, as in a body that begins with "&". Null when a name is there
// twice, which RFC 6749 section 3.2 forbids.
std::optional<std::map<std::string, std::string>> ParseForm(std::string_view body);

// Undoes the encoding of application/x-www-form-urlencoded; a "%" without two hexadecimal digits
// stays as it is.
std::string UrlDecode(std::string_view text);

// For text between the tags of XML and HTML and inside quoted attributes.
std::string EscapeMarkup(std::string_view text);

std::string_view Trim(std::string_view text);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_HTTP_TEXT_H_
