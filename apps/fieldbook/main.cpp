#include "fieldbook/Program.h"

int main(int argc, char** argv) {
  fieldbook::Console console;
  return fieldbook::Run(fieldbook::Console::Arguments(argc, argv), console);
}
