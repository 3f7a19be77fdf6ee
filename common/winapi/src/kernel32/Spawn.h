// Starting a program; internal to the layer.
#pragma once

#include <spawn.h>
#include <sys/types.h>

#include <string>
#include <vector>

namespace winapi {

// How a program is to begin: with this one's environment, with none of its blocked signals, and
// with what a caller adds to the two.
class Spawn {
 public:
  Spawn();
  ~Spawn();
  Spawn(const Spawn&) = delete;
  Spawn& operator=(const Spawn&) = delete;

  // Adds to POSIX_SPAWN_SETSIGMASK.
  void AddFlags(short flags);
  // The arguments begin with the name of the program. Gives an error number.
  int Start(const std::string& program, std::vector<std::string> arguments, pid_t& id);

  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
};

}  // namespace winapi
