// What stands behind each type of handle; internal to the layer.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "wininet/InternetHandle.h"
#include "wininet/Transfer.h"

namespace winapi::internet {

struct Session : Object {
  Session() : Object(nullptr, {}) {}
  std::string agent;
  std::string proxies;
  std::string bypass;
};

struct Connection : Object {
  Connection(HINTERNET parent, std::shared_ptr<Session> of)
      : Object(parent, of->options), session(std::move(of)) {}
  const std::shared_ptr<Session> session;
  std::string server;
  INTERNET_PORT port = 0;
};

struct Request : Object {
  Request(HINTERNET parent, const Options& options) : Object(parent, options) {}

  // Takes the place of an earlier one.
  void Begin(std::unique_ptr<Transfer> next) {
    const std::lock_guard lock(m_mutex);
    transfer.swap(next);
    if (m_isAbandoned) transfer->Cancel();
  }
  void Abandon() override {
    const std::lock_guard lock(m_mutex);
    m_isAbandoned = true;
    if (transfer != nullptr) transfer->Cancel();
  }

  RequestPlan plan;
  std::unique_ptr<Transfer> transfer;  // null until it is sent
  bool isWriting = false;              // between HttpSendRequestExW and HttpEndRequestW

 private:
  std::mutex m_mutex;  // between sending and the closing of the handle
  bool m_isAbandoned = false;
};

}  // namespace winapi::internet
