#include "kelp0lang/PipeManager.h"

#include <utility>
#include <vector>

#include "kelp0lang/IniFile.h"
#include "kelp0lang/PinLibrary.h"

namespace {

constexpr DWORD kMostBytes = 65535;  // of a message
constexpr DWORD kPoll = 500;         // milliseconds between two looks at the pipe

HANDLE MakePipe(const WCHAR* name, DWORD direction) {
  constexpr DWORD kBuffer = 512;
  constexpr DWORD kTimeout = 1000;
  return CreateNamedPipeW(name, FILE_FLAG_WRITE_THROUGH | direction, PIPE_TYPE_MESSAGE,
                          PIPE_UNLIMITED_INSTANCES, kBuffer, kBuffer, kTimeout, nullptr);
}

void ClosePipe(HANDLE pipe) {
  if (pipe == INVALID_HANDLE_VALUE) return;
  DisconnectNamedPipe(pipe);
  CloseHandle(pipe);
}

}  // namespace

// A message on its way to the listeners.
struct CPipeManager::Delivery {
  CPipeManager& manager;
  TStubMessage message;
  std::shared_ptr<std::atomic<int>> count;

  void Run() {
    manager.NotifyListeners(message);
    --*count;
  }
  static DWORD WINAPI Main(LPVOID pointer) {
    const std::unique_ptr<Delivery> delivery(static_cast<Delivery*>(pointer));
    delivery->Run();
    return 0;
  }
};

CPipeManager::CPipeManager() : m_deliveries(std::make_shared<std::atomic<int>>(0)) {}

CPipeManager::~CPipeManager() {
  constexpr int kMostWaits = 5000;
  for (int i = 0; *m_deliveries > 0 && i < kMostWaits; ++i) Sleep(1);
}

void CPipeManager::AddListener(IStubAdminListener* listener) {
  const kelp::CCriticalSecLock lock(&m_lock);
  m_listeners.insert(listener);
}

void CPipeManager::RemoveListener(IStubAdminListener* listener) {
  const kelp::CCriticalSecLock lock(&m_lock);
  m_listeners.erase(listener);
}

void CPipeManager::NotifyListeners(const TStubMessage& message) {
  const kelp::CCriticalSecLock lock(&m_lock);
  // A listener that hears may leave.
  for (auto next = m_listeners.begin(); next != m_listeners.end();) {
    IStubAdminListener* const listener = *next;
    listener->OnMessage(message);
    next = m_listeners.upper_bound(listener);
  }
}

bool CPipeManager::WriteMessage(const TStubMessage& message, bool thenRead) {
  if (!DoWriteMessage(message)) return false;
  if (thenRead) StartRead();
  return true;
}

bool CPipeManager::DoWriteMessage(const TStubMessage& message) {
  const HANDLE pipe = GetWriteHandle();
  if (pipe == INVALID_HANDLE_VALUE) return false;
  const kelp::WString text = kelp::detail::StubMessageText(message);
  if (text.sizeInBytes() > kMostBytes) return false;
  DWORD written = 0;
  return WriteFile(pipe, text.c_str(), static_cast<DWORD>(text.sizeInBytes()), &written, nullptr) ==
         TRUE;
}

bool CPipeManager::StartRead() {
  const HANDLE pipe = GetReadHandle();
  if (pipe == INVALID_HANDLE_VALUE) return false;
  const int idleLimit = GetReadTimeout() / static_cast<int>(kPoll);
  m_reading = true;
  std::vector<char> buffer(kMostBytes);
  for (int idle = 0;;) {
    DWORD available = 1;
    if (idleLimit > 0) {
      char byte;
      if (!PeekNamedPipe(pipe, &byte, 1, nullptr, &available, nullptr)) return false;
    }
    if (available > 0) {
      DWORD count = 0;
      if (!ReadFile(pipe, buffer.data(), kMostBytes, &count, nullptr)) return false;
      idle = 0;
      for (TStubMessage& message : kelp::detail::ReadStubMessages(buffer.data(), count)) {
        Deliver(std::move(message));
      }
    } else if (++idle >= idleLimit) {
      return false;
    }
    Sleep(kPoll);
    if (!m_reading) return true;
  }
}

void CPipeManager::Deliver(TStubMessage&& message) {
  std::unique_ptr<Delivery> delivery(new Delivery{*this, std::move(message), m_deliveries});
  ++*m_deliveries;
  const HANDLE thread = kelp::detail::PinLibrary()
                            ? CreateThread(nullptr, 0, &Delivery::Main, delivery.get(), 0, nullptr)
                            : nullptr;
  if (thread == nullptr) {
    // Late is better than lost.
    delivery->Run();
    return;
  }
  delivery.release();
  CloseHandle(thread);
}

CPipeManager_Talv::CPipeManager_Talv() {
  m_hWrite = MakePipe(KTEXT("//./pipe/runas_server"), PIPE_ACCESS_OUTBOUND);
  m_hRead = MakePipe(KTEXT("//./pipe/runas_client"), PIPE_ACCESS_INBOUND);
}

CPipeManager_Talv::~CPipeManager_Talv() {
  ClosePipe(m_hWrite);
  ClosePipe(m_hRead);
}

int CPipeManager_Talv::GetReadTimeout() {
  constexpr short kSeconds = 60;
  return CIniFile().GetShort(KTEXT("CATASTO"), KTEXT("TimeOutPdf"), kSeconds) * 1000;
}
