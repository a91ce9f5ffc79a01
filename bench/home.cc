#include "bench/home.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "base/logging.h"
#include "runtime/runtime.h"

namespace bench {
namespace {

std::string MakeFolder() {
  const char* wanted = std::getenv("QORN_BENCH_FOLDER");
  const bool in_memory = std::filesystem::is_directory("/dev/shm");
  std::string name = wanted != nullptr ? wanted : in_memory ? "/dev/shm" : "/tmp";
  name += "/qorn-bench-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) Die("cannot make a folder for the measurement");
  return name;
}

}  // namespace

void Die(const std::string& message) {
  std::fprintf(stderr, "bench: %s\n", message.c_str());
  std::exit(2);
}

long ResidentBytes() {
  long pages = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  return resident * sysconf(_SC_PAGESIZE);
}

Home::Home(const std::map<std::string, std::string>& changes) : folder_(MakeFolder()) {
  std::map<std::string, std::string> config{{"qorn_storage_path", folder_ + "/"},
                                            {"account_db_path", "account.db"},
                                            {"OAuth_AsClient_app_name", "qorn-gateway"},
                                            {"OAuth_AsClient_app_id", "gateway-client"},
                                            {"OAuth_AsClient_app_secret", "gateway-secret"},
                                            {"account_device_type_code", "HGW"},
                                            {"account_device_model_id", "QG-1"},
                                            {"account_device_physical_address_text", "AABBCC"},
                                            {"account_service", "ACCOUNT"},
                                            {"account_server_type", "NTS"},
                                            {"account_zep_auth_url", "http://127.0.0.1:1"},
                                            {"account_user_portal_url", "http://127.0.0.1:1"},
                                            {"account_qor_device_name", "Home"},
                                            {"account_enable_MIRLO_network_setting", "off"}};
  for (const auto& [key, value] : changes) config[key] = value;
  {
    std::ofstream out(Path("config.xml"));
    out << "<config>\n";
    for (const auto& [key, value] : config)
      out << "<" << key << ">" << value << "</" << key << ">\n";
    out << "</config>\n";
  }
  if (!logging::SetLogFile(Path("log"))) Die("cannot write a log");
  std::string error;
  if (runtime::Runtime::Create(Path("config.xml"), &error) == nullptr) Die(error);
}

Home::~Home() {
  runtime::Runtime::Destroy();
  logging::SetLogFile("");
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

}  // namespace bench
