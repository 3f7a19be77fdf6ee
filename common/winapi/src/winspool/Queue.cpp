#include "winspool/Queue.h"

#include <sys/socket.h>

#include <cstdlib>
#include <vector>

namespace winapi {
namespace {

constexpr int kConnectTime = 5000;  // milliseconds
constexpr double kAnswerTime = 10;  // seconds

// As IPP numbers them.
constexpr int kPortrait = 3, kLandscape = 4, kReverseLandscape = 5;

bool IsLandscape(int orientation) {
  return orientation == kLandscape || orientation == kReverseLandscape;
}

// A server that is silent for so long has gone.
int GiveUp(http_t*, void*) {
  return 0;
}

}  // namespace

Queue::Queue(const std::string& name) {
  if (m_cups == nullptr) return;
  m_server = m_cups->httpConnect2(m_cups->cupsServer(), m_cups->ippPort(), nullptr, AF_UNSPEC,
                                  m_cups->cupsEncryption(), 1, kConnectTime, nullptr);
  if (m_server == nullptr) return;
  m_cups->httpSetTimeout(m_server, kAnswerTime, &GiveUp, nullptr);
  m_queue = m_cups->cupsGetNamedDest(m_server, name.empty() ? nullptr : name.c_str(), nullptr);
  m_isServing = m_queue != nullptr || Answers();
}

Queue::~Queue() {
  if (m_details != nullptr) m_cups->cupsFreeDestInfo(m_details);
  if (m_queue != nullptr) m_cups->cupsFreeDests(1, m_queue);
  if (m_server != nullptr) m_cups->httpClose(m_server);
}

// libcups says of no queue why it didn't find it: a server that has broken off looks like one that
// knows of none. So it is asked for something that each of them can answer, if with "not found".
bool Queue::Answers() {
  ipp_t* const request = m_cups->ippNewRequest(IPP_OP_CUPS_GET_DEFAULT);
  m_cups->ippDelete(m_cups->cupsDoRequest(m_server, request, "/"));
  return m_cups->cupsLastError() < IPP_STATUS_ERROR_INTERNAL;
}

std::string Queue::Option(const char* name) const {
  const char* const value = m_cups->cupsGetOption(name, m_queue->num_options, m_queue->options);
  return value == nullptr ? std::string() : value;
}

cups_dinfo_t* Queue::Details() {
  if (m_details == nullptr) m_details = m_cups->cupsCopyDestInfo(m_server, m_queue);
  return m_details;
}

const PaperList& Queue::Papers() {
  if (m_papers != nullptr) return *m_papers;
  std::vector<std::string> names;
  ipp_attribute_t* const papers =
      Details() == nullptr
          ? nullptr
          : m_cups->cupsFindDestSupported(m_server, m_queue, Details(), CUPS_MEDIA);
  const int count = papers == nullptr ? 0 : m_cups->ippGetCount(papers);
  for (int i = 0; i < count; ++i) names.push_back(m_cups->ippGetString(papers, i, nullptr));
  m_papers = std::make_unique<PaperList>(names);
  return *m_papers;
}

bool Queue::Settings(PageSettings& settings) {
  if (Papers().IsEmpty()) return false;
  // The user's may name a tray behind the paper.
  std::string paper = Option(CUPS_MEDIA);
  if (paper.empty()) paper = Option("PageSize");
  settings.paper = PaperOfName(paper.substr(0, paper.find(',')));
  if (settings.paper.width == 0) {
    ipp_attribute_t* const preset =
        m_cups->cupsFindDestDefault(m_server, m_queue, Details(), CUPS_MEDIA);
    const char* const name = preset == nullptr ? nullptr : m_cups->ippGetString(preset, 0, nullptr);
    settings.paper = PaperOfName(name == nullptr ? "" : name);
  }
  std::string orientation = Option(CUPS_ORIENTATION);
  if (orientation.empty() && Option("landscape") == "true")
    orientation = std::to_string(kLandscape);
  ipp_attribute_t* const preset =
      orientation.empty()
          ? m_cups->cupsFindDestDefault(m_server, m_queue, Details(), CUPS_ORIENTATION)
          : nullptr;
  settings.isLandscape = IsLandscape(preset != nullptr ? m_cups->ippGetInteger(preset, 0)
                                                       : std::atoi(orientation.c_str()));
  return settings.paper.width > 0;
}

bool Queue::TakesOrientation(bool isLandscape) {
  const std::string number = std::to_string(isLandscape ? kLandscape : kPortrait);
  return Details() != nullptr &&
         m_cups->cupsCheckDestSupported(m_server, m_queue, Details(), CUPS_ORIENTATION,
                                        number.c_str()) != 0;
}

}  // namespace winapi
