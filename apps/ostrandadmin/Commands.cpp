#include "ostrandadmin/Commands.h"

#include <windows.h>

#include <algorithm>
#include <iterator>

#include "kelp0lang/ServiceControl.h"

namespace ostrandadmin {
namespace {

using kelp::CPolyValue;
using kelp::WString;

// The library tells no more than that it failed, and leaves the system's last error.
int Install(const WString& name, const WString& displayName, const WString& path, bool forAll) {
  SetLastError(ERROR_SUCCESS);
  if (InstallTalvService(name, displayName, path, forAll)) return ERROR_SUCCESS;
  const DWORD error = GetLastError();
  return error == ERROR_SUCCESS ? ERROR_GEN_FAILURE : static_cast<int>(error);
}

// Name, name to show, path of the program, and whether everybody may start and stop it.
int InstallService(const std::vector<CPolyValue>& values) {
  constexpr int kTypes[] = {kelp::pvString, kelp::pvString, kelp::pvString, kelp::pvBool};
  const bool areRight =
      std::equal(values.begin(), values.end(), std::begin(kTypes), std::end(kTypes),
                 [](const CPolyValue& value, int type) { return value.GetType() == type; });
  // Text that was empty on the way isn't a name or a path.
  if (!areRight || values[0].GetStringValue().empty() || values[2].GetStringValue().empty()) {
    return ERROR_INVALID_DATA;
  }
  return Install(values[0].GetStringValue(), values[1].GetStringValue(), values[2].GetStringValue(),
                 values[3].GetBoolValue());
}

struct Command {
  int number;
  int (*run)(const std::vector<CPolyValue>& values);
};
constexpr Command kCommands[] = {{stubInstallService, &InstallService}};

}  // namespace

int Execute(const TStubMessage& message) {
  for (const Command& command : kCommands) {
    if (command.number == message.command) return command.run(message.values);
  }
  return ERROR_INVALID_FUNCTION;
}

}  // namespace ostrandadmin
