// fieldbook show: the points of a file as a table.
#include <algorithm>
#include <array>
#include <optional>
#include <set>

#include "fieldbook/commands/PointTable.h"
#include "fieldbook/commands/RecentFiles.h"
#include "fieldbook/commands/Settings.h"
#include "fieldbook/points/OpenBytes.h"
#include "fieldbook/points/PointReading.h"
#include "kelp0lang/NaturalOrder.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {

const WChar* const kShowHelp = KTEXT(
    "Usage: fieldbook show FILE... [--from UNIT] [--columns P,E,N,Z,D] [--to UNIT]\n"
    "                      [--decimals N] [--denominator N] [--reduced] [--csv]\n"
    "                      [--points NAMES]\n"
    "                      [--sort KEY] [--within E1,N1,E2,N2] [--limit N]\n"
    "                      [--progress] [--verbose]\n"
    "\n"
    "Shows the points of files as tables, in the units, with the decimals and in\n"
    "the order of coordinates of the settings, see fieldbook units --help.\n"
    "\n"
    "  FILE             rows of point, coordinates, elevation, description;\n"
    "                   - reads standard input, and http://... or https://... what\n"
    "                   a server has. Several files are read at once and shown in\n"
    "                   this order, each below its name\n"
    "  --from UNIT      unit of the coordinates in the file, where its heads have\n"
    "                   none, instead of file-units of the settings\n"
    "  --columns LIST   the order of the columns, by P(oint), E(asting), N(orthing),\n"
    "                   Z (elevation) and D(escription); - is a field not to be read\n"
    "  --to UNIT        unit to show them in, instead of that of the settings\n"
    "  --decimals N     decimals, 0 to 9 (with --to 3; of chains 5)\n"
    "  --denominator N  of fractions of an inch: 4, 8, 16, 32 or 64 (with --to 16)\n"
    "  --reduced        feet and inches as 12'6 1/2\", not 12'6\"4/8\n"
    "  --csv            comma-separated values instead of a table: a points file\n"
    "                   again. Several files make one list\n"
    "  --points NAMES   these points alone; commas between the names\n"
    "  --sort KEY       by name (P2 before P10), easting, northing, elevation or\n"
    "                   description\n"
    "  --within E1,N1,E2,N2\n"
    "                   the points between these coordinates alone, in the unit in\n"
    "                   which they are shown\n"
    "  --limit N        no more than so many points\n"
    "  --progress       a bar on standard error, elsewhere than on a terminal too;\n"
    "                   there it appears by itself when the work takes long\n"
    "  --verbose        the local time of the run on standard error\n"
    "  --data DIR       folder of the settings\n"
    "\n"
    "UNIT is m, ft (international foot), us-ft (US survey foot), ft-in and us-ft-in\n"
    "(the same as feet and inches, such as 5'6\"3/8), ch or us-ch (chain of 66 feet).\n"
    "\n"
    "A first row of heads in the usual words decides which column is which, and a\n"
    "unit in them, such as (US ft), the unit of the file. Heads of x and y alone\n"
    "don't tell which is north: --columns does. Without heads the order is that of\n"
    "the setting coord-display-mode. What was taken stands above the table; with\n"
    "--csv on standard error, where neither heads nor options decided it.\n"
    "\n"
    "Fields are separated by tabs, semicolons, commas or blanks; the program finds\n"
    "out which. A field may stand in quotes, with \"\" for a quote in it. What\n"
    "follows the last column is description, to the end of the row. Elevation and\n"
    "description may be missing; in rows with blanks \"\" stands for no elevation.\n"
    "Where commas don't separate, numbers may have a decimal comma.\n"
    "\n"
    "Empty rows and rows with # in front are skipped. The text is UTF-8, UTF-16 or\n"
    "Latin-1.\n"
    "\n"
    "A row that can't be read is reported as FILE:LINE: what is wrong, ten of each\n"
    "kind, the others are shown, and the exit status is 2. A file that can't be read\n"
    "is reported, the others are shown, and the exit status is 1. So it is after\n"
    "Ctrl-C, which ends the output.\n");

namespace {

enum class SortKey { Name, Easting, Northing, Elevation, Description };

struct SortRule {
  const WChar* name;
  SortKey key;
};
constexpr SortRule kSorts[] = {{KTEXT("name"), SortKey::Name},
                               {KTEXT("easting"), SortKey::Easting},
                               {KTEXT("northing"), SortKey::Northing},
                               {KTEXT("elevation"), SortKey::Elevation},
                               {KTEXT("description"), SortKey::Description}};

std::vector<WString> SplitAtCommas(const WString& text) {
  std::vector<WString> parts;
  WideView rest = ViewOf(text);
  for (;;) {
    const std::size_t comma = std::min(rest.find(KTEXT(',')), rest.size());
    parts.push_back(ToWString(Trimmed(rest.substr(0, comma))));
    if (comma == rest.size()) return parts;
    rest.remove_prefix(comma + 1);
  }
}

// Which points are shown, and how many.
class PointFilter {
 public:
  PointFilter(const CommandLine& line, const LengthUnit& shown)
      : m_shown(shown), m_limit(ChooseLimit(line, SIZE_MAX)) {
    if (const Argument* names = line.Value(Option::Points)) {
      for (const WString& name : SplitAtCommas(names->text)) {
        std::string bytes;
        AppendUtf8(bytes, name);
        m_names.insert(bytes);
      }
    }
    if (const Argument* window = line.Value(Option::Within)) ReadWindow(window->text);
  }

