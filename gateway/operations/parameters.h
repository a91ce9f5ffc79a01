// What operations take and give and events carry: every value by name, with all that those who
// show, complete, log or keep it have to know.
#ifndef QORN_GATEWAY_OPERATIONS_PARAMETERS_H_
#define QORN_GATEWAY_OPERATIONS_PARAMETERS_H_

namespace gateway {

// Values of the same kind may be passed in each other's place.
enum class IdKind { kNone, kUserId, kUserUuid, kSessionId, kFriendId, kFriendUuid, kPeerId };

// Codes, tokens and passwords are secrets: whoever reads one can use it. They are shortened on the
// screen, and neither the console's history nor the audit file gets them.
enum class Secrecy { kOpen, kSecret };

// One argument or output of an operation, or one string of an event's payload.
struct Parameter {
  // Nothing has a default, so that nobody adds a parameter without deciding whether it is a secret.
  constexpr Parameter(const char* parameter_name, const char* text, IdKind id_kind, Secrecy secrecy)
      : name(parameter_name), meaning(text), kind(id_kind), secret(secrecy == Secrecy::kSecret) {}

  const char* name;     // as in account_manager.h
  const char* meaning;  // a few words for people
  IdKind kind;
  bool secret;
};

namespace parameter {

inline constexpr Parameter kUserId{"user_id", "the user's ID, as it signs in at the account server",
                                   IdKind::kUserId, Secrecy::kOpen};
inline constexpr Parameter kTargetUserId{"target_user_id", "the ID of the user to be removed",
                                         IdKind::kUserId, Secrecy::kOpen};
inline constexpr Parameter kRequestingUserId{
    "requesting_user_id", "the ID of the user who asked for it", IdKind::kUserId, Secrecy::kOpen};
inline constexpr Parameter kUserUuid{"user_uuid", "the user's UUID", IdKind::kUserUuid,
                                     Secrecy::kOpen};
inline constexpr Parameter kUserUuids{"user_uuids", "the UUIDs of all users", IdKind::kUserUuid,
                                      Secrecy::kOpen};
inline constexpr Parameter kUserName{"user_name", "the user's name", IdKind::kNone, Secrecy::kOpen};
inline constexpr Parameter kUserGuid{"user_guid", "the user's GUID at the account server",
                                     IdKind::kNone, Secrecy::kOpen};
inline constexpr Parameter kSignInState{"sign_in_state", "On or Off", IdKind::kNone,
                                        Secrecy::kOpen};
inline constexpr Parameter kAccessToken{"access_token", "the user's access token", IdKind::kNone,
                                        Secrecy::kSecret};
inline constexpr Parameter kRefreshToken{"refresh_token", "the user's refresh token", IdKind::kNone,
                                         Secrecy::kSecret};
inline constexpr Parameter kRegisteredDate{"registered_date", "when the user was created",
                                           IdKind::kNone, Secrecy::kOpen};
inline constexpr Parameter kLastSignInDate{"last_sign_in_date", "when the user last signed in",
                                           IdKind::kNone, Secrecy::kOpen};
inline constexpr Parameter kLastInfoChangedDate{
    "last_info_changed_date", "when ID or name last changed", IdKind::kNone, Secrecy::kOpen};

inline constexpr Parameter kAuthCode{"auth_code",
                                     "an authorisation code of the account server, used once",
                                     IdKind::kNone, Secrecy::kSecret};
inline constexpr Parameter kOAuthAuthCode{"oauth_auth_code",
                                          "an authorisation code of the account server, used once",
                                          IdKind::kNone, Secrecy::kSecret};
inline constexpr Parameter kEventCode{"code", "the authorisation code that was used", IdKind::kNone,
                                      Secrecy::kSecret};
inline constexpr Parameter kPassword{"password", "looked at for the system account only",
                                     IdKind::kNone, Secrecy::kSecret};
inline constexpr Parameter kSessionId{"session_id", "the session's ID", IdKind::kSessionId,
                                      Secrecy::kOpen};
inline constexpr Parameter kConnectionFailed{
    "connection_failed", "whether a sign-in failed because the account server was not reached",
    IdKind::kNone, Secrecy::kOpen};
inline constexpr Parameter kLifetime{"lifetime",
                                     "minutes; 0 and less end every session at the next tick",
                                     IdKind::kNone, Secrecy::kOpen};

inline constexpr Parameter kFriendUuid{"friend_uuid", "the friend's UUID", IdKind::kFriendUuid,
                                       Secrecy::kOpen};
inline constexpr Parameter kFriendUuids{"friend_uuids", "the UUIDs of the user's friends",
                                        IdKind::kFriendUuid, Secrecy::kOpen};
inline constexpr Parameter kFriendId{"friend_id", "the friend's user ID", IdKind::kFriendId,
                                     Secrecy::kOpen};
inline constexpr Parameter kFriendName{"friend_name", "the friend's name", IdKind::kNone,
                                       Secrecy::kOpen};
inline constexpr Parameter kFriendGuid{"friend_guid", "the friend's GUID at the account server",
                                       IdKind::kNone, Secrecy::kOpen};
inline constexpr Parameter kFriendPeerId{
    "friend_peer_id", "the peer ID that the remote-access module reaches the friend by",
    IdKind::kPeerId, Secrecy::kOpen};
inline constexpr Parameter kFriendAuthCode{"friend_auth_code", "the code of the invitation",
                                           IdKind::kNone, Secrecy::kSecret};
inline constexpr Parameter kFriendDeviceModelId{
    "friend_device_model_id", "the model of the friend's gateway", IdKind::kNone, Secrecy::kOpen};
inline constexpr Parameter kFriendDeviceName{
    "friend_device_name", "the name of the friend's gateway", IdKind::kNone, Secrecy::kOpen};
inline constexpr Parameter kFriendDeviceAddress{
    "friend_device_physical_address_text", "the physical address of the friend's gateway, as text",
    IdKind::kNone, Secrecy::kOpen};

inline constexpr Parameter kFirst{"first", "not looked at", IdKind::kNone, Secrecy::kOpen};
inline constexpr Parameter kSecond{"second", "not looked at", IdKind::kNone, Secrecy::kOpen};
inline constexpr Parameter kType{"type", "the number of the field", IdKind::kNone, Secrecy::kOpen};
inline constexpr Parameter kNewValue{"value", "the new value", IdKind::kNone, Secrecy::kOpen};
// A token for two of the types, so it counts as a secret until the type is known.
inline constexpr Parameter kReadValue{"value", "the field's value", IdKind::kNone,
                                      Secrecy::kSecret};
inline constexpr Parameter kMessage{"message", "a JSON document", IdKind::kNone, Secrecy::kOpen};

inline constexpr Parameter kPresenceServer{"presence_server", "the presence server", IdKind::kNone,
                                           Secrecy::kOpen};
inline constexpr Parameter kStunServer{"stun_server", "the STUN server", IdKind::kNone,
                                       Secrecy::kOpen};
inline constexpr Parameter kTurnServer{"turn_server", "the TURN server", IdKind::kNone,
                                       Secrecy::kOpen};
inline constexpr Parameter kConnectionPort{"connection_port", "the servers' port", IdKind::kNone,
                                           Secrecy::kOpen};
inline constexpr Parameter kDomain{"domain", "the servers' domain", IdKind::kNone, Secrecy::kOpen};
// A friend's gateway knows this gateway by it, so it may be typed where a friend's is wanted.
inline constexpr Parameter kPeerId{"peer_id", "this gateway's peer ID", IdKind::kPeerId,
                                   Secrecy::kOpen};

}  // namespace parameter
}  // namespace gateway

#endif  // QORN_GATEWAY_OPERATIONS_PARAMETERS_H_
