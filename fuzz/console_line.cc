// Lines typed at the gateway's console.
#include <clocale>
#include <sstream>

#include "base/json_reader.h"
#include "fuzz/fuzz.h"
#include "gateway/console/console.h"
#include "gateway/console/views.h"
#include "gateway/console/words.h"
#include "gateway/output/text.h"
#include "gateway/tests/fake_account_manager.h"

namespace gateway {
namespace {

constexpr char kCode[] = "c0de-0f-the-cl0ud";

// Keeps the secrets that operations were called with.
class Accounts : public FakeAccountManager {
 public:
  AccountResult CreateUser(Text a, Text b, Out x) override {
    return secrets += b, FakeAccountManager::CreateUser(a, b, x);
  }
  AccountResult SignIn(Text a, Text b, Out x, Out y, bool* failed) override {
    return secrets += b, FakeAccountManager::SignIn(a, b, x, y, failed);
  }
  AccountResult SignInAlt(Text a, Text b, Out x, Out y) override {
    return secrets += b, FakeAccountManager::SignInAlt(a, b, x, y);
  }
  AccountResult AddFriendRequest(Text a, Text b, Text c, Text d, Text e, Text f, Out x) override {
    return secrets += b + c, FakeAccountManager::AddFriendRequest(a, b, c, d, e, f, x);
  }
  AccountResult CheckSessionValidation(Text) override { return result; }

  std::string secrets;
};

// A console after the code of a user was fetched.
class Scene {
 public:
  explicit Scene(const PrinterStyle& style) : printer_(out_, out_, style) {
    ConsoleServices services;
    UseAccounts(&accounts, &services);
    services.flush_events = [this] { accounts.calls.clear(); };
    services.request_code = [](const std::string& user, std::string* code, std::string* error) {
      (user == "nobody" ? *error : *code) = user == "nobody" ? "\x1b[2J" : kCode;
      return user != "nobody";
    };
    services.pause = [](std::chrono::milliseconds) { return true; };
    services.watch = [](std::optional<std::chrono::seconds>) {};
    console = std::make_unique<Console>(services,
                                        Console::Parts{&printer_, &activity_, &seen_ids_, &audit_});
    console->Execute("request-code alice");
  }

  std::string Execute(const std::string& line) {
    out_.str("");
    const Console::Outcome outcome = console->Execute(line);
    if (!outcome.error.empty()) printer_.Error(outcome.error, "script", 1);
    return out_.str();
  }

  Accounts accounts;
  std::unique_ptr<Console> console;

 private:
  std::ostringstream out_;
  Activity activity_;
  SeenIds seen_ids_;
  Audit audit_;
  Printer printer_;
};

void CheckShown(const std::string& shown, const PrinterStyle& style) {
  std::istringstream lines(shown);
  for (std::string line; std::getline(lines, line);) {
    fuzz::Require(!HasControlCharacter(line), "nothing shown steers a terminal");
    fuzz::Require(!style.json || base::JSONReader::Read(line), "each line is JSON");
    fuzz::Require(style.show_secrets || line.find(kCode) == std::string::npos,
                  "no secret is shown");
  }
}

// A line that the history may keep gives operations only such secrets as variables held.
void CheckKept(const std::string& line) {
  Scene scene({});
  if (!scene.console->MayBeKept(line)) return;
  scene.Execute(line);
  std::string typed = scene.accounts.secrets;
  for (std::size_t at = 0; (at = typed.find(kCode)) != std::string::npos;) {
    typed.erase(at, sizeof(kCode) - 1);
  }
  fuzz::Require(typed.empty(), "no kept line holds a typed secret");
}

void CheckSplit(const std::string& line) {
  std::vector<std::string> words;
  std::string error;
  const bool good = SplitWords(line, {}, &words, &error);
  fuzz::Require(good == error.empty() && !HasControlCharacter(error), "an error is one line");
  for (const std::string& word : words) {
    fuzz::Require(!HasControlCharacter(word), "no word holds a control character");
  }
}

void CheckCompleted(const std::string& line, const Console& console) {
  const std::string beginning = line.substr(LastWordStart(line));
  for (const std::string& word : console.Complete(line)) {
    fuzz::Require(word.rfind(beginning, 0) == 0, "a completion goes on as the word began");
    std::vector<std::string> words;
    std::string error;
    fuzz::Require(word[0] == '$' || (SplitWords(word, {}, &words, &error) && words.size() == 1),
                  "a completion is one word");
  }
}

// The first byte chooses style and result, the first line is what operations give.
void Run(const std::string& input) {
  if (input.empty() || input.find(kCode) != std::string::npos) return;
  PrinterStyle style;
  style.json = (input[0] & 1) != 0;
  style.show_secrets = (input[0] & 2) != 0;
  Scene scene(style);
  if ((input[0] & 4) != 0) scene.accounts.result = kAccountFailure;
  std::istringstream lines(input.substr(1));
  std::getline(lines, scene.accounts.output_text);
  for (std::string line; std::getline(lines, line);) {
    CheckSplit(line);
    CheckKept(line);
    CheckCompleted(line, *scene.console);
    CheckShown(scene.Execute(line), style);
  }
}

}  // namespace
}  // namespace gateway

void fuzz::Run(const std::string& input) {
  std::setlocale(LC_CTYPE, "C.UTF-8");
  gateway::Run(input);
}
