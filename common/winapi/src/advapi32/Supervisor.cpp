#include "advapi32/Supervisor.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "advapi32/ServiceFolder.h"
#include "advapi32/ServiceMessages.h"
#include "advapi32/ServiceProcess.h"
#include "advapi32/ServiceState.h"
#include "kernel32/PathName.h"

namespace winapi {
namespace {

using Clock = std::chrono::steady_clock;
using Deadline = Clock::time_point;
constexpr Deadline kNever = Deadline::max();

constexpr DWORD kFirstHint = 2'000;  // milliseconds, until the service says otherwise

Deadline In(int milliseconds) {
  return Clock::now() + std::chrono::milliseconds(milliseconds);
}
bool HasPassed(Deadline deadline) {
  return Clock::now() >= deadline;
}

// The kernel chooses a name that nobody has; nothing is left of it.
Descriptor Listen(ServiceRecord& record) {
  Descriptor listener = Raised(Descriptor(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)));
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  auto* const any = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener, any, sizeof address.sun_family) != 0) return Descriptor();
  socklen_t size = sizeof address;
  getsockname(listener, any, &size);
  const std::size_t length = size - offsetof(sockaddr_un, sun_path) - 1;
  if (length >= sizeof record.address || listen(listener, SOMAXCONN) != 0) return Descriptor();
  std::memcpy(record.address, address.sun_path + 1, length);
  return listener;
}

// Who controls, while the service takes the control.
struct Caller {
  Descriptor connection;
  DWORD number;
  Deadline limit;
};

class Supervisor {
 public:
  Supervisor(ServicePlace place, std::vector<std::string> arguments, Descriptor report)
      : m_place(std::move(place)), m_arguments(std::move(arguments)), m_report(std::move(report)) {}
  void Run();

 private:
  DWORD Begin();
  bool Claim();
  void Watch();
  int TimeLeft() const;
  void TakeDeadlines();
  void TakeStatus();
  void TakeAnswer();
  void TakeCaller();
  DWORD Admit(int connection, DWORD control) const;
  void Answer(DWORD error);
  void HandOver();
  void Say(DWORD startError);
  void Kill() const { kill(m_process.id, SIGKILL); }

  const ServicePlace m_place;
  const std::vector<std::string> m_arguments;
  Descriptor m_report;
  std::string m_name;
  std::optional<ServiceState> m_state;
  ServiceRecord m_record = {};
  Descriptor m_listener;
  ServiceProcess m_process;
  std::optional<Caller> m_caller;
  DWORD m_number = 0;
  Deadline m_startLimit = kNever;
  Deadline m_endLimit = kNever;
};

void Supervisor::Run() {
  const DWORD error = Begin();
  if (error != ERROR_SUCCESS) {
    Say(error);
    return;
  }
  m_startLimit = In(kAnswerLimit);
  Watch();
  waitpid(m_process.id, nullptr, 0);
  TakeStatus();
  const bool hasStarted = m_report < 0;
  if (m_record.status.dwCurrentState != SERVICE_STOPPED) {
    m_record = StoppedRecord(hasStarted ? ERROR_PROCESS_ABORTED : ERROR_SERVICE_REQUEST_TIMEOUT);
    m_state->Write(m_record);
    Answer(ERROR_PROCESS_ABORTED);
  }
  m_state.reset();
  RemoveIfUnused(m_place);
  Say(ERROR_SERVICE_REQUEST_TIMEOUT);
}

