// The operations of the account interface as console commands: one table.
#ifndef QORN_GATEWAY_OPERATIONS_OPERATIONS_H_
#define QORN_GATEWAY_OPERATIONS_OPERATIONS_H_

#include <string>
#include <vector>

#include "core_fw/account/include/account_manager.h"
#include "gateway/console/commands.h"
#include "gateway/output/records.h"

namespace gateway {

// What the outputs hold before a call, for a caller that looks which of them were written.
struct Unwritten {
  std::string text;  // in every text and, unless it is empty, as the one entry of every list
  bool flag = false;
};

// What an operation answered.
struct Answer {
  Unwritten unwritten;  // set before the call
  int code = kAccountSuccess;
  // A state rather than a result: any value of it is a good answer.
  bool is_status = false;
  // All outputs on success; on failure those that were written, and the flag.
  std::vector<Field> outputs;
};

// The arguments stand in the interface's order.
struct Operation : CommandInfo {
  // Calls the operation with as many words as there are argument names. False, without a call and
  // with one line in `error`, when a word that must be a number is none. Any thread.
  bool (*call)(AccountManager& accounts, const std::vector<std::string>& words, Answer* answer,
               std::string* error);
};

// In the interface's order.
const std::vector<Operation>& Operations();

// Null when no operation has the name or alias.
const Operation* FindOperation(const std::string& name);

}  // namespace gateway

#endif  // QORN_GATEWAY_OPERATIONS_OPERATIONS_H_
