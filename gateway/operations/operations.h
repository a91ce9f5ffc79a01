// The operations of the account interface, described once: console, bus, audit and documents take
// names, arguments, outputs, results and rights from this table. It knows none of them.
#ifndef QORN_GATEWAY_OPERATIONS_OPERATIONS_H_
#define QORN_GATEWAY_OPERATIONS_OPERATIONS_H_

#include <string>
#include <vector>

#include "core_fw/account/include/account_manager.h"
#include "gateway/operations/parameters.h"
#include "gateway/operations/rights.h"
#include "gateway/output/records.h"

namespace gateway {

// What the outputs hold before a call, for a caller that has to know which of them were written.
struct Unwritten {
  std::string text;  // in every text and, unless it is empty, as the one entry of every list
  bool flag = false;
};

// What an operation answered.
struct Answer {
  Unwritten unwritten;  // set before the call
  int code = kAccountSuccess;
  // The code is a state and not a result: any value of it is a good answer.
  bool is_status = false;
  // All outputs on success; on failure those that were written, and the flag.
  std::vector<Field> outputs;
};

// The slowest thing that an operation waits for.
enum class Backend { kMemory, kDatabase, kCloud };

struct Operation {
  using Invoker = bool (*)(const Operation& operation, AccountManager& accounts,
                           const std::vector<std::string>& words, Answer* answer,
                           std::string* error);

  const char* name;   // as in account_manager.h
  const char* group;  // "Users", "Sessions", "Friends" or "Gateway"
  // Of a caller from outside; RightNeeded knows the one operation that may need another.
  Right right;
  Backend backend;
  const char* help;  // one line
  // In the interface's order, with the shape of each in the vector behind.
  std::vector<Parameter> arguments;
  std::vector<Field::Shape> argument_shapes;
  std::vector<Parameter> outputs;
  std::vector<Field::Shape> output_shapes;
  // The result codes that it can answer; none for an operation that answers a state.
  std::vector<int> results;
  Invoker invoke;  // call it through Call

  // Calls the operation with one word for each argument. False, without a call and with one line in
  // `error`, when a word that must be a number is not one. Any thread.
  bool Call(AccountManager& accounts, const std::vector<std::string>& words, Answer* answer,
            std::string* error) const;
};

// In the interface's order.
const std::vector<Operation>& Operations();

// Null when the interface has no operation of this name.
const Operation* FindOperation(const std::string& name);

// The right that a call with these words needs: two types of GetUserInfoByType read a token.
Right RightNeeded(const Operation& operation, const std::vector<std::string>& words);

}  // namespace gateway

#endif  // QORN_GATEWAY_OPERATIONS_OPERATIONS_H_
