// fieldbook show: the points of a file as a table.
#include <algorithm>

#include "fieldbook/commands/PointTable.h"
#include "fieldbook/commands/Settings.h"
#include "fieldbook/points/PointReading.h"

namespace fieldbook {

const WChar* const kShowHelp = KTEXT(
    "Usage: fieldbook show FILE... [--from UNIT] [--to UNIT] [--decimals N]\n"
    "                      [--denominator N] [--csv] [--progress] [--verbose]\n"
    "\n"
    "Shows the points of files as tables, in the units, with the decimals and in\n"
    "the order of coordinates of the settings, see fieldbook units --help.\n"
    "\n"
    "  FILE             rows of point, northing, easting, elevation, description;\n"
    "                   - reads standard input. Several files are read at once\n"
    "                   and shown in this order, each below its name\n"
    "  --from UNIT      unit of the coordinates in the file (m)\n"
    "  --to UNIT        unit to show them in; then the settings don't count, and the\n"
    "                   northing comes first, as in a points file\n"
    "  --decimals N     decimals, 0 to 9 (with --to 3; of chains 5)\n"
    "  --denominator N  of fractions of an inch: 4, 8, 16, 32 or 64 (with --to 16)\n"
    "  --csv            comma-separated values instead of a table; with --to a points\n"
    "                   file again. Several files make one list\n"
    "  --progress       a bar on standard error, elsewhere than on a terminal too;\n"
    "                   there it appears by itself when the work takes long\n"
    "  --verbose        the local time of the run on standard error, elsewhere than\n"
    "                   on a terminal too\n"
    "  --data DIR       folder of the settings\n"
    "\n"
    "UNIT is m, ft (international foot), us-ft (US survey foot), ft-in and us-ft-in\n"
    "(the same as feet and inches, such as 5'6\"3/8), ch or us-ch (chain of 66 feet).\n"
    "\n"
    "Fields are separated by tabs, semicolons, commas or blanks; the program finds\n"
    "out which. A field may stand in quotes, with \"\" for a quote in it. What\n"
    "follows the elevation is description, to the end of the row. Elevation and\n"
    "description may be missing; in rows with blanks \"\" stands for no elevation.\n"
    "Where commas don't separate, numbers may have a decimal comma.\n"
    "\n"
    "Empty rows and rows with # in front are skipped. So is a first row of heads:\n"
    "one without a digit in its first four fields. The text is UTF-8 or Latin-1.\n"
    "\n"
    "A row that can't be read is reported as FILE:LINE: what is wrong, the others\n"
    "are shown, and the exit status is 2. A file that can't be read is reported, the\n"
    "others are shown, and the exit status is 1. So it is after Ctrl-C, which shows\n"
    "nothing.\n");

namespace {

constexpr double kReadingShare = 0.7;  // the rest goes into the tables

void RequireFiles(const CommandLine& line) {
  const std::vector<Argument>& files = line.Operands();
  if (files.empty()) throw UsageFailure({KTEXT("show takes at least one FILE"), {}});
  const auto inputs = std::count_if(files.begin(), files.end(), [](const Argument& file) {
    return file.text == WString(KTEXT("-"));
  });
  if (inputs > 1) throw UsageFailure({KTEXT("standard input can be one FILE only"), {}});
}

class Show {
 public:
  Show(const CommandLine& line, Console& console)
      : m_line(line),
        m_console(console),
        m_unit(ChooseFileUnit(line)),
        m_style(line.Has(Option::To) ? StyleOfOptions(line)
                                     : StyleOfSettings(OpenSettings(line, console), line)) {}

  // Nothing is printed before everything is ready.
  Status Run() {
    {
      Progress progress(m_line, m_console);
      Read(progress);
      MakeTexts(progress);
    }
    for (std::size_t i = 0; i < m_files.size(); ++i) {
      Complain(m_files[i]);
      m_console.Print(m_texts[i]);
    }
    return m_status;
  }

 private:
  void Read(Progress& progress) {
    const Progress::Task task(progress, KTEXT("reading"), kReadingShare);
    m_files = ReadPointFiles(m_line.Operands(), m_unit, progress);
  }

  void MakeTexts(Progress& progress) {
    const Progress::Task task(progress, KTEXT("making the tables"), 1 - kReadingShare);
    bool isFirst = true;
    for (std::size_t i = 0; i < m_files.size(); ++i) {
      const auto count = static_cast<double>(m_files.size());
      const auto begin = static_cast<double>(i);
      const Watch watch = [&progress, begin, count](double fraction) {
        progress.Set((begin + fraction) / count);
      };
      m_texts.push_back(m_files[i].failure.empty() ? TextOf(m_files[i], isFirst, watch) : "");
      isFirst = isFirst && !m_files[i].failure.empty();
    }
    progress.Set(1);
  }

  // Of several files each table has the name of its file above it, and the values of all make one
  // list with one line of heads.
  std::string TextOf(const ReadFile& file, bool isFirst, const Watch& watch) const {
    const Table table = MakePointTable(file.points.points, m_unit, m_style, watch);
    if (m_line.Has(Option::Csv)) {
      const std::string csv = table.Csv();
      return isFirst ? csv : csv.substr(csv.find('\n') + 1);
    }
    const std::string text = table.Aligned(m_console.HasColour());
    if (m_files.size() == 1) return text;
    const std::string name = (Shown(file.source.text) + KTEXT(":\n")).ToUtf8().c_str();
    return (isFirst ? "" : "\n") + name + text;
  }

  void Complain(const ReadFile& file) {
    if (!file.failure.empty()) {
      ComplainOfFailure(file.failure, m_console);
      m_status = kFailed;
      return;
    }
    ComplainOfRows(file.points, file.source, m_console);
    if (!file.points.faults.empty() && m_status == kDone) m_status = kPartly;
  }

  const CommandLine& m_line;
  Console& m_console;
  const LengthUnit& m_unit;
  const PointStyle m_style;
  std::vector<ReadFile> m_files;
  std::vector<std::string> m_texts;  // one for each file
  Status m_status = kDone;
};

}  // namespace

Status ShowCommand(const CommandLine& line, Console& console) {
  RequireFiles(line);
  return Show(line, console).Run();
}

}  // namespace fieldbook
