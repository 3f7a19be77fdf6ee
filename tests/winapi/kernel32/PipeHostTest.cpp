// Pipes between processes and users; where the layer keeps them.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <windows.h>

#include <filesystem>
#include <string>

#include "tests/TempFolder.h"
#include "tests/winapi/ErrorOf.h"
#include "tests/winapi/Variable.h"

namespace {

constexpr const char16_t* kName = u"//./pipe/kelp_host_test";

HANDLE Serve() {
  return CreateNamedPipeW(kName, PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE, PIPE_UNLIMITED_INSTANCES,
                          512, 512, 0, nullptr);
}
HANDLE Open() {
  return CreateFileW(kName, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

class PipeHost : public testing::Test {
 protected:
  std::size_t FilesLeft() const {
    std::size_t count = 0;
    const auto folder = m_folder.Path() / "winapi-pipes";
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder)) ++count;
    return count;
  }
  // What a child process gives back.
  template <class Work>
  static int InChild(Work work) {
    const pid_t child = fork();
    if (child == 0) _exit(work());
    int status = 0;
    waitpid(child, &status, 0);
    return WEXITSTATUS(status);
  }

  TempFolder m_folder;
  Variable m_base{"XDG_RUNTIME_DIR", m_folder.Path().c_str()};
};

TEST_F(PipeHost, ANameIsHeldByItsLivingProcessAndFreeBehindOneThatWasKilled) {
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  if (child == 0) {
    const HANDLE server = Serve();
    ConnectNamedPipe(server, nullptr);
    char byte = server == INVALID_HANDLE_VALUE ? 'n' : 'y';
    [[maybe_unused]] const ssize_t written = write(ready[1], &byte, 1);
    pause();
  }
  EXPECT_TRUE([] {
    for (int i = 0; i < 2000 && !WaitNamedPipeW(kName, 5); ++i) usleep(5000);
    return WaitNamedPipeW(kName, 5);
  }());
  EXPECT_EQ(ErrorOf(Serve(), INVALID_HANDLE_VALUE), ERROR_ACCESS_DENIED);
  const HANDLE client = Open();
  ULONG id = 0;
  EXPECT_TRUE(GetNamedPipeServerProcessId(client, &id));
  EXPECT_EQ(id, static_cast<ULONG>(child));
  char byte = 0;
  EXPECT_EQ(read(ready[0], &byte, 1), 1);
  EXPECT_EQ(byte, 'y');

  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  EXPECT_EQ(ErrorOf(ReadFile(client, &byte, 1, nullptr, nullptr), FALSE), ERROR_BROKEN_PIPE);
  EXPECT_EQ(ErrorOf(Open(), INVALID_HANDLE_VALUE), ERROR_FILE_NOT_FOUND);
  const HANDLE server = Serve();
  EXPECT_NE(server, INVALID_HANDLE_VALUE);
  const HANDLE again = Open();
  EXPECT_NE(again, INVALID_HANDLE_VALUE);
  for (const HANDLE handle : {client, server, again}) CloseHandle(handle);
  EXPECT_EQ(FilesLeft(), 0u);
  close(ready[0]);
  close(ready[1]);
}

TEST_F(PipeHost, AThousandPipesLeaveNothingBehind) {
  const auto countOpen = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  };
  CloseHandle(Serve());
  const auto before = countOpen();
  for (int i = 0; i < 1000; ++i) {
    const HANDLE server = Serve(), client = Open();
    EXPECT_EQ(ErrorOf(ConnectNamedPipe(server, nullptr), FALSE), ERROR_PIPE_CONNECTED);
    CloseHandle(i % 2 == 0 ? server : client);
    CloseHandle(i % 2 == 0 ? client : server);
  }
  EXPECT_EQ(countOpen(), before);
  EXPECT_EQ(FilesLeft(), 0u);
}

TEST_F(PipeHost, AnotherUserIsKeptOut) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can be another user";
  std::filesystem::permissions(m_folder.Path(), std::filesystem::perms::all);
  const HANDLE server = Serve();
  const auto errorAsOther = [](auto call) {
    return [call] {
      return seteuid(65534) != 0 ? 255 : static_cast<int>(ErrorOf(call(), INVALID_HANDLE_VALUE));
    };
  };
  EXPECT_EQ(InChild(errorAsOther(&Open)), ERROR_ACCESS_DENIED);
  EXPECT_EQ(InChild(errorAsOther(&Serve)), ERROR_ACCESS_DENIED);
  CloseHandle(server);
  // A folder that others may enter, or that another has made, isn't used.
  const auto folder = m_folder.Path() / "winapi-pipes";
  EXPECT_EQ(chmod(folder.c_str(), 0755), 0);
  EXPECT_EQ(ErrorOf(Serve(), INVALID_HANDLE_VALUE), ERROR_ACCESS_DENIED);
  EXPECT_EQ(chmod(folder.c_str(), 0700), 0);
  EXPECT_EQ(chown(folder.c_str(), 65534, 65534), 0);
  EXPECT_EQ(ErrorOf(Serve(), INVALID_HANDLE_VALUE), ERROR_ACCESS_DENIED);
}

}  // namespace
