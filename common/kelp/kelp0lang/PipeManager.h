// The two pipes between a program and its elevated helper: one to write messages, one to read them.
//
//   CPipeManager_Talv pipes;  // makes both, before the helper starts
//   pipes.AddListener(&listener);
//   if (pipes.WriteMessage(message, true)) ...  // returns when a listener has called StopRead
//   pipes.RemoveListener(&listener);
//
// A message is one write of its whole text (StubMessage.h), of no more than 65,535 bytes, which is
// what the other side takes in one read. All failures are false; the outcome of a command is known
// to the listener alone.
//
// Threads: writing and reading block the calling thread, and only one does either at a time. Each
// message that comes in is delivered on a thread of its own, under the lock of the listeners. A
// listener may leave, and call StopRead, while it hears; RemoveListener comes back when nobody
// hears any more. From the first message on the library stays loaded until the process ends.
#pragma once

#include <windows.h>

#include <atomic>
#include <memory>
#include <set>

#include "kelp0lang/CriticalSec.h"
#include "kelp0lang/Export.h"
#include "kelp0lang/StubMessage.h"

class KELP0LANG_API CPipeManager {
 public:
  CPipeManager();
  CPipeManager(const CPipeManager&) = delete;
  CPipeManager& operator=(const CPipeManager&) = delete;

  // INVALID_HANDLE_VALUE where there is none.
  virtual HANDLE GetWriteHandle() = 0;
  virtual HANDLE GetReadHandle() = 0;
  // How long StartRead waits for the next message, in milliseconds. Below 500 for ever, without
  // looking at StopRead meanwhile.
  virtual int GetReadTimeout() = 0;

  // Listeners aren't owned. One is there once, however often it is added.
  void AddListener(IStubAdminListener* listener);
  void RemoveListener(IStubAdminListener* listener);
  // On the calling thread, in the order of their addresses.
  void NotifyListeners(const TStubMessage& message);

  // False where the message couldn't be written. With thenRead StartRead follows, whatever comes of
  // it.
  bool WriteMessage(const TStubMessage& message, bool thenRead);
  // Delivers what comes until StopRead, with true, or until nothing has come for the time of
  // GetReadTimeout or the pipe has broken. It looks twice a second.
  bool StartRead();
  // Ends StartRead, from any thread.
  void StopRead() { m_reading = false; }

 protected:
  // The owner deletes the concrete kind. Waits for messages that are being heard, for up to 5
  // seconds: at the end of a process their threads may have been ended by the system.
  ~CPipeManager();

  HANDLE m_hWrite = INVALID_HANDLE_VALUE;
  HANDLE m_hRead = INVALID_HANDLE_VALUE;

 private:
  struct Delivery;
  using Listeners = std::set<IStubAdminListener*>;

  bool DoWriteMessage(const TStubMessage& message);
  void Deliver(TStubMessage&& message);

  std::atomic<bool> m_reading = false;
  Listeners m_listeners;
  kelp::CCriticalSec m_lock;                       // of the listeners
  std::shared_ptr<std::atomic<int>> m_deliveries;  // threads that still use this object
};

// The pipes of the family's helper, "//./pipe/runas_server" to write and "//./pipe/runas_client" to
// read; this process is their server. Where one couldn't be made, everything that needs it fails.
class KELP0LANG_API CPipeManager_Talv final : public CPipeManager {
 public:
  CPipeManager_Talv();
  // Disconnects and closes.
  ~CPipeManager_Talv();

  HANDLE GetWriteHandle() override { return m_hWrite; }
  HANDLE GetReadHandle() override { return m_hRead; }
  // The program's own setting "TimeOutPdf" of the section "CATASTO", in seconds; 60 by default.
  int GetReadTimeout() override;
};
