// A folder with a configuration and the runtime that has read it.
#ifndef QORN_BENCH_HOME_H_
#define QORN_BENCH_HOME_H_

#include <map>
#include <string>

namespace bench {

// One at a time. The log goes to a file in the folder; what goes wrong in here ends the program.
class Home {
 public:
  // `changes` are configuration keys beside the usual ones or in their place.
  explicit Home(const std::map<std::string, std::string>& changes = {});
  ~Home();  // Ends the runtime; the folder is gone then.
  Home(const Home&) = delete;
  Home& operator=(const Home&) = delete;

  std::string Path(const std::string& name) const { return folder_ + "/" + name; }
  std::string database_path() const { return Path("account.db"); }

 private:
  // In $QORN_BENCH_FOLDER; without it in memory where there is one, so that writing costs least and
  // what is added shows most.
  std::string folder_;
};

// Ends the program with one line.
[[noreturn]] void Die(const std::string& message);
inline void Require(bool condition, const char* what) {
  if (!condition) Die(what);
}
inline void Expect(bool condition) { Require(condition, "an operation did not do what it should"); }

// What this process has in memory.
long ResidentBytes();

}  // namespace bench

#endif  // QORN_BENCH_HOME_H_
