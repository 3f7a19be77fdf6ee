// fieldbook send: a file on its way to a server.
#include <algorithm>
#include <atomic>
#include <chrono>

#include "fieldbook/commands/Commands.h"
#include "fieldbook/console/Beside.h"
#include "fieldbook/console/Progress.h"
#include "fieldbook/values/ByteText.h"
#include "fieldbook/web/WebFailure.h"
#include "fieldbook/web/WebUpload.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {

const WChar* const kSendHelp = KTEXT(
    "Usage: fieldbook send FILE URL [--field NAME=VALUE]... [--progress] [--verbose]\n"
    "\n"
    "Sends a file to a server, as a browser sends one from a form, and prints what\n"
    "the server answers.\n"
    "\n"
    "  FILE                any file below 4 GiB\n"
    "  URL                 where to: http://... or https://...\n"
    "  --field NAME=VALUE  a field of the form that goes with it; it may come several\n"
    "                      times. A NAME is without quotation marks and line ends\n"
    "  --progress          a bar on standard error, elsewhere than on a terminal too;\n"
    "                      there it appears by itself when the work takes long\n"
    "  --verbose           the local time of the run on standard error\n"
    "\n"
    "The file is the part \"file\" of the form, by the name that you give here; names\n"
    "and values go out in UTF-8. Fields are in the order of their names.\n"
    "\n"
    "A server that says nothing for 30 seconds is given up. Ctrl-C ends it at once;\n"
    "what the server does with half a file is its own affair.\n"
    "\n"
    "Exit status: 0 the server has taken it (2xx), 1 it hasn't.\n");

namespace {

struct Sending {
  Argument file;
  Argument address;
  std::vector<WebField> fields;
};

// What stands in the head of a part would end its quotation or its line.
bool FitsIntoHead(const WString& name) {
  const WideView units = ViewOf(name);
  return std::none_of(units.begin(), units.end(),
                      [](WChar unit) { return unit < KTEXT(' ') || unit == KTEXT('"'); });
}

WebField ReadField(const WString& text) {
  const int equals = text.find(KTEXT('='));
  if (equals > 0) {
    const WString name = text.Substring(0, equals);
    if (FitsIntoHead(name)) return {name, text.Substring(equals + 1)};
  }
  throw UsageFailure(
      {KTEXT("{1}: \"{2}\" isn't NAME=VALUE"), {NameOf(Option::Field), Quoted(text)}});
}

Sending ReadLine(const CommandLine& line) {
  const std::vector<Argument>& operands = line.Operands();
  if (operands.size() != 2) {
    throw UsageFailure({KTEXT("send takes FILE and URL, {1} given"),
                        {WString::ValueOf(static_cast<int>(operands.size()))}});
  }
  Sending sending{operands[0], operands[1], {}};
  if (!IsWebAddress(sending.address.text)) {
    throw UsageFailure({KTEXT("\"{1}\" isn't an address with http:// or https://"),
                        {Quoted(sending.address.text)}});
  }
  for (const Argument& field : line.Values(Option::Field)) {
    sending.fields.push_back(ReadField(field.text));
  }
  if (sending.file.text == WString(KTEXT("-"))) {
    throw UsageFailure({KTEXT("send takes a FILE, not standard input"), {}});
  }
  RequireReadable(sending.file);
  if (!FitsIntoHead(sending.file.text)) {
    throw Failure({KTEXT("{1}: a name with a quotation mark or a line end can't be sent"),
                   {Shown(sending.file.text)}});
  }
  return sending;
}

// How far a file is on its way; written by one thread and read by another.
class Meter {
 public:
  void Set(std::uint64_t sent, std::uint64_t all) {
    m_all = all;
    m_sent = sent;
    m_seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_begin).count();
  }
  double Fraction() const {
    const std::uint64_t all = m_all;
    return all == 0 ? 0 : static_cast<double>(m_sent) / static_cast<double>(all);
  }
  std::uint64_t All() const { return m_all; }
  // Up to the last byte; the wait for the answer doesn't count.
  WString Rate() const { return RateText(m_sent, m_seconds); }
  // What stands behind the bar.
  WString Text() const {
    const std::uint64_t all = m_all;
    const std::uint64_t sent = m_sent;
    if (all == 0) return WString();
    if (sent == all) return kelp::Xlate(KTEXT("waiting for the answer"));
    return Message{KTEXT("{1} of {2}, {3}"), {ByteText(sent), ByteText(all), Rate()}}.Text();
  }

 private:
  std::atomic<std::uint64_t> m_sent{0};
  std::atomic<std::uint64_t> m_all{0};
  std::atomic<double> m_seconds{0};
  const std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
};

WebAnswer Send(const Sending& sending, Meter& meter, Progress& progress) {
  const Progress::Task task(progress, KTEXT("sending"), 1);
  progress.Set(0);
  WebSession session;
  WebAnswer answer;
  const auto upload = [&] {
    const SentWatch watch = [&](std::uint64_t sent, std::uint64_t all) {
      meter.Set(sent, all);
      if (progress.IsAborted()) throw Failure(Stopped());
    };
    answer = UploadToWeb(session, sending.file, sending.address, sending.fields, watch);
  };
  RunBeside(
      1, upload, [&] { progress.Set(meter.Fraction(), meter.Text()); }, [&] { session.Stop(); });
  progress.Set(1, WString());
  return answer;
}

// Line by line, since what moves the cursor is taken out of each.
void PrintAnswer(const WebAnswer& answer, Console& console) {
  std::string_view rest = answer.text;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    std::string_view text = rest.substr(0, end);
    if (text.ends_with('\r')) text.remove_suffix(1);
    console.PrintLine(Shown(Decode(text)));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  if (answer.isCut) console.PrintLine(kelp::Xlate(KTEXT("... and more")));
}

}  // namespace

Status SendCommand(const CommandLine& line, Console& console) {
  const Sending sending = ReadLine(line);
  Meter meter;
  WString rate;
  WebAnswer answer;
  {
    Progress progress(line, console);
    answer = Send(sending, meter, progress);
    rate = meter.Rate();
  }
  console.PrintLine(Message{
      KTEXT("{1}: {2} sent, {3}"),
      {Shown(sending.file.text), ByteText(meter.All()),
       rate}}.Text());
  const bool isTaken = IsWebSuccess(answer.status);
  if (isTaken) console.PrintLine(WebStatusText(answer.status));
  PrintAnswer(answer, console);
  if (isTaken) return kDone;
  throw Failure({KTEXT("{1}: {2}"), {Shown(sending.address.text), WebStatusText(answer.status)}});
}

}  // namespace fieldbook