// From here on the service is as the record says; a start that fails leaves its error there.
DWORD Supervisor::Begin() {
  const DWORD error = ServiceState::Open(m_place, true, m_state);
  if (error != ERROR_SUCCESS) return error;
  m_record = StoppedRecord(ERROR_SUCCESS);
  m_record.status.dwCurrentState = SERVICE_START_PENDING;
  m_record.status.dwWaitHint = kFirstHint;
  m_record.supervisor = static_cast<DWORD>(getpid());
  m_listener = Listen(m_record);
  if (m_listener < 0) return ERROR_TOO_MANY_OPEN_FILES;
  if (!Claim()) return ERROR_SERVICE_ALREADY_RUNNING;
  InstalledService service;
  DWORD failed = ReadService(m_place, service);
  if (failed == ERROR_SUCCESS) failed = StartRefusal(service.terms);
  m_name = ToUtf8(service.terms.name);
  if (failed == ERROR_SUCCESS) failed = BecomeOwner(service.owner);
  if (failed == ERROR_SUCCESS) failed = StartProgram(service, m_process);
  if (failed != ERROR_SUCCESS) {
    m_state->Write(StoppedRecord(failed));
    return failed;
  }
  m_record.process = static_cast<DWORD>(m_process.id);
  m_state->Write(m_record);
  return ERROR_SUCCESS;
}

// The one before may be at its end still, which isn't for a caller to see.
bool Supervisor::Claim() {
  constexpr useconds_t kPause = 10'000;
  for (const Deadline limit = In(kAnswerLimit); !m_state->Claim(m_record);) {
    if (m_state->Status().dwCurrentState != SERVICE_STOPPED || HasPassed(limit)) return false;
    usleep(kPause);
  }
  return true;
}

void Supervisor::Watch() {
  for (;;) {
    // A closed descriptor isn't looked at.
    pollfd wanted[] = {{m_process.status, POLLIN, 0},
                       {m_process.control, POLLIN, 0},
                       {m_caller ? -1 : int{m_listener}, POLLIN, 0},
                       {m_process.ended, POLLIN, 0}};
    if (poll(wanted, std::size(wanted), TimeLeft()) < 0 && errno != EINTR) return;
    if (wanted[0].revents != 0) TakeStatus();
    if (wanted[1].revents != 0) TakeAnswer();
    if (wanted[2].revents != 0) TakeCaller();
    if (wanted[3].revents != 0) return;
    TakeDeadlines();
  }
}

// For poll, until the next deadline.
int Supervisor::TimeLeft() const {
  const Deadline next = std::min({m_startLimit, m_endLimit, m_caller ? m_caller->limit : kNever});
  if (next == kNever) return -1;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now());
  return static_cast<int>(std::max<std::int64_t>(left.count(), 0));
}

void Supervisor::TakeDeadlines() {
  if (m_caller && HasPassed(m_caller->limit)) Answer(ERROR_SERVICE_REQUEST_TIMEOUT);
  if (!HasPassed(m_startLimit) && !HasPassed(m_endLimit)) return;
  Kill();
  m_startLimit = kNever;
  m_endLimit = kNever;
}

// All that the program has said, up to its end.
void Supervisor::TakeStatus() {
  for (;;) {
    SERVICE_STATUS status;
    const ssize_t count = recv(m_process.status, &status, sizeof status, MSG_DONTWAIT);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && (errno == EAGAIN || errno == EBADF)) return;
    if (count != sizeof status) {
      m_process.status = Descriptor();
      return;
    }
    if (m_record.status.dwCurrentState != SERVICE_STOPPED) {
      m_record.status = status;
      if (status.dwCurrentState == SERVICE_STOPPED) {
        m_record.status.dwControlsAccepted = 0;
        m_record.process = 0;
      }
      m_state->Write(m_record);
    }
    const DWORD done = ERROR_SUCCESS;
    send(m_process.status, &done, sizeof done, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (status.dwCurrentState != SERVICE_STOPPED || m_endLimit != kNever) continue;
    // That ends the program's wait for controls.
    m_process.control = Descriptor();
    m_endLimit = In(kEndLimit);
    Answer(ERROR_SUCCESS);
  }
}

