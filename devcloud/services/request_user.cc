#include "devcloud/services/request_user.h"

#include "devcloud/http/http_text.h"

namespace devcloud {
namespace {

std::string FieldOf(const RecordedRequest& request, const std::string& name) {
  const auto form = ParseForm(request.body);
  return form && form->contains(name) ? form->at(name) : "";
}

}  // namespace

std::string UserOf(const Accounts& accounts, const RecordedRequest& request) {
  const std::string path = PathOf(request);
  if (path == "/authorize") return UrlDecode(FieldOf(request, "user"));
  std::string guid;
  if (path == "/token") {
    guid = accounts.OwnerOf(FieldOf(request, "code"));
    if (guid.empty()) guid = accounts.OwnerOf(FieldOf(request, "refresh_token"));
  } else {
    guid = HeaderOf(request, "x-dpx-userId");
  }
  const std::string user_id = accounts.UserIdOf(guid);
  return user_id.empty() ? guid : user_id;
}

}  // namespace devcloud
