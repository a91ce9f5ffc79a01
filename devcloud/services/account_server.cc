#include "devcloud/services/account_server.h"

#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "devcloud/http/json_text.h"
#include "devcloud/http/origin.h"
#include "devcloud/page/page.h"

namespace devcloud {
namespace {

using Form = std::map<std::string, std::string>;

constexpr char kSignInForm[] =
    "<form method=post action=/authorize class=line><label for=user>User ID</label>"
    "<input id=user name=user required autofocus autocapitalize=none spellcheck=false>"
    "<button class=main>Get a code</button></form>";

Answer HtmlAnswer(const char* title, const std::string& content) {
  return {200, "text/html; charset=utf-8", SmallPage(title, content), PageHeaderLines()};
}

// RFC 6749 section 5.1: answers with tokens are not to be kept by caches.
Answer Uncached(int status, const nlohmann::json& body) {
  return {
      status, "application/json", WriteJson(body), {"Cache-Control: no-store", "Pragma: no-cache"}};
}

Answer Refuse(const char* error, const char* description) {
  return Uncached(400, {{"error", error}, {"error_description", description}});
}

// An empty value counts as left out (RFC 6749 section 3.2).
std::string ValueOf(const Form& form, const std::string& name) {
  const auto found = form.find(name);
  return found == form.end() ? "" : found->second;
}

Answer Grant(const std::optional<TokenGrant>& grant) {
  if (!grant) return Refuse("invalid_grant", "unknown, used or expired");
  return Uncached(200, {{"access_token", grant->access_token},
                        {"refresh_token", grant->refresh_token},
                        {"userId", grant->guid},
                        {"token_type", "Bearer"},
                        {"expires_in", grant->lifetime.count()}});
}

}  // namespace

Answer ShowSignIn(const RecordedRequest&) { return HtmlAnswer("Sign in", kSignInForm); }

Answer Authorize(Accounts& accounts, const RecordedRequest& request) {
  if (IsFromForeignPage(request)) return Refuse("invalid_request", "sent by another web page");
  const std::optional<Form> form = ParseForm(request.body);
  const std::string user = form ? UrlDecode(ValueOf(*form, "user")) : "";
  const std::string code = accounts.IssueCode(user);
  if (code.empty()) return Refuse("invalid_request", "one field \"user\" is needed");
  if (HeaderOf(request, "Accept").find("text/html") == std::string::npos) {
    return Uncached(200, {{"code", code}});
  }
  return HtmlAnswer("Your code", "<p>Code for " + EscapeMarkup(user) +
                                     ", good once within 10 "
                                     "minutes:<p><output class=code>" +
                                     code +
                                     "</output>"
                                     "<p><a href=/authorize>Sign in again</a>");
}

Answer IssueTokens(Accounts& accounts, const RecordedRequest& request) {
  const std::optional<Form> form = ParseForm(request.body);
  if (!form) return Refuse("invalid_request", "a field is there twice");
  const std::string grant_type = ValueOf(*form, "grant_type");
  if (grant_type.empty()) return Refuse("invalid_request", "grant_type is missing");
  if (ValueOf(*form, "client_id").empty() || ValueOf(*form, "client_secret").empty()) {
    return Refuse("invalid_client", "client_id or client_secret is missing");
  }
  const bool is_refresh = grant_type == "refresh_token";
  if (!is_refresh && grant_type != "authorization_code") {
    return Refuse("unsupported_grant_type", "authorization_code and refresh_token are known");
  }
  const std::string credential = ValueOf(*form, is_refresh ? "refresh_token" : "code");
  if (credential.empty()) return Refuse("invalid_request", "the code or token is missing");
  return Grant(is_refresh ? accounts.Refresh(credential) : accounts.RedeemCode(credential));
}

}  // namespace devcloud
