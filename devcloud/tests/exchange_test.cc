// What the cloud answers, played through exchanges.txt, which tells how it is written.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>

#include "devcloud/tests/client.h"

namespace devcloud {
namespace {

class Player {
 public:
  Player() {
    Options options;
    options.nts.presence_server = "p<&>";
    options.access_token_lifetime = std::chrono::seconds(77);
    cloud_ = StartCloud(options);
    values_["$cloud"] = cloud_->http_url();
    values_["$host"] = cloud_->http_url().substr(sizeof("http://") - 1);
    for (int i = 0; i < 200'000; ++i) values_["$deep"] += "<a>";
  }

  void Play(const std::string& line) {
    const std::string what = TakeWord(line, &rest_);
    std::string text;
    const std::string name = TakeWord(rest_, &text);
    if (what == "set") values_["$" + name] = text;
    if (what == "code") values_["$" + name] = cloud_->IssueCode(text);
    if (what == "clock") cloud_->AdvanceClock(std::chrono::seconds(std::stoi(name)));
    if (what == "gateway") cloud_->AddGateway(name);
    if (what == "header") header_lines_.push_back(Fill(rest_));
    if (std::isupper(what[0]) != 0) {
      seen_ = Send(what, cloud_->http_url() + Fill(name), Fill(text), header_lines_);
      header_lines_.clear();
    }
    if (std::isdigit(what[0]) != 0) {
      EXPECT_EQ(std::to_string(seen_.status), what) << seen_.text;
    }
    if (what == "has" || what == "not" || what == "ends") {
      const std::string part = Fill(rest_);
      const bool found = seen_.text.find(part) != std::string::npos;
      EXPECT_TRUE(what == "ends" ? seen_.text.ends_with(part) : found == (what == "has"))
          << seen_.text;
    }
    if (what == "take") Take(name, text);
  }

 private:
  static std::string TakeWord(const std::string& line, std::string* rest) {
    const std::size_t blank = std::min(line.find(' '), line.size());
    const std::string word = line.substr(0, blank);
    *rest = line.substr(std::min(blank + 1, line.size()));
    return word;
  }

  // The longest name that stands there counts; a value may hold other names.
  std::string Fill(std::string text) const {
    for (std::size_t at = text.find('$'); at != text.npos; at = text.find('$', at)) {
      const auto named = std::find_if(values_.rbegin(), values_.rend(), [&](const auto& value) {
        return text.compare(at, value.first.size(), value.first) == 0;
      });
      if (named == values_.rend()) throw std::runtime_error("no name in " + text.substr(at, 20));
      text.replace(at, named->first.size(), named->second);
    }
    return text;
  }

  // Gateways put codes and tokens into forms and XML as they are.
  void Take(const std::string& name, const std::string& key) {
    const std::size_t begin = seen_.text.find("\"" + key + "\":\"") + key.size() + 4;
    const std::string value = seen_.text.substr(begin, seen_.text.find('"', begin) - begin);
    EXPECT_EQ(value.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-"), value.npos);
    values_["$" + name] = value;
  }

  std::unique_ptr<Cloud> cloud_;
  std::map<std::string, std::string> values_;
  std::vector<std::string> header_lines_;
  std::string rest_;
  Exchange seen_;
};

TEST(Exchanges, AreAnsweredAsTheyAreWritten) {
  std::ifstream file(QORN_DEVCLOUD_EXCHANGES);
  std::unique_ptr<Player> player;
  int number = 0;
  for (std::string line; std::getline(file, line);) {
    const testing::ScopedTrace place("exchanges.txt", ++number, line);
    if (line.starts_with("== ")) player = std::make_unique<Player>();
    const std::size_t begin = line.find_first_not_of(' ');
    if (begin != line.npos && line[begin] != '#') player->Play(line.substr(begin));
  }
  EXPECT_GT(number, 100);
}

}  // namespace
}  // namespace devcloud
