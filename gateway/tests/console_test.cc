// The console with an account manager that answers from memory, played through console.transcript.
#include "gateway/console/console.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <regex>
#include <sstream>

#include "gateway/console/views.h"
#include "gateway/operations/event_listener.h"
#include "gateway/tests/fake_account_manager.h"

namespace gateway {
namespace {

class Scene {
 public:
  Scene() {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    UseStyle({});
  }

  // What a step of the transcript shows.
  std::string Play(const std::string& step) {
    out_.str("");
    const std::string line = step.substr(2);
    step[0] == '>' ? Execute(line) : Change(line);
    static const std::regex kTime("20[0-9-]{8} [0-9:]{8}");
    return std::regex_replace(out_.str(), kTime, "TIME");
  }

 private:
  void UseStyle(PrinterStyle style) {
    events_.reset();
    style.columns = [this] { return columns_; };
    printer_ = std::make_unique<Printer>(out_, out_, style);
    events_.emplace([this](const SeenEvent& event) {
      seen_ids_.NoteEvent(event);
      printer_->Show(EventRecord(event));
    });
    ConsoleServices services;
    UseAccounts(&accounts_, &services);
    services.facts.components = {"libqorn_account.so"};
    services.facts.account_server = "https://auth.example";
    services.watch = [this](std::optional<std::chrono::seconds> time) {
      out_ << "(watched " << (time ? std::to_string(time->count()) + " s" : "on") << ")\n";
    };
    services.free_space = [] { return ConsoleServices::FreeSpace{12 << 20, true}; };
    services.flush_events = [this] { ShowCalls(); };
    services.request_code = [](const std::string& user, std::string* code, std::string* error) {
      (user == "nobody" ? *error : *code) = "answer-to-" + user;
      return user != "nobody";
    };
    services.pause = [this](std::chrono::milliseconds) { return stop_; };
    console_ = std::make_unique<Console>(
        services, Console::Parts{printer_.get(), &activity_, &seen_ids_, &audit_});
  }

  void ShowCalls() {
    if (accounts_.calls.empty()) return;
    out_ << "-> " << accounts_.calls.back();
    if (accounts_.calls.size() > 1) out_ << ", " << accounts_.calls.size() << " times";
    out_ << "\n";
    accounts_.calls.clear();
  }

  void Execute(const std::string& line) {
    const Console::Outcome outcome = console_->Execute(line);
    ShowCalls();
    if (!outcome.error.empty()) out_ << "error: " << outcome.error << "\n";
    if (outcome.quit) out_ << "(quit)\n";
  }

  void Change(const std::string& line) {
    std::istringstream words(line);
    std::string what;
    words >> what;
    if (what == "answer") words >> accounts_.result;
    if (what == "polls") words >> accounts_.network_polls_left;
    if (what == "outputs") words >> accounts_.output_text;
    if (what == "escape-outputs") accounts_.output_text = "\x1b[2J";
    if (what == "show-secrets") UseStyle({.show_secrets = true});
    if (what == "json") UseStyle({.json = true});
    if (what == "stop") stop_ = true;
    if (what == "columns") words >> columns_;
    const std::string rest = line.substr(std::min(line.size(), what.size() + 1));
    if (what == "complete") {
      for (const std::string& word : console_->Complete(rest)) out_ << word << "\n";
    }
    if (what == "keep") out_ << (console_->MayBeKept(rest) ? "yes\n" : "no\n");
    if (what == "no-events") events_.reset();
    if (int number = 0; what == "event" && words >> number) {
      Publish(number, {std::istream_iterator<std::string>(words), {}});
      evt::EventManager::GetInstance()->Flush();
    }
  }

  FakeAccountManager accounts_;
  bool stop_ = false;
  size_t columns_ = 0;
  std::ostringstream out_;
  Activity activity_;
  SeenIds seen_ids_;
  Audit audit_;
  std::unique_ptr<Printer> printer_;
  std::optional<EventListener> events_;
  std::unique_ptr<Console> console_;
};

// What a step shows, as a row of the transcript has it.
std::string AsRow(const std::string& shown) {
  static const std::regex kLeftOut("(^|\\n)(-> |[a-z-]+: 1 Success\\n *(-> )?)");
  const std::string lines = std::regex_replace(shown, kLeftOut, "$1");
  std::string row = std::regex_replace(lines, std::regex("\\n *"), " | ");
  if (row.ends_with(" | ")) row.erase(row.size() - 3);
  return " => " + row;
}

TEST(Console, AnswersAsInTheTranscript) {
  std::ifstream transcript(QORN_CONSOLE_TRANSCRIPT);
  auto scene = std::make_unique<Scene>();
  std::string step, expected, played = "\n";
  for (std::string line; std::getline(transcript, line) || !step.empty();) {
    const bool begins = !transcript || line.starts_with("> ") || line.starts_with("! ");
    if ((begins || line.starts_with("== ")) && !step.empty()) {
      const size_t arrow = step.find(" => ");
      const std::string shown = scene->Play(step.substr(0, arrow));
      const std::string row = arrow == step.npos ? "" : step.substr(arrow);
      EXPECT_EQ(row.empty() ? shown : AsRow(shown), row + expected) << step;
      played += shown;
      step = expected = "";
    }
    if (begins) step = line;
    if (line.starts_with("== ")) scene = std::make_unique<Scene>();
    if (!step.empty() && !begins && !line.empty() && line[0] != '#') expected += line + "\n";
  }
  EXPECT_EQ(Operations().size(), 32U);
  for (const Operation& operation : Operations()) {
    EXPECT_NE(played.find(std::string("\n-> ") + operation.name + "("), played.npos)
        << operation.name;
  }
}

}  // namespace
}  // namespace gateway
