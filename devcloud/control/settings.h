#ifndef QORN_DEVCLOUD_CONTROL_SETTINGS_H_
#define QORN_DEVCLOUD_CONTROL_SETTINGS_H_

#include <span>
#include <string>

#include "devcloud/http/limits.h"
#include "devcloud/services/token_policy.h"

namespace devcloud {

// What options set at the start and the API changes later.
struct Settings {
  TokenPolicy tokens;
  Limits limits;
};

// One row of the table of settings: an option of the program and a member of /api/settings.
struct Setting {
  const char* name;         // the member; the option is the same with "-" for "_"
  const char* option_text;  // the option's values in --help
  const char* help;
  bool is_number;  // in JSON; other values are strings
  std::string (*read)(const Settings& settings);
  // False, without a change, if the setting cannot have this value.
  bool (*write)(const std::string& value, Settings* settings);
};

std::span<const Setting> AllSettings();

// The option of a setting, such as "--access-lifetime".
std::string OptionOf(const Setting& setting);

// All settings as one JSON object.
std::string SettingsJson(const Settings& settings);

// Changes the settings that a JSON object names. False, with one line in `error` and without a
// change, if a member is unknown or cannot have its value.
bool ParseSettings(const std::string& json, Settings* settings, std::string* error);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_CONTROL_SETTINGS_H_
