// The service that fieldbook service drives; its work is a room of fieldbook.
#include "fieldbook/watch/WatchService.h"

int main(int argc, char** argv) {
  console::Console console(fieldbook::kWatchName);
  return fieldbook::RunWatchService(console::Console::Arguments(argc, argv), console);
}
