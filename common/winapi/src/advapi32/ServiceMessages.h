// What the processes of a service say to each other; internal to the layer.
//
// Who controls a service connects to its supervisor's socket, sends one number and gets one answer.
// The supervisor and the service's program have two connections, so that an answer is never taken
// for a question: on one the program tells its status, on the other it is handed its controls.
#pragma once

#include <winsvc.h>

#include <cstddef>

namespace winapi {

struct ControlAnswer {
  DWORD error;
  SERVICE_STATUS status;
};

// To the program; its answer bears the same number. The program's first answer, which nobody asked
// for, has the number 0 and says that it is ready; the name and the arguments follow it, each with
// a terminator.
struct ProgramControl {
  DWORD number;
  DWORD control;
};
struct ProgramAnswer {
  DWORD number;
  DWORD result;
};
inline constexpr std::size_t kMostArguments = 65'536;              // bytes
inline constexpr std::size_t kMostBlock = kMostArguments + 1'024;  // with the name

// What the program finds open, and the variable that says so, with the supervisor's process.
inline constexpr int kStatusEnd = 3;
inline constexpr int kControlEnd = 4;
inline constexpr int kProgramState = 5;
inline constexpr const char* kProgramVariable = "WINAPI_SERVICE";

// What the supervisor finds open, for the error code of the start.
inline constexpr int kReportEnd = 3;

// How long a program has for its start and for taking a control, and one that has stopped for its
// end.
inline constexpr int kAnswerLimit = 30'000;  // milliseconds
inline constexpr int kEndLimit = 20'000;

// The right that a control needs, and what a service has to accept for it; 0 is nothing.
struct ControlRule {
  DWORD first, last;
  DWORD right;
  DWORD accepted;
};
inline constexpr ControlRule kControlRules[] = {
    {SERVICE_CONTROL_STOP, SERVICE_CONTROL_STOP, SERVICE_STOP, SERVICE_ACCEPT_STOP},
    {SERVICE_CONTROL_PAUSE, SERVICE_CONTROL_CONTINUE, SERVICE_PAUSE_CONTINUE,
     SERVICE_ACCEPT_PAUSE_CONTINUE},
    {SERVICE_CONTROL_INTERROGATE, SERVICE_CONTROL_INTERROGATE, SERVICE_INTERROGATE, 0},
    {SERVICE_CONTROL_PARAMCHANGE, SERVICE_CONTROL_PARAMCHANGE, SERVICE_PAUSE_CONTINUE,
     SERVICE_ACCEPT_PARAMCHANGE},
    {128, 255, SERVICE_USER_DEFINED_CONTROL, 0},
};
// Null for a control that nobody may send.
inline const ControlRule* RuleOf(DWORD control) {
  for (const ControlRule& rule : kControlRules) {
    if (control >= rule.first && control <= rule.last) return &rule;
  }
  return nullptr;
}

}  // namespace winapi
