// A queue of a CUPS server, asked for what it is and what it takes; internal to the layer.
#pragma once

#include <windows.h>

#include <memory>
#include <string>

#include "PipeSignalScope.h"
#include "winspool/CupsBinding.h"
#include "winspool/Paper.h"

namespace winapi {

struct PageSettings {
  Paper paper;
  bool isLandscape = false;
};

// One conversation with the server that this user's settings name. It is as long as the object; a
// server that goes or doesn't answer for some seconds ends it.
class Queue {
 public:
  // The queue of a name, UTF-8, or the user's default one for an empty name.
  explicit Queue(const std::string& name);
  ~Queue();
  Queue(const Queue&) = delete;
  Queue& operator=(const Queue&) = delete;

  bool IsThere() const { return m_queue != nullptr; }
  // Why it isn't: the server can't be reached or doesn't answer, or knows of no such queue.
  DWORD Error(DWORD noQueue) const {
    return m_isServing ? noQueue : DWORD{RPC_S_SERVER_UNAVAILABLE};
  }
  std::string Name() const { return m_queue->name; }
  // An attribute of the queue or an option that the user has set; empty where there is none.
  std::string Option(const char* name) const;

  // Those papers that the server tells; it is asked once.
  const PaperList& Papers();
  // What the user has set, else what the queue begins with. False where no paper is known.
  bool Settings(PageSettings& settings);
  bool TakesOrientation(bool isLandscape);

 private:
  cups_dinfo_t* Details();
  bool Answers();

  const CupsCalls* const m_cups = Cups();
  const PipeSignalScope m_noSignal;
  http_t* m_server = nullptr;
  bool m_isServing = false;
  cups_dest_t* m_queue = nullptr;
  cups_dinfo_t* m_details = nullptr;
  std::unique_ptr<PaperList> m_papers;
};

}  // namespace winapi
