// The doctor at a gateway in order, spoilt as doctor_cases.txt says.
#include "gateway/doctor.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>

#include "base/logging.h"
#include "devcloud/cloud.h"
#include "devcloud/fault_json.h"
#include "gateway/host.h"
#include "gateway/proxies.h"
#include "sql/connection.h"
#include "tests/program.h"

namespace gateway {
namespace {

class Patient {
 public:
  Patient() {
    umask(077);
    logging::SetLogMessageHandler([](auto...) { return true; });
    ForgetProxies();
    Spoil("run mkdir data");
    const auto host = Host::Start(options_.config_file, options_.components, &error_);
    EXPECT_EQ(host->accounts()->CreateUser("ann", cloud_->IssueCode("ann"), &error_), 1);
    database_.Open(FilePath(folder_.Path("data/account.db")));
  }

  void Spoil(const std::string& step) {
    const std::string line = Fill(step);
    const std::string what = line.substr(0, line.find(' '));
    const std::string text = line.substr(std::min(line.size(), what.size() + 1));
    const size_t arrow = text.find(" -> ");
    const std::string config = programs::ReadFile(options_.config_file);
    devcloud::Fault fault;
    bool good = true;
    if (what == "edit") {
      good = config.find(text.substr(0, arrow)) != config.npos;
      folder_.Write("config.xml",
                    programs::Replace(config, text.substr(0, arrow), text.substr(arrow + 4)));
    }
    if (what == "run") good = system(("cd " + folder_.Path("") + " && " + text).c_str()) == 0;
    if (what == "sql") good = database_.Execute(text.c_str());
    if (what == "try-refresh") options_.try_refresh = true;
    if (what == "refuse-cloud") cloud_->RefuseConnections(true);
    if (what == "clock") cloud_->AdvanceClock(std::chrono::seconds(std::stol(text)));
    if (what == "fault") good = devcloud::ParseFault(text, &fault, &error_);
    if (what == "fault") cloud_->AddFault(fault);
    EXPECT_TRUE(good) << line;
  }

  // The findings, a line "STATE NAME VALUE | ADVICE" for each; good ones only if they are expected.
  std::vector<std::string> Examine(const std::vector<std::string>& expected) {
    const std::string before = Snapshot();
    std::stringstream objects;
    const int status = RunDoctor(options_, objects);
    EXPECT_TRUE(options_.try_refresh || Snapshot() == before) << Snapshot() << before;
    std::vector<std::string> lines;
    std::map<std::string, int> counts{{"good", 0}, {"warning", 0}, {"bad", 0}};
    nlohmann::json object;
    for (std::string line; std::getline(objects, line);) {
      object = nlohmann::json::parse(line);
      if (object["type"] != "finding") continue;
      const std::string state = object["state"], name = object["name"], advice = object["advice"];
      const std::string value = object["value"].is_null() ? "-" : std::string(object["value"]);
      line = state + " " + name + " " + value + " | " + advice;
      for (const auto& [shown, real] : names_) line = programs::Replace(line, real, shown);
      ++counts[state];
      if (state != "good" || std::count(expected.begin(), expected.end(), line) > 0) {
        lines.push_back(line);
      }
    }
    for (const auto& [state, count] : counts) EXPECT_EQ(object[state], count) << state;
    EXPECT_EQ(status, counts["bad"] > 0 ? 3 : counts["warning"] > 0 ? 1 : 0);
    return lines;
  }

 private:
  std::string Fill(std::string text) const {
    for (const auto& [name, value] : names_) text = programs::Replace(text, name, value);
    return text;
  }

  std::string Snapshot() {
    Spoil("run find . -mindepth 1 ! -name snapshot -printf '%p %m %s %T@\\n' | sort >snapshot");
    return programs::ReadFile(folder_.Path("snapshot"));
  }

  std::string error_;
  const std::unique_ptr<devcloud::Cloud> cloud_ = devcloud::Cloud::Start({}, &error_);
  const programs::TestFolder folder_;
  const std::map<std::string, std::string> names_ = {{"$config", folder_.Path("config.xml")},
                                                     {"$data", folder_.Path("data")},
                                                     {"$cloud", cloud_->http_url()},
                                                     {"$https", cloud_->https_url()},
                                                     {"\\x1b", "\x1b"},
                                                     {"\\xff", "\xff"}};
  DoctorOptions options_{
      .config_file = folder_.Write("config.xml",
                                   Fill(programs::ReadFile(QORN_DOCTOR_DATA "doctor_config.xml"))),
      .components = {programs::Library("libqorn_account.so")},
      .json = true};
  sql::Connection database_;
};

TEST(Doctor, FindsWhatTheCasesTell) {
  std::istringstream cases(programs::ReadFile(QORN_DOCTOR_DATA "doctor_cases.txt") + "== \n");
  std::string title;
  std::unique_ptr<Patient> patient;
  std::vector<std::string> expected;
  for (std::string line; std::getline(cases, line);) {
    const std::string word = line.substr(0, line.find(' '));
    if (word == "==") {
      const auto found = patient ? patient->Examine(expected) : expected;
      EXPECT_EQ(found, expected) << title;
      title = line;
      patient = std::make_unique<Patient>();
      expected.clear();
    } else if (word == "good" || word == "warning" || word == "bad") {
      expected.push_back(line);
    } else if (patient) {
      patient->Spoil(line);
    }
  }
}

TEST(Doctor, WritesForPeopleAndPrograms) {
  const std::string no_file = "/no/file: cannot be read: No such file or directory";
  const std::pair<std::string, std::string> cases[] = {
      {"doctor --config /no/file",
       "Configuration\n  bad      config.file  /no/file\n           " + no_file +
           "; nothing else can be examined\n\n1 bad, 0 warnings, 0 good\n"},
      {"--config /no/file doctor --json",
       R"({"type":"finding","name":"config.file","state":"bad","value":"/no/file","advice":")" +
           no_file + R"(; nothing else can be examined"})" + "\n" +
           R"({"type":"summary","good":0,"warning":0,"bad":1})" + "\n"},
  };
  for (const auto& [arguments, output] : cases) {
    const programs::Ended ended = programs::RunProgram("qorn-gateway " + arguments);
    EXPECT_EQ(ended.status, 3) << arguments;
    EXPECT_EQ(ended.output, output);
    EXPECT_EQ(ended.errors, "");
  }
}

}  // namespace
}  // namespace gateway
