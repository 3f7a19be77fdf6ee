// HTTPS against nginx, and a proxy with an account.
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <winapi_host.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "tests/TempFolder.h"
#include "tests/winapi/wininet/HttpExchange.h"

namespace {

sockaddr_in Address(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

std::uint16_t FreePort() {
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address = Address(0);
  socklen_t size = sizeof address;
  bind(listener, reinterpret_cast<sockaddr*>(&address), size);
  getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
  close(listener);
  return ntohs(address.sin_port);
}

bool IsListening(std::uint16_t port) {
  const int client = socket(AF_INET, SOCK_STREAM, 0);
  const sockaddr_in address = Address(port);
  const auto* const any = reinterpret_cast<const sockaddr*>(&address);
  const bool listens = connect(client, any, sizeof address) == 0;
  close(client);
  return listens;
}

// The servers of https_servers.sh.
class Https : public testing::Test {
 protected:
  enum Place { kPlain, kGood, kExpired, kOther, kOwn, kProxy, kCount };

  void SetUp() override {
    for (std::uint16_t& port : m_ports) port = FreePort();
    std::vector<std::string> command = {HTTPS_SERVERS, m_folder.Path()};
    for (const std::uint16_t port : m_ports) command.push_back(std::to_string(port));
    std::vector<char*> arguments;
    for (std::string& argument : command) arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    ASSERT_EQ(posix_spawn(&m_process, HTTPS_SERVERS, nullptr, nullptr, arguments.data(), environ),
              0);
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    while (!IsListening(m_ports[kPlain]) || !IsListening(m_ports[kProxy])) {
      ASSERT_EQ(waitpid(m_process, nullptr, WNOHANG), 0) << "needs nginx, openssl and tinyproxy";
      ASSERT_LT(std::chrono::steady_clock::now(), end);
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  }
  void TearDown() override {
    kill(m_process, SIGTERM);
    waitpid(m_process, nullptr, 0);
    WinapiSetCertificateStore(nullptr);
  }
  std::string Get(Place place, const char* object, DWORD more = 0) const {
    const DWORD flags = HttpExchange::kFlags | INTERNET_FLAG_SECURE | more;
    return HttpExchange(m_ports[place], "GET", object, flags).SendAndAnswer();
  }

  TempFolder m_folder;
  std::uint16_t m_ports[kCount];
  pid_t m_process;
};

TEST_F(Https, CertificatesAndHostNamesAreVerified) {
  EXPECT_EQ(Get(kGood, "/file"), "error 12045") << "the system doesn't know its authority";
  WinapiSetCertificateStore(m_folder.Wide(u"ca.pem").c_str());
  EXPECT_EQ(Get(kGood, "/file"), "200 hello");
  EXPECT_EQ(Get(kGood, "/stay"), "200 hello");
  EXPECT_EQ(Get(kGood, "/leave"), "error 12040");
  EXPECT_EQ(Get(kGood, "/leave", INTERNET_FLAG_IGNORE_REDIRECT_TO_HTTP), "200 hello");
  EXPECT_EQ(Get(kExpired, "/file"), "error 12037");
  EXPECT_EQ(Get(kOther, "/file"), "error 12038");
  EXPECT_EQ(Get(kOwn, "/file"), "error 12045");
  EXPECT_EQ(Get(kPlain, "/file"), "error 12157");
  WinapiSetCertificateStore(nullptr);
  EXPECT_EQ(Get(kGood, "/file"), "error 12045") << "a connection that another store has verified";
}

TEST_F(Https, AProxyAsksForItsAccount) {
  const std::string port = std::to_string(m_ports[kProxy]);
  const Wide address = u"127.0.0.1:" + Wide(port.begin(), port.end());
  const HINTERNET session =
      InternetOpenW(nullptr, INTERNET_OPEN_TYPE_PROXY, address.c_str(), u"<local>;*.near", 0);
  const HINTERNET connection = InternetConnectW(session, u"127.0.0.1", m_ports[kPlain], nullptr,
                                                nullptr, INTERNET_SERVICE_HTTP, 0, 0);
  const auto status = [connection] {
    const HINTERNET request =
        HttpOpenRequestA(connection, nullptr, "/file", nullptr, nullptr, nullptr, 0, 0);
    DWORD number = 0;
    DWORD size = sizeof number;
    EXPECT_TRUE(HttpSendRequestW(request, nullptr, 0, nullptr, 0)) << GetLastError();
    EXPECT_TRUE(HttpQueryInfoW(request, HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &number,
                               &size, nullptr));
    return number;
  };
  EXPECT_EQ(status(), 407u);
  WCHAR user[] = u"surveyor";
  WCHAR password[] = u"level";
  EXPECT_TRUE(InternetSetOptionW(connection, INTERNET_OPTION_PROXY_USERNAME, user, 8));
  EXPECT_TRUE(InternetSetOptionW(connection, INTERNET_OPTION_PROXY_PASSWORD, password, 5));
  EXPECT_EQ(status(), 200u);
  EXPECT_TRUE(InternetCloseHandle(session));
}

}  // namespace
