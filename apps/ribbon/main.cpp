#include "ribbon/Program.h"

int main(int argc, char** argv) {
  console::Console console(KTEXT("ribbon"));
  return ribbon::Run(console::Console::Arguments(argc, argv), console);
}
