#include "crt/OpenStreams.h"

#include <atomic>
#include <map>
#include <mutex>

namespace {

// The mode letter "c" sets this bit. It says that reads and writes aren't points where a thread may
// be cancelled, which nothing else asks for: so it tells the binary streams of _wfopen, for as long
// as they live, without a list that would have to learn when they are closed.
constexpr const char* kBinaryMark = "bc";
constexpr int kBinaryBit = 2;

// The streams on top of others.
struct Streams {
  std::mutex mutex;
  std::map<std::FILE*, OpenStream> open;
  std::atomic<unsigned> changes{1};
};

// It outlives all threads and static objects, in which streams may be closed.
Streams& All() {
  static Streams& streams = *new Streams;
  return streams;
}

void Enter(std::FILE* file, const OpenStream& stream) {
  const std::lock_guard lock(All().mutex);
  All().open[file] = stream;
  ++All().changes;
}

void Leave(std::FILE* file) {
  const std::lock_guard lock(All().mutex);
  All().open.erase(file);
  ++All().changes;
}

}  // namespace

OpenStream Describe(std::FILE* file) {
  if ((file->_flags2 & kBinaryBit) != 0) return {StreamKind::kUnits, nullptr};
  // A thread goes on with one stream for many calls.
  struct Last {
    std::FILE* file;
    unsigned changes;
    OpenStream stream;
  };
  thread_local constinit Last last{};
  Streams& streams = All();
  if (last.file == file && last.changes == streams.changes) return last.stream;
  const std::lock_guard lock(streams.mutex);
  const auto found = streams.open.find(file);
  last = {file, streams.changes, found == streams.open.end() ? OpenStream() : found->second};
  return last.stream;
}

std::FILE* OpenBinary(const std::string& posixPath, const std::string& mode) {
  return std::fopen(posixPath.c_str(), (mode + kBinaryMark).c_str());
}

std::FILE* OpenOnTop(std::FILE* inner, const char* mode, StreamKind kind,
                     const cookie_io_functions_t& calls) {
  auto* const cookie = new StreamCookie{inner, nullptr};
  cookie->outer = fopencookie(cookie, mode, calls);
  if (cookie->outer == nullptr) {
    std::fclose(inner);
    delete cookie;
    return nullptr;
  }
  std::setvbuf(cookie->outer, nullptr, _IONBF, 0);
  Enter(cookie->outer, {kind, inner});
  return cookie->outer;
}

int CloseCookie(void* pointer) {
  const StreamCookie cookie = *static_cast<StreamCookie*>(pointer);
  delete static_cast<StreamCookie*>(pointer);
  Leave(cookie.outer);
  return std::fclose(cookie.inner);
}
