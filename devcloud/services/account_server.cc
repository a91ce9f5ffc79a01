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
  return {.content_type = "text/html; charset=utf-8",
          .body = SmallPage(title, content),
          .header_lines = PageHeaderLines()};
}

// RFC 6749 section 5.1: caches must not store answers with tokens.
Answer UncachedJson(int status, const nlohmann::json& body) {
  return {.status = status,
          .content_type = "application/json",
          .body = WriteJson(body),
          .header_lines = {"Cache-Control: no-store", "Pragma: no-cache"}};
}

Answer OAuthError(const char* error, const char* description) {
  return UncachedJson(400, {{"error", error}, {"error_description", description}});
}

// "" if the field is missing: RFC 6749 section 3.2 treats an empty value as missing.
std::string FieldOf(const Form& form, const std::string& name) {
  const auto found = form.find(name);
  return found == form.end() ? "" : found->second;
}

Answer TokenAnswer(const std::optional<TokenGrant>& grant) {
  if (!grant) return OAuthError("invalid_grant", "unknown, used or expired");
  return UncachedJson(200, {{"access_token", grant->access_token},
                            {"refresh_token", grant->refresh_token},
                            {"userId", grant->guid},
                            {"token_type", "Bearer"},
                            {"expires_in", grant->lifetime.count()}});
}

}  // namespace

Answer ShowSignIn(const RecordedRequest&) { return HtmlAnswer("Sign in", kSignInForm); }

Answer Authorize(Accounts& accounts, const RecordedRequest& request) {
  if (IsFromForeignPage(request)) return OAuthError("invalid_request", "sent by another web page");
  const std::optional<Form> form = ParseForm(request.body);
  const std::string user = form ? UrlDecode(FieldOf(*form, "user")) : "";
  const std::string code = accounts.IssueCode(user);
  if (code.empty()) return OAuthError("invalid_request", "one field \"user\" is needed");
  if (HeaderOf(request, "Accept").find("text/html") == std::string::npos) {
    return UncachedJson(200, {{"code", code}});
  }
  return HtmlAnswer("Your code", "<p>Code for " + EscapeMarkup(user) +
                                     ", valid once within 10 minutes:<p><output class=code>" +
                                     code + "</output><p><a href=/authorize>Sign in again</a>");
}

Answer IssueTokens(Accounts& accounts, const RecordedRequest& request) {
  const std::optional<Form> form = ParseForm(request.body);
  if (!form) return OAuthError("invalid_request", "a field occurs twice");
  const std::string grant_type = FieldOf(*form, "grant_type");
  if (grant_type.empty()) return OAuthError("invalid_request", "grant_type is missing");
  if (FieldOf(*form, "client_id").empty() || FieldOf(*form, "client_secret").empty()) {
    return OAuthError("invalid_client", "client_id or client_secret is missing");
  }
  // Any client and any secret will do: the cloud has no list of them.
  const bool is_refresh = grant_type == "refresh_token";
  if (!is_refresh && grant_type != "authorization_code") {
    return OAuthError("unsupported_grant_type",
                      "only authorization_code and refresh_token are supported");
  }
  const std::string credential = FieldOf(*form, is_refresh ? "refresh_token" : "code");
  if (credential.empty()) return OAuthError("invalid_request", "the code or token is missing");
  return TokenAnswer(is_refresh ? accounts.Refresh(credential) : accounts.RedeemCode(credential));
}

}  // namespace devcloud