  std::size_t Limit() const { return m_limit; }

  bool Takes(const PointRow& row, const LengthUnit& unit) const {
    if (!m_names.empty() && m_names.find(row.name) == m_names.end()) return false;
    if (!m_window) return true;
    const double east = ConvertDist(row.easting, unit.unit, m_shown.unit);
    const double north = ConvertDist(row.northing, unit.unit, m_shown.unit);
    const auto& [east1, north1, east2, north2] = *m_window;
    return std::min(east1, east2) <= east && east <= std::max(east1, east2) &&
           std::min(north1, north2) <= north && north <= std::max(north1, north2);
  }

 private:
  void ReadWindow(const WString& text) {
    const std::vector<WString> parts = SplitAtCommas(text);
    std::array<double, 4> window{};
    if (parts.size() != window.size()) {
      throw UsageFailure({KTEXT("{1}: \"{2}\" isn't four coordinates E1,N1,E2,N2"),
                          {NameOf(Option::Within), Quoted(text)}});
    }
    for (std::size_t i = 0; i < window.size(); ++i) {
      const Reading reading = ReadLength(parts[i], m_shown, DecimalMark::Point);
      if (reading.fault) {
        throw UsageFailure({KTEXT("{1} \"{2}\": {3}"),
                            {NameOf(Option::Within), Quoted(parts[i]), reading.fault.Text()}});
      }
      window[i] = reading.value;
    }
    m_window = window;
  }

  const LengthUnit& m_shown;
  std::set<std::string, std::less<>> m_names;  // empty: all
  std::optional<std::array<double, 4>> m_window;
  const std::size_t m_limit;
};

// The points of one file, sorted.
class SortedPoints {
 public:
  explicit SortedPoints(SortKey key) : m_key(key) {}

  void Add(const PointRow& row) {
    m_points.push_back({std::string(row.name), std::string(row.description), row.easting,
                        row.northing, row.elevation});
  }
  template <class Take>
  void ForEach(const Take& take) {
    std::stable_sort(m_points.begin(), m_points.end(),
                     [this](const Kept& a, const Kept& b) { return IsBefore(a, b); });
    for (const Kept& p : m_points) {
      if (!take(PointRow{p.name, p.easting, p.northing, p.elevation, p.description})) return;
    }
  }

 private:
  struct Kept {
    std::string name;
    std::string description;
    double easting;
    double northing;
    double elevation;
  };

  bool IsBefore(const Kept& a, const Kept& b) const {
    switch (m_key) {
      case SortKey::Easting:
        return a.easting < b.easting;
      case SortKey::Northing:
        return a.northing < b.northing;
      case SortKey::Elevation:
        return a.elevation < b.elevation;
      case SortKey::Description:
        return kelp::CompareNaturally(a.description, b.description) < 0;
      default:
        return kelp::CompareNaturally(a.name, b.name) < 0;
    }
  }

  SortKey m_key;
  std::vector<Kept> m_points;
};

class Show {
 public:
  Show(const CommandLine& line, Console& console)
      : m_line(line),
        m_console(console),
        m_settings(OpenSettings(line, console)),
        m_wishes(ChooseLayout(line, m_settings)),
        m_style(ChoosePointStyle(m_settings.units, line)),
        m_filter(line, *m_style.plane.unit),
        m_sort(FindChoice(line, Option::Sort, kSorts)) {}

  Status Run() {
    if (m_line.Has(Option::Csv)) {
      ShowList();
    } else {
      ShowTables();
    }
    RememberFiles(m_wellRead);
    return m_status;
  }

 private:
  struct Shown {
    explicit Shown(const PointStyle& style) : table(MakePointTable(style)) {}
    PointLayout layout;
    FaultList faults;
    Table table;
  };

  // Passes the points that are shown on, until one isn't taken.
  template <class Take>
  void Scan(const Argument& file, PointScan& scan, const TextSource& source, FaultList& faults,
            const Watch& watch, const Take& take) const {
    std::size_t points = 0, taken = 0;
    std::optional<SortedPoints> sorted;
    if (m_sort != nullptr) sorted.emplace(m_sort->key);
    const auto takeSome = [&](const PointRow& row) {
      return taken++ < m_filter.Limit() && take(row);
    };
    while (const auto kind = scan.Next()) {
      if (static_cast<std::size_t>(scan.LineNumber()) % kWatchedRows == 0) watch(source.Fraction());
      if (*kind == LineKind::Fault) faults.Add(scan.LineNumber(), scan.Fault());
      if (*kind != LineKind::Point) continue;
      ++points;
      if (!m_filter.Takes(scan.Row(), *scan.Layout().unit)) continue;
      if (sorted) {
        sorted->Add(scan.Row());
      } else if (!takeSome(scan.Row())) {
        break;
      }
    }
    RequirePoints(file, points, faults);
    if (sorted) sorted->ForEach(takeSome);
  }

