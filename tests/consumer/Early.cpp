// A program whose static objects use the library before main begins and after it has ended; and
// what the library finds by its name alone.
#include <kelp0lang/kelp0lang.h>
#include <windows.h>

#include <cstdio>

namespace {

struct Early {
  Early() { Tell("before"); }
  ~Early() { Tell("behind"); }

  static void Tell(const char* when) {
    char helper[32];
    kelp::GetGlobalStringLoader().LoadStr(102, helper, sizeof helper);
    std::printf("%s main: %s, %s\n", when, helper, kelp_get_c_locale() == nullptr ? "none" : "C");
  }
} early;

}  // namespace

int main() {
  const HMODULE spooler = LoadLibraryW(KTEXT("Winspool.drv"));
  const bool isThere = GetProcAddress(spooler, "SetPrinterW") != nullptr;
  std::printf("printers: %s\n", isThere ? "there" : "not to be found");
}
