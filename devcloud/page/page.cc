#include "devcloud/page/page.h"

#include <utility>

#include "devcloud/page/page_files.h"

namespace devcloud {

namespace {

const char* ContentTypeOf(std::string_view name) {
  if (name.ends_with(".css")) return "text/css; charset=utf-8";
  if (name.ends_with(".js")) return "text/javascript; charset=utf-8";
  if (name.ends_with(".svg")) return "image/svg+xml";
  return "text/html; charset=utf-8";
}

}  // namespace

// The files are part of the program, so that it can be copied and run anywhere.
void AddPageRoutes(Router* router) {
  for (const PageFile& file : PageFiles()) {
    Answer answer{.content_type = ContentTypeOf(file.name),
                  .body = std::string(file.text),
                  .header_lines = PageHeaderLines()};
    const bool is_index = file.name == "index.html";
    router->Add("GET", is_index ? "/" : "/page/" + std::string(file.name),
                [answer = std::move(answer)](const RecordedRequest&) { return answer; });
  }
}

std::string SmallPage(const std::string& title, const std::string& content) {
  return "<!DOCTYPE html><html lang=en><meta charset=utf-8>"
         "<meta name=viewport content=\"width=device-width,initial-scale=1\"><title>" +
         title +
         "</title><link rel=icon href=/page/icon.svg><link rel=stylesheet href=/page/page.css>"
         "<main class=small><section><h1>" +
         title + "</h1>" + content + "</section></main></html>";
}

std::vector<std::string> PageHeaderLines() {
  // With the policy "no-referrer", browsers would send the origin "null" with the page's own forms.
  return {
      "Content-Security-Policy: default-src 'none'; script-src 'self'; style-src 'self'; "
      "img-src 'self'; connect-src 'self'; form-action 'self'; base-uri 'none'; "
      "frame-ancestors 'none'",
      "X-Content-Type-Options: nosniff", "Referrer-Policy: same-origin", "Cache-Control: no-store"};
}

}  // namespace devcloud
