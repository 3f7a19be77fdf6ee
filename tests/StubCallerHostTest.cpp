// A user who can't come by any rights. Only here can a process give up those that it has.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <winapi_host.h>

#include "kelp0lang/StubCaller.h"

using kelp::WString;

namespace {

WString* shown = nullptr;

int Show(HWND, LPCWSTR text, LPCWSTR caption, UINT type) {
  if (type == (MB_OK | MB_ICONEXCLAMATION)) *shown = WString(caption) + KTEXT(": ") + text;
  return IDOK;
}

// What such a user is told, in a process of its own; true when the command was refused.
bool IsRefused(WString& told) {
  constexpr uid_t kNobody = 65534;
  if (geteuid() == 0 && setuid(kNobody) != 0) return false;
  shown = &told;
  WinapiSetMessageBox(&Show);
  CServiceStubCaller caller;
  const TStubMessage message = {stubInstallService, {}};
  return !CStubAdminCaller::GetInstance()->ExecuteCommand(&caller, message.command);
}

TEST(StubCallerHost, AUserWithoutRightsIsToldSo) {
  const pid_t child = fork();
  if (child == 0) {
    WString told;
    const bool refused = IsRefused(told);
    _exit(refused && told.StartsWith(KTEXT("OstrandAdmin: Can't run OstrandAdmin.\r\n\r\nUAC"))
              ? 0
              : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
}

}  // namespace
