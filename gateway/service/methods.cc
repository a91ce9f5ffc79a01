#include "gateway/service/methods.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "bus/connection.h"
#include "bus/names.h"
#include "gateway/operations/lists.h"
#include "gateway/operations/result_names.h"

namespace gateway {
namespace {

constexpr char kResultPrefix[] = "kAccount";

std::string SignatureOf(Field::Shape shape) {
  if (shape == Field::Shape::kNumber) return "i";
  return shape == Field::Shape::kList ? "as" : "s";
}

bool IsToken(const std::string& name) {
  return name == parameter::kAccessToken.name || name == parameter::kRefreshToken.name;
}

// The flag of SignIn becomes an error, so no reply has it.
std::vector<Method::Value> ValuesOf(const std::vector<Parameter>& parameters,
                                    const std::vector<Field::Shape>& shapes) {
  std::vector<Method::Value> values;
  for (size_t i = 0; i < parameters.size(); ++i) {
    if (shapes[i] == Field::Shape::kFlag) continue;
    values.push_back({parameters[i].name, SignatureOf(shapes[i])});
  }
  return values;
}

Outcome RunOperation(const Operation& operation, AccountManager& accounts, const Words& words) {
  Outcome outcome;
  Answer answer;
  std::string error;
  operation.Call(accounts, words, &answer, &error);
  outcome.code = answer.code;
  for (Field& output : answer.outputs) {
    if (output.shape == Field::Shape::kFlag) {
      outcome.unreachable = output.values.at(0) == "true";
    } else if (answer.code == kAccountSuccess) {
      outcome.outputs.push_back(std::move(output));
    }
  }
  if (answer.is_status) outcome = {.outputs = {NumberField("status", answer.code)}};
  for (Field& output : outcome.outputs) {
    // Tokens are handed out one by one, to those who may read them.
    if (IsToken(output.name)) output.values = {""};
    for (std::string& value : output.values) value = bus::ToUtf8(value);
  }
  return outcome;
}

int AppendOutputs(const Outcome& outcome, sd_bus_message* reply) {
  int result = 0;
  for (size_t i = 0; i < outcome.outputs.size() && result >= 0; ++i) {
    result = AppendOutput(reply, outcome.outputs[i]);
  }
  return result;
}

Method MethodOf(const Operation& operation) {
  Method method{.name = operation.name,
                .group = operation.group,
                .takes = ValuesOf(operation.arguments, operation.argument_shapes),
                .gives = ValuesOf(operation.outputs, operation.output_shapes),
                .right = operation.right,
                .backend = operation.backend,
                .operation = &operation,
                .run =
                    [&operation](const Sources& sources, const Words& words) {
                      return RunOperation(operation, *sources.accounts, words);
                    },
                .append = &AppendOutputs};
  // A state is what the operation returns.
  if (operation.results.empty()) method.gives = {{"status", "i"}};
  return method;
}

// A list's rows without what its signature does not have.
void TakeRows(const FieldRows& fields, const Words& columns, std::vector<Words>* rows) {
  for (const std::vector<Field>& row : fields) {
    Words& words = rows->emplace_back();
    for (const Field& field : row) {
      const bool is_column = std::find(columns.begin(), columns.end(), field.name) != columns.end();
      if (is_column) words.push_back(bus::ToUtf8(field.values.at(0)));
    }
  }
}

int AppendText(sd_bus_message* reply, const std::string& text) {
  return sd_bus_message_append_basic(reply, 's', text.c_str());
}

int AppendTexts(sd_bus_message* reply, const Words& texts) {
  int result = sd_bus_message_open_container(reply, 'a', "s");
  for (size_t i = 0; i < texts.size() && result >= 0; ++i) result = AppendText(reply, texts[i]);
  return result >= 0 ? sd_bus_message_close_container(reply) : result;
}

int AppendRows(sd_bus_message* reply, const std::string& members, const std::vector<Words>& rows) {
  int result = sd_bus_message_open_container(reply, 'a', ("(" + members + ")").c_str());
  for (size_t i = 0; i < rows.size() && result >= 0; ++i) {
    result = sd_bus_message_open_container(reply, 'r', members.c_str());
    for (size_t j = 0; j < rows[i].size() && result >= 0; ++j) {
      result = AppendText(reply, rows[i][j]);
    }
    if (result >= 0) result = sd_bus_message_close_container(reply);
  }
  return result >= 0 ? sd_bus_message_close_container(reply) : result;
}

using ListReader = AccountResult (*)(AccountManager& accounts, const Words& words, FieldRows* rows);

// Rows of the UUIDs and what the operation reads of the last of them.
Method ListOf(const char* name, const char* information, const char* rows_name, Words columns,
              ListReader read) {
  const Operation& operation = *FindOperation(information);
  for (const Parameter& output : operation.outputs) {
    if (!IsToken(output.name)) columns.emplace_back(output.name);
  }
  const std::string members(columns.size(), 's');
  return {.name = name,
          .group = operation.group,
          .takes = {},
          .gives = {{rows_name, "a(" + members + ")"}},
          .right = Right::kLook,
          .backend = Backend::kDatabase,
          .run =
              [read, columns](const Sources& sources, const Words& words) {
                FieldRows rows;
                Outcome outcome;
                outcome.code = read(*sources.accounts, words, &rows);
                TakeRows(rows, columns, &outcome.rows);
                return outcome;
              },
          .append =
              [members](const Outcome& outcome, sd_bus_message* reply) {
                return AppendRows(reply, members, outcome.rows);
              }};
}

// It reads files and looks at each session, so it is not the bus's thread that does it.
Method MetricsMethod() {
  return {.name = "Metrics",
          .group = "Gateway",
          .takes = {},
          .gives = {{"text", "s"}},
          .right = Right::kLook,
          .backend = Backend::kDatabase,
          .run =
              [](const Sources& sources, const Words& /*words*/) {
                return Outcome{.outputs = {{.name = "text", .values = {sources.metrics()}}}};
              },
          .append = &AppendOutputs};
}

std::vector<Method> MakeMethods() {
  std::vector<Method> methods;
  for (const Operation& operation : Operations()) methods.push_back(MethodOf(operation));
  methods.push_back(ListOf("ListUsers", "GetUserInformation", "users", {"user_uuid"},
                           [](AccountManager& accounts, const Words& /*words*/, FieldRows* rows) {
                             return ReadUsers(accounts, rows);
                           }));
  methods.push_back(ListOf("ListFriends", "GetFriendInformation", "friends",
                           {"user_uuid", "friend_uuid"},
                           [](AccountManager& accounts, const Words& words, FieldRows* rows) {
                             return ReadFriends(accounts, words.at(0), rows);
                           }));
  methods.back().takes = {{"user_uuid", "s"}};
  methods.push_back(MetricsMethod());
  return methods;
}

}  // namespace

Right Method::RightFor(const Words& words) const {
  return operation == nullptr ? right : RightNeeded(*operation, words);
}

const std::vector<Method>& Methods() {
  static const std::vector<Method> methods = MakeMethods();
  return methods;
}

const Method* FindMethod(const char* group, const char* name) {
  static const auto by_name = [] {
    std::unordered_map<std::string_view, const Method*> index;
    for (const Method& method : Methods()) index.emplace(method.name, &method);
    return index;
  }();
  const auto found = by_name.find(name);
  return found != by_name.end() && found->second->group == group ? found->second : nullptr;
}

std::string ErrorName(const Outcome& outcome) {
  if (outcome.unreachable) return bus::kUnreachable;
  std::string name = ResultName(outcome.code);
  // A code that no operation has.
  if (name.empty()) name = ResultName(kAccountFailure);
  return bus::kErrorPrefix + name.substr(std::strlen(kResultPrefix));
}

int AppendOutput(sd_bus_message* reply, const Field& output) {
  if (output.shape == Field::Shape::kList) return AppendTexts(reply, output.values);
  if (output.shape == Field::Shape::kText) return AppendText(reply, output.values.at(0));
  int number = 0;
  ParseInt(output.values.at(0), &number);
  return sd_bus_message_append_basic(reply, 'i', &number);
}

}  // namespace gateway
