#include "kernel32/PipeInstance.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#include "Fail.h"

namespace winapi {
namespace {

// The names that this process has, each until its last instance goes.
struct OwnNames {
  std::mutex mutex;
  std::map<std::string, std::shared_ptr<PipeRecord>> records;
};

// It outlives all threads and static objects.
OwnNames& Names() {
  static OwnNames& names = *new OwnNames;
  return names;
}

// Calls bind or connect with the address of a path.
template <class Call>
bool AtPath(Call call, int socket, const std::string& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  return call(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

Descriptor Socket() {
  return Descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

std::optional<ucred> PeerOf(int connection) {
  ucred peer;
  socklen_t size = sizeof peer;
  if (getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return std::nullopt;
  return peer;
}

bool IsOfThisUser(int connection) {
  const auto peer = PeerOf(connection);
  return peer && peer->uid == geteuid();
}

Descriptor Listen(const std::string& path) {
  Descriptor listener = Socket();
  if (listener >= 0 && AtPath(bind, listener, path) && listen(listener, 1) == 0) return listener;
  return Fail(ERROR_ACCESS_DENIED, Descriptor());
}

std::size_t CountUsed(const PipeTerms& terms) {
  const auto unused =
      std::count(std::begin(terms.instances), std::end(terms.instances), PipeState::kUnused);
  return std::size(terms.instances) - static_cast<std::size_t>(unused);
}

// Why there can't be one more instance; 0 where there can.
DWORD Refusal(const PipeTerms& present, const PipeTerms& wanted, bool mustBeFirst) {
  if (CountUsed(present) == 0) return 0;
  if (mustBeFirst || present.access != wanted.access) return ERROR_ACCESS_DENIED;
  return CountUsed(present) >= present.maxInstances ? ERROR_PIPE_BUSY : 0;
}

bool Listens(const PipeTerms& terms) {
  const auto* const end = std::end(terms.instances);
  return std::find(std::begin(terms.instances), end, PipeState::kListening) != end;
}

}  // namespace

PipeInstance::PipeInstance(std::string name, std::shared_ptr<PipeRecord> record, std::size_t number,
                           Descriptor listener)
    : m_name(std::move(name)),
      m_record(std::move(record)),
      m_number(number),
      m_listener(std::move(listener)) {}

std::unique_ptr<PipeInstance> PipeInstance::Make(const std::string& name, const PipeTerms& terms,
                                                 bool mustBeFirst) {
  const std::lock_guard lock(Names().mutex);
  auto& records = Names().records;
  const auto found = records.find(name);
  std::shared_ptr<PipeRecord> record;
  if (found != records.end()) {
    record = found->second;
  } else {
    record = PipeRecord::Own(name);
    if (record == nullptr) return nullptr;
  }

  PipeRecord::Locked locked(*record);
  PipeTerms& present = locked.terms;
  if (const DWORD error = Refusal(present, terms, mustBeFirst)) return Fail(error, nullptr);
  if (CountUsed(present) == 0) present = terms;
  const auto* const free =
      std::find(std::begin(present.instances), std::end(present.instances), PipeState::kUnused);
  const auto number = static_cast<std::size_t>(free - present.instances);
  Descriptor listener = Listen(record->SocketPath(number));
  if (listener < 0) return nullptr;
  present.instances[number] = PipeState::kListening;
  records[name] = record;
  return std::unique_ptr<PipeInstance>(new PipeInstance(name, record, number, std::move(listener)));
}

PipeInstance::~PipeInstance() {
  const std::lock_guard lock(Names().mutex);
  {
    PipeRecord::Locked locked(*m_record);
    locked.terms.instances[m_number] = PipeState::kUnused;
    unlink(m_record->SocketPath(m_number).c_str());
    if (CountUsed(locked.terms) == 0) Names().records.erase(m_name);
  }
  // Before another thread looks for the name.
  m_record.reset();
}

PipeState PipeInstance::State() const {
  return PipeRecord::Locked(*m_record).terms.instances[m_number];
}

void PipeInstance::SetState(PipeState state) const {
  PipeRecord::Locked locked(*m_record);
  locked.terms.instances[m_number] = state;
}

void PipeInstance::ListenAgain() const {
  PipeRecord::Locked locked(*m_record);
  PipeState& state = locked.terms.instances[m_number];
  if (state == PipeState::kDisconnected) state = PipeState::kListening;
}

void PipeInstance::AwaitClient() const {
  pollfd wanted = {m_listener, POLLIN, 0};
  poll(&wanted, 1, -1);
}

Descriptor PipeInstance::Accept() const {
  Descriptor connection(accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC));
  if (connection < 0) return connection;
  const bool isWelcome = IsOfThisUser(connection);
  SetState(isWelcome ? PipeState::kConnected : PipeState::kListening);
  return isWelcome ? std::move(connection) : Descriptor();
}

Descriptor ConnectToPipe(const std::string& name, DWORD access) {
  const auto record = PipeRecord::Find(name);
  if (record == nullptr) return Descriptor();
  PipeRecord::Locked locked(*record);
  PipeTerms& terms = locked.terms;
  if (!record->HasOwner()) return Fail(ERROR_FILE_NOT_FOUND, Descriptor());
  if ((access & ~terms.access) != 0) return Fail(ERROR_ACCESS_DENIED, Descriptor());
  for (std::size_t i = 0; i < std::size(terms.instances); ++i) {
    if (terms.instances[i] != PipeState::kListening) continue;
    Descriptor connection = Socket();
    if (connection < 0 || !AtPath(connect, connection, record->SocketPath(i))) continue;
    if (!IsOfThisUser(connection)) return Fail(ERROR_ACCESS_DENIED, Descriptor());
    terms.instances[i] = PipeState::kConnected;
    fcntl(connection, F_SETFL, fcntl(connection, F_GETFL) & ~O_NONBLOCK);
    return connection;
  }
  return Fail(ERROR_PIPE_BUSY, Descriptor());
}

bool AwaitPipe(const std::string& name, DWORD milliseconds) {
  using Clock = std::chrono::steady_clock;
  // Nobody tells when the file changes, so it is looked at again and again.
  constexpr std::chrono::milliseconds kPause(5);
  constexpr DWORD kUsualWait = 50;
  const auto start = Clock::now();
  for (;;) {
    const auto record = PipeRecord::Find(name);
    if (record == nullptr) return false;
    if (!record->HasOwner()) return Fail(ERROR_FILE_NOT_FOUND, false);
    const PipeTerms terms = PipeRecord::Locked(*record).terms;
    if (Listens(terms)) return true;
    DWORD limit = milliseconds;
    if (limit == NMPWAIT_USE_DEFAULT_WAIT) limit = terms.timeout != 0 ? terms.timeout : kUsualWait;
    const bool isOver = Clock::now() - start >= std::chrono::milliseconds(limit);
    if (limit != NMPWAIT_WAIT_FOREVER && isOver) return Fail(ERROR_SEM_TIMEOUT, false);
    std::this_thread::sleep_for(kPause);
  }
}

std::optional<DWORD> PeerProcess(int connection) {
  const auto peer = PeerOf(connection);
  if (!peer) return std::nullopt;
  return static_cast<DWORD>(peer->pid);
}

}  // namespace winapi
