#include "core_fw/account/src/oauth_token_client.h"

#include <memory>

#include "base/json_reader.h"
#include "base/location.h"
#include "base/values.h"
#include "core_fw/account/src/account_log.h"

namespace account {
namespace {

std::string Post(const TokenSettings& settings, const std::string& body, HttpResult* http_result) {
  *http_result = kHttpOtherStatus;  // Stays if libcurl cannot even make a handle.
  return SendRequest({"Accept: application/json"}, settings.auth_url + "/token", 1, body,
                     http_result);
}

bool Fail(const TokenLogNames& names, const char* what) {
  Log(FROM_HERE, kSeverityFailure, names.function, {names.message, " Error (", what, ")"});
  return false;
}

// The text after the first header block. Without a blank line it begins at the fourth character:
// "not found" plus four wraps around to 3, deliberately.
std::string CutJson(const std::string& response) {
  const size_t start = response.find("\r\n\r\n") + 4;
  return start < response.size() ? response.substr(start) : std::string();
}

}  // namespace

std::string MakeAuthCodeBody(const TokenSettings& settings, const std::string& auth_code) {
  // The leading "&" and the order are deliberate: the account server expects them.
  return "&client_id=" + settings.client_id + "&grant_type=authorization_code&service_type=M" +
         "&client_secret=" + settings.client_secret +
         "&physical_address_text=" + settings.device_physical_address_text + "&code=" + auth_code;
}

std::string MakeRefreshBody(const TokenSettings& settings, const std::string& refresh_token) {
  return "refresh_token=" + refresh_token + "&client_id=" + settings.client_id +
         "&grant_type=refresh_token&service_type=M&client_secret=" + settings.client_secret +
         "&physical_address_text=" + settings.device_physical_address_text;
}

bool ReadTokenAnswer(HttpResult http_result, const std::string& response,
                     const TokenLogNames& names, Tokens* tokens) {
  if (http_result != kHttpOk) return Fail(names, "SendRequest response error");
  if (response.empty()) return Fail(names, "response empty");
  const std::string json = CutJson(response);
  if (json.empty()) return Fail(names, "JSON response empty");
  const std::unique_ptr<base::Value> value = base::JSONReader::Read(json);
  const base::DictionaryValue* answer = nullptr;
  if (value == nullptr || !value->GetAsDictionary(&answer)) {
    return Fail(names, "Get dictionary value");
  }
  if (!answer->GetString("access_token", &tokens->access_token)) return Fail(names, "access_token");
  if (!answer->GetString("refresh_token", &tokens->refresh_token)) {
    return Fail(names, "refresh_token");
  }
  if (!answer->GetString("userId", &tokens->user_guid)) return Fail(names, "userId");
  return true;
}

bool GetTokensByAuthCode(const TokenSettings& settings, const std::string& auth_code,
                         Tokens* tokens, HttpResult* http_result) {
  const std::string response = Post(settings, MakeAuthCodeBody(settings, auth_code), http_result);
  return ReadTokenAnswer(*http_result, response, kAuthCodeLogNames, tokens);
}

bool GetTokensByRefreshToken(const TokenSettings& settings, const std::string& refresh_token,
                             Tokens* tokens) {
  HttpResult http_result = kHttpOtherStatus;
  const std::string response =
      Post(settings, MakeRefreshBody(settings, refresh_token), &http_result);
  return ReadTokenAnswer(http_result, response, kRefreshLogNames, tokens);
}

}  // namespace account
