// The program that a program of the family starts where it lacks rights; StubCaller.h tells how.
#include "ostrandadmin/Helper.h"

int main() {
  return ostrandadmin::Serve();
}
