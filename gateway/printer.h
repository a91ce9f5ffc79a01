// What the gateway writes for people: whole lines, from any thread.
#ifndef QORN_GATEWAY_PRINTER_H_
#define QORN_GATEWAY_PRINTER_H_

#include <ostream>
#include <string>
#include <vector>

#include "base/lock.h"
#include "base/thread_annotations.h"

namespace gateway {

// One output of an operation, or one string of an event's payload.
struct Field {
  std::string name;
  std::vector<std::string> values;  // one, or as many as a list has
  bool secret = false;              // a token or an authorisation code
};

// Thread-safe: a block of lines is written at once and flushed.
class Printer {
 public:
  // Borrows both streams.
  Printer(std::ostream& out, std::ostream& err, bool show_secrets);
  Printer(const Printer&) = delete;
  Printer& operator=(const Printer&) = delete;

  void Say(const std::string& text);
  void Error(const std::string& text);  // to the error stream, after the program's name
  // The head, then each value on a line of its own after its name; secrets are shortened unless
  // they are shown.
  void Block(const std::string& head, const std::vector<Field>& fields);

  // While a prompt is shown, a line first wipes it and then makes `wake_fd` (an eventfd, borrowed)
  // readable, so that its owner draws it again.
  void PromptShown(int wake_fd);
  void PromptHidden();

  bool show_secrets() const { return show_secrets_; }

 private:
  void Write(std::ostream& stream, const std::string& lines);

  std::ostream& out_;
  std::ostream& err_;
  const bool show_secrets_;
  base::Lock lock_;
  int wake_fd_ GUARDED_BY(lock_) = -1;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_PRINTER_H_
