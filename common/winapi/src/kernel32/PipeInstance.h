// The instances of named pipes, and the connections to them; internal to the layer.
#pragma once

#include <windows.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "kernel32/Descriptor.h"
#include "kernel32/PipeRecord.h"

namespace winapi {

// An instance of a name that this process has, with its listening socket.
class PipeInstance {
 public:
  // Null, and the last error, where there can't be one more.
  static std::unique_ptr<PipeInstance> Make(const std::string& name, const PipeTerms& terms,
                                            bool mustBeFirst);
  PipeInstance(const PipeInstance&) = delete;
  PipeInstance& operator=(const PipeInstance&) = delete;
  // With the last of a name goes the name.
  ~PipeInstance();

  PipeState State() const;
  void SetState(PipeState state) const;
  // Where it was disconnected; a client that has just come stays.
  void ListenAgain() const;
  // Sleeps until somebody may be there.
  void AwaitClient() const;
  // Who of this user has connected; -1 where nobody has.
  Descriptor Accept() const;

 private:
  PipeInstance(std::string name, std::shared_ptr<PipeRecord> record, std::size_t number,
               Descriptor listener);

  const std::string m_name;
  std::shared_ptr<PipeRecord> m_record;
  const std::size_t m_number;
  const Descriptor m_listener;
};

// A client's connection to an instance that listens, for directions that the server names by
// PIPE_ACCESS_INBOUND and PIPE_ACCESS_OUTBOUND. -1, and the last error, where there is none.
Descriptor ConnectToPipe(const std::string& name, DWORD access);

// Whether an instance listens, waiting for it if need be. False, and the last error.
bool AwaitPipe(const std::string& name, DWORD milliseconds);

// The process at the other end of a connection, as it was when it connected or listened.
std::optional<DWORD> PeerProcess(int connection);

}  // namespace winapi
