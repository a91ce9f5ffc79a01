#include "devcloud/tests/client.h"

#include <arpa/inet.h>
#include <curl/curl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

namespace devcloud {
namespace {

std::size_t OnHead(char* data, std::size_t size, std::size_t count, void* exchange) {
  static_cast<Exchange*>(exchange)->text.append(data, size * count);
  return size * count;
}

std::size_t OnBody(char* data, std::size_t size, std::size_t count, void* exchange) {
  std::size_t& largest = static_cast<Exchange*>(exchange)->largest_piece;
  largest = std::max(largest, size * count);
  return OnHead(data, size, count, exchange);
}

}  // namespace

std::unique_ptr<Cloud> StartCloud(const Options& options) {
  std::string error;
  auto cloud = Cloud::Start(options, &error);
  EXPECT_TRUE(cloud) << error;
  return cloud;
}

Exchange Send(const std::string& method, const std::string& url, const std::string& body,
              const std::vector<std::string>& header_lines) {
  const std::unique_ptr<CURL, void (*)(CURL*)> curl(curl_easy_init(), curl_easy_cleanup);
  curl_slist* lines = nullptr;
  for (const std::string& line : header_lines) lines = curl_slist_append(lines, line.c_str());
  Exchange exchange;
  curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_PROXY, "");
  curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl.get(), CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(curl.get(), CURLOPT_SSL_VERIFYPEER, 0L);
  curl_easy_setopt(curl.get(), CURLOPT_SSL_VERIFYHOST, 0L);
  curl_easy_setopt(curl.get(), CURLOPT_CUSTOMREQUEST, method.c_str());
  if (method != "GET") {
    curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDSIZE, static_cast<long>(body.size()));
    curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDS, body.data());
  }
  curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, lines);
  curl_easy_setopt(curl.get(), CURLOPT_HEADERFUNCTION, OnHead);
  curl_easy_setopt(curl.get(), CURLOPT_HEADERDATA, &exchange);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, OnBody);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &exchange);
  exchange.error = curl_easy_perform(curl.get());
  curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &exchange.status);
  curl_slist_free_all(lines);
  return exchange;
}

Connection::Connection(const std::string& url) : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const int port = std::stoi(url.substr(url.rfind(':') + 1));
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  EXPECT_EQ(connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0) << url;
}

Connection::~Connection() { close(socket_); }

void Connection::Write(const std::string& bytes) {
  for (std::size_t sent = 0; sent < bytes.size();) {
    const ssize_t size = send(socket_, &bytes[sent], bytes.size() - sent, MSG_NOSIGNAL);
    if (size <= 0) return;  // what is left of the answer tells
    sent += static_cast<std::size_t>(size);
  }
}

std::string Connection::ReadUntil(const std::string& end) {
  std::string text;
  char byte = 0;
  while ((end.empty() || !text.ends_with(end)) && recv(socket_, &byte, 1, 0) == 1) text += byte;
  return text;
}

}  // namespace devcloud
