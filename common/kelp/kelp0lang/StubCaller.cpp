#include "kelp0lang/StubCaller.h"

#include <windows.h>
// They need the one before.
#include <shellapi.h>
#include <shlwapi.h>

#include "kelp0lang/LegacyFlags.h"
#include "kelp0lang/SpecialFolder.h"
#include "kelp0lang/StringLoader.h"
#include "kelp0lang/SystemQuery.h"
#include "kelp0lang/Translate.h"

namespace {

constexpr unsigned kCaption = 102;
constexpr unsigned kNoRights = 103;

kelp::WString LibraryText(unsigned id) {
  const kelp::CStringLoader& loader = kelp::GetGlobalStringLoader();
  const int length = static_cast<int>(loader.GetStringLength(id));
  kelp::WString text;
  loader.LoadStr(id, text.GetBufferSetLength(length), length + 1);
  return kelp::Xlate(text.c_str());
}

bool IsConnected(HANDLE pipe) {
  return ConnectNamedPipe(pipe, nullptr) || GetLastError() == ERROR_PIPE_CONNECTED;
}

// Waits for the end of the helper while the pipes are being connected, and then connects them
// itself, so that nobody waits for one that can't come any more.
class EndWatch {
 public:
  explicit EndWatch(HANDLE helper) : m_helper(helper) {
    if (helper == nullptr) return;
    m_stop = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (m_stop != nullptr) m_thread = CreateThread(nullptr, 0, &Main, this, 0, nullptr);
  }
  EndWatch(const EndWatch&) = delete;
  EndWatch& operator=(const EndWatch&) = delete;
  ~EndWatch() {
    HasEnded();
    if (m_stop != nullptr) CloseHandle(m_stop);
  }
  // Stops watching.
  bool HasEnded() {
    if (m_thread != nullptr) {
      SetEvent(m_stop);
      WaitForSingleObject(m_thread, INFINITE);
      CloseHandle(m_thread);
      m_thread = nullptr;
    }
    return m_hasEnded;
  }