void Supervisor::TakeAnswer() {
  ProgramAnswer answer;
  const ssize_t count = recv(m_process.control, &answer, sizeof answer, MSG_DONTWAIT);
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
  if (count != sizeof answer) {
    m_process.control = Descriptor();
    return;
  }
  if (answer.number == 0) {
    HandOver();
  } else if (m_caller && m_caller->number == answer.number) {
    // What the program has said before it answered comes first.
    TakeStatus();
    Answer(answer.result);
  }
}

// The program is ready for its service.
void Supervisor::HandOver() {
  if (m_startLimit == kNever) return;
  m_startLimit = kNever;
  std::string block = m_name + '\0';
  for (const std::string& argument : m_arguments) block += argument + '\0';
  send(m_process.control, block.data(), block.size(), MSG_NOSIGNAL);
  Say(ERROR_SUCCESS);
}

void Supervisor::TakeCaller() {
  constexpr timeval kPatience = {1, 0};
  Descriptor connection = Raised(Descriptor(accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC)));
  if (connection < 0) return;
  setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof kPatience);
  DWORD control = 0;
  if (recv(connection, &control, sizeof control, 0) != sizeof control) return;
  const DWORD refused = Admit(connection, control);
  m_caller.emplace(Caller{std::move(connection), ++m_number, In(kAnswerLimit)});
  if (refused != ERROR_SUCCESS) return Answer(refused);
  const ProgramControl message = {m_number, control};
  if (send(m_process.control, &message, sizeof message, MSG_NOSIGNAL | MSG_DONTWAIT) < 0) {
    Answer(ERROR_SERVICE_REQUEST_TIMEOUT);
  }
}

// Whether a control may be sent, by the rights of who asks for it and by what the service takes.
DWORD Supervisor::Admit(int connection, DWORD control) const {
  const ControlRule* const rule = RuleOf(control);
  ucred peer = {};
  socklen_t size = sizeof peer;
  InstalledService service;
  if (rule == nullptr || getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 ||
      ReadService(m_place, service) != ERROR_SUCCESS) {
    return ERROR_ACCESS_DENIED;
  }
  const bool mayAll = peer.uid == 0 || peer.uid == service.owner;
  if (!mayAll && (RightsOf(AccountOf(peer.uid), service.terms) & rule->right) == 0) {
    return ERROR_ACCESS_DENIED;
  }
  switch (m_record.status.dwCurrentState) {
    case SERVICE_STOPPED:
      return ERROR_SERVICE_NOT_ACTIVE;
    case SERVICE_START_PENDING:
    case SERVICE_STOP_PENDING:
      return ERROR_SERVICE_CANNOT_ACCEPT_CTRL;
    default:
      return (m_record.status.dwControlsAccepted & rule->accepted) == rule->accepted
                 ? ERROR_SUCCESS
                 : ERROR_INVALID_SERVICE_CONTROL;
  }
}

void Supervisor::Answer(DWORD error) {
  if (!m_caller) return;
  const ControlAnswer answer = {error, m_record.status};
  send(m_caller->connection, &answer, sizeof answer, MSG_NOSIGNAL | MSG_DONTWAIT);
  m_caller.reset();
}

void Supervisor::Say(DWORD startError) {
  if (m_report < 0) return;
  WriteBytes(m_report, &startError, sizeof startError);
  m_report = Descriptor();
}

}  // namespace

int RunSupervisor(int count, char** arguments) {
  if (count < 3) return 2;
  Descriptor report = Raised(Descriptor(kReportEnd));
  if (report < 0) return 2;
  // What the caller had open isn't this program's.
  for (int own = kReportEnd + 1; own < report; ++own) close(own);
  close_range(static_cast<unsigned>(report) + 1, ~0U, 0);
  const pid_t child = fork();
  if (child != 0) return child < 0 ? 1 : 0;
  // Nobody may be there any more to hear.
  signal(SIGPIPE, SIG_IGN);
  Supervisor({arguments[1], arguments[2]}, {arguments + 3, arguments + count}, std::move(report))
      .Run();
  return 0;
}

}  // namespace winapi
