// fieldbook system: what the library sees of the machine and its desktop.
#include <vector>

#include "fieldbook/commands/Commands.h"
#include "kelp0lang/LegacyNumber.h"
#include "kelp0lang/MonitorInfo.h"
#include "kelp0lang/PrinterPage.h"
#include "kelp0lang/SystemQuery.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {

const WChar* const kSystemHelp = KTEXT(
    "Usage: fieldbook system\n"
    "\n"
    "Shows what fieldbook sees of this machine, one thing a line: the version of\n"
    "the system, whether you are an administrator, the monitors with what they\n"
    "leave for windows, the paper of your default printer, and the other programs\n"
    "of the family that are running, by the numbers of their processes.\n");

namespace {

WString Number(int number) {
  return WString::ValueOf(number);
}

WString VersionText() {
  unsigned long major, minor, servicePack;
  bool isServer;
  if (!GetOSVersion(major, minor, servicePack, isServer)) {
    return kelp::Xlate(KTEXT("unknown@@version of the system"));
  }
  const WChar* const source =
      isServer ? KTEXT("{1}.{2}, service pack {3}, server") : KTEXT("{1}.{2}, service pack {3}");
  return Message{source,
                 {Number(static_cast<int>(major)), Number(static_cast<int>(minor)),
                  Number(static_cast<int>(servicePack))}}
      .Text();
}

WString YesOrNo(bool yes) {
  return kelp::Xlate(yes ? KTEXT("yes@@an answer") : KTEXT("no@@an answer"));
}

WString NumbersText(const std::vector<int>& numbers) {
  if (numbers.empty()) return kelp::Xlate(KTEXT("none@@of programs"));
  WString text;
  for (const int number : numbers) {
    if (!text.empty()) text += KTEXT(", ");
    text += Number(number);
  }
  return text;
}

WString Programs(bool office, bool field) {
  std::vector<int> ids;
  GetRunningInstances(ids, office, field);
  return NumbersText(ids);
}

void PrintMonitors(Console& console) {
  const CMonitorInfo monitors;
  if (monitors.workAreas.empty()) console.PrintLine(kelp::Xlate(KTEXT("monitors: none")));
  int number = 0;
  for (const TWorkArea& area : monitors.workAreas) {
    console.PrintLine(Message{KTEXT("monitor {1}: {2} x {3} pixels for windows, from {4}, {5}"),
                              {Number(++number), Number(area.right - area.left),
                               Number(area.bottom - area.top), Number(area.left), Number(area.top)}}
                          .Text());
  }
}

// Tenths of a millimetre.
WString Millimetres(int tenths) {
  return StringDaDouble(tenths / 10.0, 0, 1);
}

void PrintPaper(Console& console) {
  short format = 0;
  bool landscape = false;
  GetPaperSizeAndOrientation(format, landscape);
  if (format < 0) {
    console.PrintLine(kelp::Xlate(KTEXT("default printer: none that tells its paper")));
    return;
  }
  const WString orientation = kelp::Xlate(landscape ? KTEXT("landscape") : KTEXT("portrait"));
  int width = 0;
  int height = 0;
  GetSizeOfPageFormat(format, landscape, width, height);
  const Message text =
      width > 0 && height > 0
          ? Message{KTEXT("default printer: {1} x {2} mm, {3}"),
                    {Millimetres(width), Millimetres(height), orientation}}
          : Message{KTEXT("default printer: a paper of another size, {1}"), {orientation}};
  console.PrintLine(text.Text());
}

}  // namespace

Status SystemCommand(const CommandLine& line, Console& console) {
  if (!line.Operands().empty()) throw UsageFailure({KTEXT("system takes nothing behind it"), {}});
  const auto print = [&console](const WChar* source, const WString& value) {
    console.PrintLine(Message{source, {value}}.Text());
  };
  print(KTEXT("version: {1}"), VersionText());
  print(KTEXT("administrator: {1}"), YesOrNo(IsAdmin()));
  print(KTEXT("64 bits: {1}"), YesOrNo(kelp::Is64bitOS()));
  PrintMonitors(console);
  PrintPaper(console);
  print(KTEXT("other programs of the office: {1}"), Programs(true, false));
  print(KTEXT("other programs of the field: {1}"), Programs(false, true));
  return kDone;
}

}  // namespace fieldbook
