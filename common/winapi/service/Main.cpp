// The program that looks after a running service. It has no use but by StartServiceW.
#include "advapi32/Supervisor.h"

int main(int count, char** arguments) {
  return winapi::RunSupervisor(count, arguments);
}
