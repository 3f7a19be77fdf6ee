// Getting something done with administrator rights: the helper is started, told a command, and
// heard.
//
//   CServiceStubCaller caller;
//   if (!caller.InstallService(KTEXT("fieldwatch"), KTEXT("Field watch"), path, true)) ...
//
// The helper is "TalveraAdmin.exe" or "OstrandAdmin.exe" (IsModIta) in the program's folder. It
// comes by its rights itself, opens the pipes of CPipeManager_Talv and stays for further commands.
//
// Threads: the pipes carry one conversation, so a command while another runs, be it a listener's,
// is refused. A listener hears on a thread of its own.
#pragma once

#include <atomic>
#include <memory>

#include "kelp0lang/Export.h"
#include "kelp0lang/PipeManager.h"
#include "kelp0lang/Singleton.h"
#include "kelp0lang/String.h"
#include "kelp0lang/StubMessage.h"

class KELP0LANG_API CStubAdminCaller : public kelp::ISingleton {
 public:
  // The pipes are made at the first call.
  static CStubAdminCaller* GetInstance();

  // What the helper is told when it is started: "first;second", in its command line.
  void SetParams(const kelp::WString& first, const kelp::WString& second);

  // Starts the helper where it hasn't been yet, sends the command and returns when the listener, or
  // anybody, calls StopRead, or nothing has come for the time of the pipes. False where the helper
  // can't be started or reached, or while another command runs; the outcome of the command is the
  // listener's to hear. A user without rights whose account can't get any is told so, and that is
  // false too.
  bool ExecuteCommand(IStubAdminListener* listener, const TStubMessage& message);
  // A command without values.
  bool ExecuteCommand(IStubAdminListener* listener, enumStubCommand command);
  void StopRead() { m_pipes->StopRead(); }

 private:
  CStubAdminCaller();
  ~CStubAdminCaller() override;

  bool Talk(IStubAdminListener* listener, const TStubMessage& message);
  bool Connect();
  bool IsUacEnabled();
  bool ConnectPipes(HANDLE helper);

  std::unique_ptr<CPipeManager_Talv> m_pipes;
  bool m_connected = false;  // and stays so
  kelp::WString m_firstParam;
  kelp::WString m_secondParam;
  std::atomic<bool> m_busy = false;  // while a command runs
};

// Has the helper install a service.
class KELP0LANG_API CServiceStubCaller : public IStubAdminListener {
 public:
  // The service's name, the name to show, the path of its program, and whether its access list is
  // opened. True when the helper has answered that it went well. One object that has seen a success
  // goes on to give true.
  bool InstallService(const kelp::WString& name, const kelp::WString& displayName,
                      const kelp::WString& path, bool openAccess);

  // The result of the command, one int; other messages are passed over.
  void OnMessage(const TStubMessage& message) override;
  void SendResponse(const TStubMessage& message) override;

 private:
  bool m_result = false;
};
