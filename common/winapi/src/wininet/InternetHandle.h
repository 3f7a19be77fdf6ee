// The objects behind the handles of WinINet; internal to the layer.
//
// A handle that is closed leaves the table, with those under it; who uses its object keeps it until
// the call has ended.
#pragma once

#include <windows.h>
#include <wininet.h>

#include <memory>
#include <mutex>
#include <string>

namespace winapi::internet {

// Milliseconds of silence; 0 is without end.
struct TimeOuts {
  DWORD connect = 60'000;
  DWORD send = 30'000;
  DWORD receive = 30'000;
};

struct Account {
  std::string user;
  std::string password;
};

// What an object hands to those that are opened under it.
struct Options {
  TimeOuts timeOuts;
  Account account;
  Account proxyAccount;
};

class Object {
 public:
  Object(HINTERNET parent, const Options& options) : parent(parent), options(options) {}
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object() = default;

  // Its handle has been closed, on any thread: what waits for something of it ends.
  virtual void Abandon() {}

  const HINTERNET parent;  // null of a session
  Options options;
};

HINTERNET AddObject(std::shared_ptr<Object> object);
// Null, and ERROR_INVALID_HANDLE, where there is none.
std::shared_ptr<Object> FindObject(HINTERNET handle);
// Null, and the error, also where it is of another type.
template <class T>
std::shared_ptr<T> Find(HINTERNET handle) {
  const auto object = FindObject(handle);
  auto found = std::dynamic_pointer_cast<T>(object);
  if (object != nullptr && found == nullptr) SetLastError(ERROR_INTERNET_INCORRECT_HANDLE_TYPE);
  return found;
}
bool CloseObject(HINTERNET handle);

std::string ToUtf8(LPCWSTR text);
std::string ToUtf8(const WCHAR* text, std::size_t size);

}  // namespace winapi::internet
