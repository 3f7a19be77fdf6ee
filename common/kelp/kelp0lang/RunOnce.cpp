#include "kelp0lang/RunOnce.h"

#include <cstddef>

namespace kelp {
namespace {

constinit CRunOnceCommandMenager* instance = nullptr;

}  // namespace

IRunOnceCommand::~IRunOnceCommand() = default;

CRunOnceCommandMenager& CRunOnceCommandMenager::GetInstance() {
  if (instance == nullptr) instance = new CRunOnceCommandMenager;
  return *instance;
}

void CRunOnceCommandMenager::Register(IRunOnceCommand* command) {
  m_commands.push_back(command);
}

void CRunOnceCommandMenager::Run() {
  // By index: a command may register others, which moves the array.
  const std::size_t count = m_commands.size();
  for (std::size_t i = 0; i < count; ++i) {
    IRunOnceCommand* command = m_commands[i];
    command->Run();
    delete command;
  }
  m_commands.clear();
}

void RegisterForRunOnce(IRunOnceCommand* command) {
  CRunOnceCommandMenager::GetInstance().Register(command);
}

void RunOnceCommands() {
  CRunOnceCommandMenager::GetInstance().Run();
}

}  // namespace kelp