  void ReadInto(Shown& shown, const Argument& file, ByteSource& bytes, const Watch& watch) const {
    TextSource source(bytes);
    PointScan scan(source, m_wishes);
    shown.layout = scan.Layout();
    CoordinateWriter writer(*shown.layout.unit, m_style);
    Scan(file, scan, source, shown.faults, watch, [&](const PointRow& row) {
      shown.table.AddCell(row.name);
      for (const std::string& text : writer.Write(row)) shown.table.AddCell(text);
      shown.table.AddCell(row.description);
      return true;
    });
  }

  // Nothing is printed before all tables are ready.
  void ShowTables() {
    const std::vector<Argument>& files = m_line.Operands();
    std::vector<Shown> shown(files.size(), Shown(m_style));
    std::vector<WString> failures;
    {
      Progress progress(m_line, m_console);
      const Progress::Task task(progress, KTEXT("reading"), 1);
      const FileWork work = [&](std::size_t at, ByteSource& bytes, const Watch& watch) {
        ReadInto(shown[at], files[at], bytes, watch);
      };
      failures = ForEachFile(files, work, progress);
    }
    bool isFirst = true;
    for (std::size_t at = 0; at < files.size(); ++at) {
      Complain(files[at], shown[at].faults, failures[at]);
      if (!failures[at].empty()) continue;
      if (!isFirst) m_console.Print("\n");
      isFirst = false;
      if (files.size() > 1) m_console.PrintLine(fieldbook::Shown(files[at].text) + KTEXT(':'));
      m_console.PrintLine(LayoutText(shown[at].layout));
      shown[at].table.WriteAligned(m_console.HasColour(),
                                   [this](std::string_view piece) { m_console.Print(piece); });
    }
  }

  // The list goes out as it is read, so that a file of any size takes no memory.
  void ShowList() {
    Progress progress(m_line, m_console);
    const Progress::Task task(progress, KTEXT("reading"), 1);
    m_console.Print(CsvLine(PointHeads(m_style)) + '\n');
    for (const Argument& file : m_line.Operands()) {
      FaultList faults;
      WString failure;
      try {
        ListFile(file, faults, progress);
      } catch (const LayoutFailure& why) {
        failure = InFile(file, why.GetMsg());
      } catch (const Failure& why) {
        progress.RequireGoingOn();
        failure = why.GetMsg();
      }
      Complain(file, faults, failure);
    }
    progress.Set(1);
  }

  void ListFile(const Argument& file, FaultList& faults, Progress& progress) {
    const auto bytes = OpenAny(file, progress);
    TextSource source(*bytes);
    PointScan scan(source, m_wishes);
    const PointLayout& layout = scan.Layout();
    if (layout.columnsBy == Decider::Setting || layout.unitBy == Decider::Setting) {
      m_console.Complain(LayoutText(layout));
    }
    CoordinateWriter writer(*layout.unit, m_style);
    constexpr std::size_t kPiece = 1 << 16;
    std::string piece;
    const Watch watch = [&progress](double fraction) { progress.Set(fraction); };
    Scan(file, scan, source, faults, watch, [&](const PointRow& row) {
      AppendCsvField(piece, row.name, true);
      for (const std::string& text : writer.Write(row)) {
        piece += ',';
        AppendCsvField(piece, text, false);
      }
      piece += ',';
      AppendCsvField(piece, row.description, false);
      piece += '\n';
      if (piece.size() >= kPiece) {
        m_console.Print(piece);
        piece.clear();
      }
      return !m_console.IsOutputLost();
    });
    m_console.Print(piece);
  }

  // What can't be opened twice is kept, since it is looked at twice.
  std::unique_ptr<ByteSource> OpenAny(const Argument& file, Progress& progress) {
    if (IsWebAddress(file.text)) {
      m_kept = FetchBeside(file, progress);
    } else if (file.text == WString(KTEXT("-"))) {
      m_kept = ReadAll(file, [&progress](double) { progress.RequireGoingOn(); });
      progress.RequireGoingOn();
    } else {
      return OpenBytes(file);
    }
    return BytesOf(m_kept);
  }

  void Complain(const Argument& file, const FaultList& faults, const WString& failure) {
    if (!failure.empty()) {
      ComplainOfFailure(failure, m_console);
      m_status = kFailed;
      return;
    }
    m_wellRead.push_back(file);
    ComplainOfRows(faults, file, m_console);
    if (!faults.IsEmpty() && m_status == kDone) m_status = kPartly;
  }

  const CommandLine& m_line;
  Console& m_console;
  const Settings m_settings;
  const LayoutWishes m_wishes;
  const PointStyle m_style;
  const PointFilter m_filter;
  const SortRule* m_sort;
  std::string m_kept;
  std::vector<Argument> m_wellRead;
  Status m_status = kDone;
};

}  // namespace

Status ShowCommand(const CommandLine& line, Console& console) {
  RequireFiles(line);
  return Show(line, console).Run();
}

}  // namespace fieldbook
