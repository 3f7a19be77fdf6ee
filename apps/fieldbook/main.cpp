#include "fieldbook/Program.h"

int main(int argc, char** argv) {
  console::Console console(KTEXT("fieldbook"));
  return fieldbook::Run(console::Console::Arguments(argc, argv), console);
}
