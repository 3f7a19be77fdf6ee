// A request on its way and its answer; internal to the layer.
//
// A transfer moves only within the calls that wait for something of it, on the caller's thread: for
// the head to go out, for the bytes of a body to go out, for the head of the answer, for its body.
#pragma once

#include <curl/curl.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "wininet/AnswerHead.h"
#include "wininet/InternetHandle.h"
#include "wininet/RequestPlan.h"
#include "wininet/TransferPool.h"

namespace winapi::internet {

class Transfer {
 public:
  // A body in memory, empty for none; or one of a size, which follows by Write.
  Transfer(const RequestPlan& plan, const Options& options, std::string body);
  Transfer(const RequestPlan& plan, const Options& options, std::uint64_t bodySize);
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;
  ~Transfer();

  // These wait. False, and the last error, where it comes to nothing.
  bool SendHead();
  bool Write(std::string_view bytes);
  bool ReceiveHead();
  // Until there are bytes of the body, or its end has come.
  bool ReceiveBody();
  // Ends all waiting, from any thread.
  void Cancel();

  // What was received of the body and not taken yet.
  std::string_view Received() const { return std::string_view(m_received).substr(m_taken); }
  void Take(std::size_t count);
  const AnswerHead& Head() const { return m_head; }

 private:
  Transfer(const RequestPlan& plan, const Options& options);
  void SetUp(const RequestPlan& plan);
  void SetUpAnew(const RequestPlan& plan, const std::string& store);
  void SetUpSecurity(const RequestPlan& plan, const std::string& store);
  void SetUpHeaders(const RequestPlan& plan);
  void SetUpAccounts(const RequestPlan& plan, const Options& options);
  void SetUpVerb(const RequestPlan& plan, bool hasBody, std::uint64_t bodySize);
  void Start();

  template <class Done>
  bool MoveUntil(Done done, DWORD timeOut);
  void WaitForMove(DWORD timeOut);
  void ReadMessages();
  void End(CURLcode result);
  void Resume();
  bool Failed() const;
  bool IsHeadFinal() const;
  bool IsSent() const;

  static std::size_t OnHeader(char* line, std::size_t size, std::size_t count, void* self);
  static std::size_t OnBody(char* bytes, std::size_t size, std::size_t count, void* self);
  static std::size_t OnRead(char* buffer, std::size_t size, std::size_t count, void* self);
  static int OnSeek(void* self, curl_off_t offset, int origin);

  TransferPlace m_place;
  TimeOuts m_timeOuts;
  bool m_isSecure;
  bool m_follows;
  bool m_hasAccount = false;

  std::string m_whole;           // a body in memory
  std::string_view m_body;       // all of a body in memory, or the piece that is written
  std::size_t m_bodyTaken = 0;   // of that, by libcurl
  bool m_isWhole = true;         // a body in memory
  std::uint64_t m_bodyLeft = 0;  // of one that is written: what is still to be written
  std::uint64_t m_allTaken = 0;  // of all its pieces

  AnswerHead m_head;
  std::string m_received;
  std::size_t m_taken = 0;
  bool m_paused = false;  // sending, receiving or both
  bool m_hasBody = false;
  bool m_finished = false;
  bool m_isLeft = false;  // by libcurl, which has done all for it
  std::atomic<bool> m_cancelled{false};
  std::atomic<bool> m_isWaiting{false};
  CURLcode m_result = CURLE_OK;
  std::chrono::steady_clock::time_point m_lastMove;
};

}  // namespace winapi::internet
