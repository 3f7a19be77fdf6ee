// Commands that run once, when the host has set up the program's folders.
//
// Threads: all of this belongs to one thread of the host.
#pragma once

#include <vector>

#include "kelp0lang/Export.h"
#include "kelp0lang/Singleton.h"

namespace kelp {

class KELP0LANG_API IRunOnceCommand {
 public:
  virtual ~IRunOnceCommand();
  // Doesn't throw.
  virtual void Run() = 0;
};

// The queue of the commands. It owns them until they have run; those that never run aren't deleted.
class KELP0LANG_API CRunOnceCommandMenager : public ISingleton {
 public:
  static CRunOnceCommandMenager& GetInstance();

  void Register(IRunOnceCommand* command);
  void Run();

 private:
  CRunOnceCommandMenager() = default;
  std::vector<IRunOnceCommand*> m_commands;
};

// Appends a command, which the queue then owns.
KELP0LANG_API void RegisterForRunOnce(IRunOnceCommand* command);

// Runs and deletes the queued commands in the order of their registration. A command that is
// registered meanwhile neither runs nor stays.
KELP0LANG_API void RunOnceCommands();

}  // namespace kelp
