// What the layer makes of the user's options of CUPS.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <windows.h>
// It needs the one before.
#include <winspool.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "tests/TempFolder.h"
#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/Variable.h"

namespace {

namespace fs = std::filesystem;

// Sets A3, landscape, for "plotter"; gives the error.
long SetPage() {
  std::u16string name = u"plotter";
  HANDLE printer = nullptr;
  EXPECT_TRUE(OpenPrinterW(name.data(), &printer, nullptr));
  DWORD needed = 0;
  GetPrinterW(printer, 2, nullptr, 0, &needed);
  std::vector<BYTE> block(needed);
  EXPECT_TRUE(GetPrinterW(printer, 2, block.data(), needed, &needed));
  DEVMODEW& mode = *reinterpret_cast<PRINTER_INFO_2W*>(block.data())->pDevMode;
  mode.dmFields = DM_PAPERSIZE | DM_ORIENTATION;
  mode.dmPaperSize = DMPAPER_A3;
  mode.dmOrientation = DMORIENT_LANDSCAPE;
  const long error = ErrorOf(SetPrinterW(printer, 2, block.data(), 0));
  EXPECT_TRUE(ClosePrinter(printer));
  return error;
}

TEST(SpoolerHost, TheFileOfOptionsKeepsWhatElseIsInIt) {
  const fs::path folder = fs::path(std::getenv("HOME")) / ".cups";
  const fs::path file = folder / "lpoptions";
  fs::create_directories(folder);
  const struct {
    std::string before, after;
  } cases[] = {
      {"", "Dest plotter media=iso_a3_297x420mm orientation-requested=4\n"},
      {"# a note\nDest plotter/photo media=A4\nDest other x=y\nDest plotter note='two words' "
       "media=A4",
       "# a note\nDest plotter/photo media=A4\nDest other x=y\nDest plotter media=iso_a3_297x420mm "
       "note=\"two words\" orientation-requested=4\n"},
      {"Default plotter say=\"a \\\"word\\\"\"\n",
       "Default plotter media=iso_a3_297x420mm orientation-requested=4 say=\"a \\\"word\\\"\"\n"},
  };
  for (const auto& test : cases) {
    std::ofstream(file) << test.before;
    EXPECT_EQ(SetPage(), ERROR_SUCCESS);
    std::ifstream written(file);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(written), {}), test.after);
  }
  fs::remove(file);
  fs::create_directory(file);
  EXPECT_NE(SetPage(), ERROR_SUCCESS);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1) << "nothing is left behind";
  fs::remove(file);
  const Variable nowhere("HOME", "/nowhere/at/all");
  EXPECT_EQ(SetPage(), ERROR_PATH_NOT_FOUND);
}

TEST(SpoolerHost, TheHostsSignalStaysItsOwn) {
  DWORD size = 0;
  GetDefaultPrinterW(nullptr, &size);
  struct sigaction action;
  sigaction(SIGPIPE, nullptr, &action);
  EXPECT_EQ(action.sa_handler, SIG_DFL);
  sigset_t blocked;
  pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
  EXPECT_EQ(sigismember(&blocked, SIGPIPE), 0);
}

TEST(SpoolerHost, AServerThatBreaksOffIsUnavailable) {
  const TempFolder folder;
  sockaddr_un address = {AF_UNIX, {}};
  const std::string path = (folder.Path() / "socket").string();
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(listener, 5), 0);
  std::string answer;
  std::thread breaking([&] {
    char request[100];
    for (int client; (client = accept(listener, nullptr, nullptr)) >= 0; close(client)) {
      if (recv(client, request, sizeof request, 0) > 0) {
        send(client, answer.data(), answer.size(), MSG_NOSIGNAL);
      }
    }
  });
  const Variable server("CUPS_SERVER", path.c_str());
  for (const char* const half :
       {"", "HTTP/1.1 200 OK\r\nContent-Type: application/ipp\r\nContent-Length: 99\r\n\r\n\2"}) {
    answer = half;
    // libcups looks for its server once in each thread.
    std::thread([] {
      DWORD size = 0;
      EXPECT_EQ(ErrorOf(GetDefaultPrinterW(nullptr, &size)), RPC_S_SERVER_UNAVAILABLE);
    }).join();
  }
  shutdown(listener, SHUT_RDWR);
  breaking.join();
  close(listener);
}

}  // namespace
