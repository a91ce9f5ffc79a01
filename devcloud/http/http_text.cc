#include "devcloud/http/http_text.h"

#include <strings.h>

#include <charconv>
#include <cstddef>
#include <utility>

namespace devcloud {
namespace {

// Reason phrases of the cloud's own answers. A status that only a fault sends has none, which RFC
// 9112 section 4 allows.
constexpr std::pair<int, std::string_view> kReasons[] = {
    {200, "OK"},
    {204, "No Content"},
    {302, "Found"},
    {307, "Temporary Redirect"},
    {400, "Bad Request"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {413, "Content Too Large"},
    {421, "Misdirected Request"},
    {431, "Request Header Fields Too Large"},
    {500, "Internal Server Error"},
    {503, "Service Unavailable"},
};

std::string_view ReasonOf(int status) {
  for (const auto& [known, reason] : kReasons) {
    if (known == status) return reason;
  }
  return "";
}

bool MayHaveBody(int status) { return status >= 200 && status != 204 && status != 304; }

// Removes the text up to and including the first `separator` from `rest`, and returns what precedes
// the separator.
std::string_view TakeUntil(char separator, std::string_view* rest) {
  const std::size_t end = rest->find(separator);
  const std::string_view taken = rest->substr(0, end);
  *rest = end == std::string_view::npos ? std::string_view() : rest->substr(end + 1);
  return taken;
}

}  // namespace

Answer PlainText(int status, const std::string& line) {
  return {.status = status, .body = line + "\n"};
}

std::string Serialize(const Answer& answer, bool keep_alive) {
  std::string bytes = "HTTP/1.1 " + std::to_string(answer.status) + " ";
  bytes += ReasonOf(answer.status);
  bytes += "\r\n";
  if (!keep_alive) bytes += "Connection: close\r\n";
  const bool has_body = MayHaveBody(answer.status);
  if (has_body) {
    if (!answer.content_type.empty()) bytes += "Content-Type: " + answer.content_type + "\r\n";
    bytes += "Content-Length: " + std::to_string(answer.body.size()) + "\r\n";
  }
  for (const std::string& line : answer.header_lines) bytes += line + "\r\n";
  bytes += "\r\n";
  if (has_body) bytes += answer.body;
  return bytes;
}

std::vector<std::string> HeaderLines(std::string_view raw) {
  std::vector<std::string> lines;
  TakeUntil('\n', &raw);
  while (!raw.empty()) {
    std::string_view line = TakeUntil('\n', &raw);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.empty()) break;
    lines.emplace_back(line);
  }
  return lines;
}

std::string PathOf(const RecordedRequest& request) {
  return request.target.substr(0, request.target.find('?'));
}

std::string HeaderOf(const RecordedRequest& request, std::string_view name) {
  for (const std::string& line : request.header_lines) {
    if (line.size() > name.size() && line[name.size()] == ':' &&
        strncasecmp(line.data(), name.data(), name.size()) == 0) {
      return std::string(Trim(std::string_view(line).substr(name.size() + 1)));
    }
  }
  return "";
}

std::optional<std::map<std::string, std::string>> ParseForm(std::string_view body) {
  std::map<std::string, std::string> fields;
  while (!body.empty()) {
    std::string_view value = TakeUntil('&', &body);
    if (value.empty()) continue;
    // At the first "=" only: gateways do not encode values, which may contain one.
    const std::string_view name = TakeUntil('=', &value);
    if (!fields.emplace(name, value).second) return std::nullopt;
  }
  return fields;
}

std::string UrlDecode(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned char byte = 0;
    if (text[i] == '%' && i + 2 < text.size() &&
        std::from_chars(&text[i + 1], &text[i] + 3, byte, 16).ptr == &text[i] + 3) {
      decoded += static_cast<char>(byte);
      i += 2;
    } else {
      decoded += text[i] == '+' ? ' ' : text[i];
    }
  }
  return decoded;
}

std::string EscapeMarkup(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

}  // namespace devcloud