 private:
  static DWORD WINAPI Main(LPVOID pointer) {
    auto& watch = *static_cast<EndWatch*>(pointer);
    const HANDLE objects[] = {watch.m_stop, watch.m_helper};
    if (WaitForMultipleObjects(2, objects, FALSE, INFINITE) != WAIT_OBJECT_0 + 1) return 0;
    watch.m_hasEnded = true;
    const HANDLE ends[] = {Open(KTEXT("//./pipe/runas_server"), GENERIC_READ),
                           Open(KTEXT("//./pipe/runas_client"), GENERIC_WRITE)};
    // They stay until the waiting is over; a connection that is gone again isn't one.
    WaitForSingleObject(watch.m_stop, INFINITE);
    for (const HANDLE end : ends) {
      if (end != INVALID_HANDLE_VALUE) CloseHandle(end);
    }
    return 0;
  }
  static HANDLE Open(const WCHAR* pipe, DWORD access) {
    return CreateFileW(pipe, access, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  }

  const HANDLE m_helper;
  HANDLE m_stop = nullptr;
  HANDLE m_thread = nullptr;
  bool m_hasEnded = false;  // read when the thread has ended
};

// A handle of its process, null where there is none.
bool StartHelper(const kelp::WString& parameters, HANDLE& helper) {
  const kelp::WString path = kelp::GetProgramFolderPath(IsModIta() ? KTEXT("TalveraAdmin.exe")
                                                                   : KTEXT("OstrandAdmin.exe"));
  SHELLEXECUTEINFOW info = {};
  info.cbSize = sizeof info;
  info.fMask = SEE_MASK_NOCLOSEPROCESS;
  info.lpFile = path.c_str();
  info.lpParameters = parameters.c_str();
  info.nShow = SW_SHOW;
  if (!ShellExecuteExW(&info)) return false;
  helper = info.hProcess;
  return true;
}

}  // namespace

CStubAdminCaller::CStubAdminCaller() : m_pipes(std::make_unique<CPipeManager_Talv>()) {}

CStubAdminCaller::~CStubAdminCaller() = default;

CStubAdminCaller* CStubAdminCaller::GetInstance() {
  static CStubAdminCaller* const instance = new CStubAdminCaller;
  return instance;
}

void CStubAdminCaller::SetParams(const kelp::WString& first, const kelp::WString& second) {
  m_firstParam = first;
  m_secondParam = second;
}

bool CStubAdminCaller::ExecuteCommand(IStubAdminListener* listener, const TStubMessage& message) {
  // Two readers would take each other's answers, and one of them wait for what the other has read.
  if (m_busy.exchange(true)) return false;
  // Also where there is no memory for the command.
  const auto notBusy = [](std::atomic<bool>* busy) { *busy = false; };
  const std::unique_ptr<std::atomic<bool>, decltype(notBusy)> scope(&m_busy, notBusy);
  return Talk(listener, message);
}

bool CStubAdminCaller::Talk(IStubAdminListener* listener, const TStubMessage& message) {
  if (!Connect()) return false;
  m_pipes->AddListener(listener);
  const bool written = m_pipes->WriteMessage(message, true);
  m_pipes->RemoveListener(listener);
  return written;
}

bool CStubAdminCaller::ExecuteCommand(IStubAdminListener* listener, enumStubCommand command) {
  return ExecuteCommand(listener, TStubMessage{command, {}});
}

bool CStubAdminCaller::IsUacEnabled() {
  unsigned long major = 0;
  if (GetOSVersion(major) && major < 6) return true;  // it has none
  DWORD enabled = 0;
  DWORD size = sizeof enabled;
  const LSTATUS result = SHGetValueW(
      HKEY_LOCAL_MACHINE, KTEXT("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Policies\\System"),
      KTEXT("EnableLUA"), nullptr, &enabled, &size);
  return result == ERROR_SUCCESS && enabled != 0;
}

bool CStubAdminCaller::Connect() {
  if (!IsAdmin() && !IsUacEnabled()) {
    const kelp::WString text = LibraryText(kNoRights);
    MessageBoxW(GetForegroundWindow(), text.c_str(), LibraryText(kCaption).c_str(),
                MB_OK | MB_ICONEXCLAMATION);
    return false;
  }
  if (m_connected) return true;
  HANDLE helper = nullptr;
  if (!StartHelper(m_firstParam + KTEXT(";") + m_secondParam.c_str(), helper)) return false;
  m_connected = ConnectPipes(helper);
  if (helper != nullptr) CloseHandle(helper);
  if (!m_connected) {
    // Another helper finds pipes that listen again.
    m_pipes.reset();
    m_pipes = std::make_unique<CPipeManager_Talv>();
  }
  return m_connected;
}

bool CStubAdminCaller::ConnectPipes(HANDLE helper) {
  constexpr int kLimit = 2000;  // milliseconds in which an attempt may begin
  constexpr DWORD kPause = 500;
  const HANDLE ends[] = {m_pipes->GetWriteHandle(), m_pipes->GetReadHandle()};
  EndWatch watch(helper);
  const DWORD start = GetTickCount();
  bool connected = false;
  while (!connected && static_cast<int>(GetTickCount() - start) < kLimit) {
    connected = IsConnected(ends[0]) && IsConnected(ends[1]);
    if (!connected) Sleep(kPause);
  }
  return connected && !watch.HasEnded();
}

bool CServiceStubCaller::InstallService(const kelp::WString& name, const kelp::WString& displayName,
                                        const kelp::WString& path, bool openAccess) {
  const TStubMessage message = {stubInstallService, {name, displayName, path, openAccess}};
  return CStubAdminCaller::GetInstance()->ExecuteCommand(this, message) && m_result;
}

void CServiceStubCaller::OnMessage(const TStubMessage& message) {
  if (message.command != stubResult || message.values.size() != 1) return;
  if (message.values[0].GetInt32Value() == 0) m_result = true;
  CStubAdminCaller::GetInstance()->StopRead();
}

void CServiceStubCaller::SendResponse(const TStubMessage&) {}
