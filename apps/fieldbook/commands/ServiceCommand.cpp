// fieldbook service: the service fieldwatch, installed, started, stopped and asked about.
#include <windows.h>
// Needs windows.h before it.
#include <winsvc.h>

#include <iterator>
#include <memory>
#include <optional>
#include <type_traits>

#include "fieldbook/commands/Commands.h"
#include "fieldbook/watch/WatchService.h"
#include "kelp0lang/ServiceControl.h"
#include "kelp0lang/StubCaller.h"
#include "kelp0lang/SystemQuery.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {

const WChar* const kServiceHelp = KTEXT(
    "Usage: fieldbook service install FROM TO\n"
    "       fieldbook service start|stop|status|remove\n"
    "\n"
    "Drives fieldwatch, a service that copies the points files that appear in the\n"
    "folder FROM into the folder TO, once all their rows can be read.\n"
    "\n"
    "  install FROM TO  installs the service; every user may then start and stop it.\n"
    "                   Where that takes an administrator's rights, the elevated\n"
    "                   helper beside this program does it\n"
    "  start, stop      starts or stops it, and waits until it has\n"
    "  status           says whether it runs\n"
    "  remove           stops it and takes it away\n"
    "\n"
    "What it has copied, and what it hasn't and why, stands in fieldwatch.log of the\n"
    "folder TO. A file that it replaces stays beside the new one as FILE.bak.\n"
    "\n"
    "Exit status: 0 done, 1 not done.\n");

namespace {

struct Closer {
  void operator()(SC_HANDLE handle) const { CloseServiceHandle(handle); }
};
using Handle = std::unique_ptr<std::remove_pointer_t<SC_HANDLE>, Closer>;

Handle OpenWatch(DWORD access) {
  const Handle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
  return Handle(OpenServiceW(manager.get(), kWatchName, access));
}

[[noreturn]] void Fail(const WChar* source) {
  throw Failure({source, {kWatchName}});
}

// What the library does, which prints how it goes on.
template <class Work>
bool Talking(const Work& work) {
  const WideOutputScope output;
  return work();
}

void RequireInstalled() {
  if (!IsTalvServiceInstalled(kWatchName)) Fail(KTEXT("{1} isn't installed"));
}

SERVICE_STATUS_PROCESS RequireStatus() {
  SERVICE_STATUS_PROCESS status = {};
  DWORD needed = 0;
  RequireInstalled();
  const Handle service = OpenWatch(SERVICE_QUERY_STATUS);
  if (!QueryServiceStatusEx(service.get(), SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status),
                            sizeof status, &needed)) {
    Fail(KTEXT("{1} can't be asked"));
  }
  return status;
}

void RequireFolder(const Argument& folder) {
  std::error_code error;
  if (std::filesystem::is_directory(folder.path, error)) return;
  throw Failure({KTEXT("{1}: this isn't a folder"), {Shown(folder.text)}});
}

// Who has no rights asks the helper, which has them.
bool InstallThroughHelper(const WString& command) {
  if (IsAdmin()) return false;
  CServiceStubCaller caller;
  return caller.InstallService(kWatchName, kelp::Xlate(kWatchDisplayName), command, true);
}

void Install(const std::vector<Argument>& operands, Console&) {
  const Argument& from = operands[1];
  const Argument& to = operands[2];
  RequireFolder(from);
  RequireFolder(to);
  std::error_code error;
  if (std::filesystem::equivalent(from.path, to.path, error)) {
    throw UsageFailure({KTEXT("FROM and TO are one folder"), {}});
  }
  if (IsTalvServiceInstalled(kWatchName)) Fail(KTEXT("{1} is installed already"));
  const WString command = WatchCommand(from.path, to.path);
  const bool isInstalled = Talking([&command] {
    return InstallTalvService(kWatchName, kelp::Xlate(kWatchDisplayName), command, true);
  });
  if (isInstalled) return;
  if (InstallThroughHelper(command)) return;
  Fail(KTEXT("{1} can't be installed; that takes the rights of an administrator"));
}

void Start(const std::vector<Argument>&, Console&) {
  RequireInstalled();
  Talking([] { return StartTalvService(kWatchName); });
  if (RequireStatus().dwCurrentState != SERVICE_RUNNING) Fail(KTEXT("{1} doesn't run"));
}

void Stop(const std::vector<Argument>&, Console&) {
  RequireInstalled();
  Talking([] { return StopTalvService(kWatchName); });
  if (RequireStatus().dwCurrentState != SERVICE_STOPPED) Fail(KTEXT("{1} hasn't stopped"));
}

void TellStatus(const std::vector<Argument>&, Console& console) {
  const SERVICE_STATUS_PROCESS status = RequireStatus();
  const auto number = [](DWORD value) { return WString::ValueOf(static_cast<int>(value)); };
  Message message = {KTEXT("{1} is starting or stopping"), {kWatchName}};
  if (status.dwCurrentState == SERVICE_RUNNING) {
    message = {KTEXT("{1} runs as process {2}"), {kWatchName, number(status.dwProcessId)}};
  } else if (status.dwWin32ExitCode == ERROR_SERVICE_NEVER_STARTED) {
    message = {KTEXT("{1} is installed and hasn't run yet"), {kWatchName}};
  } else if (status.dwCurrentState == SERVICE_STOPPED) {
    message = {KTEXT("{1} doesn't run; it ended with {2}"),
               {kWatchName, number(status.dwWin32ExitCode)}};
  }
  console.PrintLine(message.Text());
}

void Remove(const std::vector<Argument>& operands, Console& console) {
  if (RequireStatus().dwCurrentState != SERVICE_STOPPED) Stop(operands, console);
  const Handle service = OpenWatch(DELETE);
  if (service == nullptr || !DeleteService(service.get())) Fail(KTEXT("{1} can't be removed"));
}

struct Action {
  const WChar* name;
  std::size_t operands;
  void (*run)(const std::vector<Argument>& operands, Console& console);
};
constexpr Action kActions[] = {{KTEXT("install"), 3, Install},
                               {KTEXT("start"), 1, Start},
                               {KTEXT("stop"), 1, Stop},
                               {KTEXT("status"), 1, TellStatus},
                               {KTEXT("remove"), 1, Remove}};

}  // namespace

Status ServiceCommand(const CommandLine& line, Console& console) {
  const std::vector<Argument>& operands = line.Operands();
  if (operands.empty()) {
    throw UsageFailure({KTEXT("{1} takes one of {2}"), {line.Command(), NamesOf(kActions)}});
  }
  for (const Action& action : kActions) {
    if (operands[0].text.Compare(action.name) != 0) continue;
    if (operands.size() == action.operands) {
      action.run(operands, console);
      return kDone;
    }
    throw UsageFailure(action.operands == 1
                           ? Message{KTEXT("service {1} takes nothing more"), {action.name}}
                           : Message{KTEXT("service {1} takes FROM and TO"), {action.name}});
  }
  FailOnChoice(KTEXT("service"), operands[0].text, NamesOf(kActions));
}

}  // namespace fieldbook
