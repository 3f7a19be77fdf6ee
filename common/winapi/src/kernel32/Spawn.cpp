#include "kernel32/Spawn.h"

#include <unistd.h>

#include <csignal>

namespace winapi {

Spawn::Spawn() {
  posix_spawn_file_actions_init(&actions);
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  AddFlags(0);
}

Spawn::~Spawn() {
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
}

void Spawn::AddFlags(short flags) {
  posix_spawnattr_setflags(&attributes, static_cast<short>(POSIX_SPAWN_SETSIGMASK | flags));
}

int Spawn::Start(const std::string& program, std::vector<std::string> arguments, pid_t& id) {
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  return posix_spawn(&id, program.c_str(), &actions, &attributes, pointers.data(), environ);
}

}  // namespace winapi
