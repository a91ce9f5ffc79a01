#ifndef QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_EVENT_H_
#define QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_EVENT_H_

#include <initializer_list>
#include <string>

#include "base/location.h"
#include "core_fw/account/include/account_manager.h"

namespace account {

// An event's number and its name in the log.
struct EventType {
  int number;
  const char* name;
};

inline constexpr EventType kAddFriendEvent{kEventAccountAddFriend, "kEventAccountAddFriend"};
inline constexpr EventType kCreateUserEvent{kEventAccountCreateUser, "kEventAccountCreateUser"};
inline constexpr EventType kRemoveFriendEvent{kEventAccountRemoveFriend,
                                              "kEventAccountRemoveFriend"};
inline constexpr EventType kRemoveUserEvent{kEventAccountRemoveUser, "kEventAccountRemoveUser"};
inline constexpr EventType kSetUserInformationEvent{kEventAccountSetUserInformation,
                                                    "kEventAccountSetUserInformation"};
inline constexpr EventType kSignInEvent{kEventAccountSignIn, "kEventAccountSignIn"};
inline constexpr EventType kSignInAltEvent{kEventAccountSignInAlt, "kEventAccountSignInAlt"};
inline constexpr EventType kSignOutEvent{kEventAccountSignOut, "kEventAccountSignOut"};

// Publishes an event with the payload `strings`, in that order. False, with a line logged under
// `function`, if the bus cannot create the event. The caller logs the success, because one
// operation deliberately does not. Any thread.
bool PublishEvent(const tracked_objects::Location& from, const char* function,
                  const EventType& type, std::initializer_list<const std::string*> strings);

// Logs that the event was published.
void LogPublished(const tracked_objects::Location& from, const char* function,
                  const EventType& type);

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_EVENT_H_
