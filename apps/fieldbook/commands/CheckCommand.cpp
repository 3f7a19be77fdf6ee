// fieldbook check: names that come twice, and points that lie too near to each other.
#include "fieldbook/commands/Commands.h"
#include "fieldbook/commands/RecentFiles.h"
#include "fieldbook/commands/Settings.h"
#include "fieldbook/commands/Tolerance.h"
#include "fieldbook/points/PointCheck.h"
#include "fieldbook/points/PointReading.h"
#include "kelp0lang/LegacyGeometry.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {

const WChar* const kCheckHelp = KTEXT(
    "Usage: fieldbook check FILE... [--tolerance LENGTH] [--limit N] [--from UNIT]\n"
    "                       [--columns P,E,N,Z,D] [--progress] [--data DIR]\n"
    "\n"
    "Looks through points files, all together, for names that come again and for\n"
    "points that lie nearer to each other than the tolerance.\n"
    "\n"
    "  FILE                points files, see fieldbook show --help\n"
    "  --tolerance LENGTH  instead of that of the settings, see fieldbook tolerance\n"
    "                      --help; 0 looks for names alone\n"
    "  --limit N           how many of each kind are listed (10)\n"
    "  --from UNIT         unit of the coordinates in the files, where their heads\n"
    "                      have none\n"
    "  --columns LIST      the order of their columns, where they have no heads\n"
    "  --progress          a bar on standard error\n"
    "  --data DIR          folder of the settings\n"
    "\n"
    "Distances are those in the plan; elevations don't count. Each point is told\n"
    "once, with one that stands before it: of 1000 points in one place 999 are told.\n"
    "\n"
    "Exit status: 0 nothing found, 1 a file can't be read, 2 something found, or rows\n"
    "that can't be read.\n");

namespace {

// What a check needs of a file. Names stand in one text, since a million of them would be a million
// little pieces of memory.
struct CheckedFile {
  PointLayout layout;
  FaultList faults;
  std::vector<PlanePosition> positions;
  std::string names;
  std::vector<std::size_t> nameEnds;
  std::vector<int> lines;
};

void ReadInto(CheckedFile& checked, ByteSource& bytes, const LayoutWishes& wishes,
              const Watch& watch) {
  TextSource source(bytes);
  PointScan scan(source, wishes);
  checked.layout = scan.Layout();
  const enumDistUnits unit = checked.layout.unit->unit;
  while (const auto kind = scan.Next()) {
    if (static_cast<std::size_t>(scan.LineNumber()) % kWatchedRows == 0) watch(source.Fraction());
    if (*kind == LineKind::Fault) checked.faults.Add(scan.LineNumber(), scan.Fault());
    if (*kind != LineKind::Point) continue;
    const PointRow& row = scan.Row();
    checked.positions.push_back({ConvertDist(row.easting, unit, enumDistUnits::Metre),
                                 ConvertDist(row.northing, unit, enumDistUnits::Metre)});
    checked.names += row.name;
    checked.nameEnds.push_back(checked.names.size());
    checked.lines.push_back(scan.LineNumber());
  }
}

class Check {
 public:
  Check(const CommandLine& line, Console& console)
      : m_line(line),
        m_console(console),
        m_settings(OpenSettings(line, console)),
        m_wishes(ChooseLayout(line, m_settings)),
        m_tolerance(ChooseTolerance()),
        m_limit(ChooseLimit(line, kListed)),
        m_files(line.Operands().size()) {}

  Status Run() {
    Read();
    Join();
    const std::vector<PointPair> alike = FindNamedAlike(m_names);
    List(alike, [this](const PointPair& pair) {
      return Message{KTEXT("{1}: the name \"{2}\" is that of {3} too"),
                     {Place(pair.point), NameOf(pair.point), Place(pair.before)}};
    });
    const std::vector<PointPair> near =
        m_tolerance > 0 ? FindNear(m_positions, m_tolerance) : std::vector<PointPair>();
    List(near, [this](const PointPair& pair) {
      return Message{KTEXT("{1}: \"{2}\" lies {3} from \"{4}\" ({5})"),
                     {Place(pair.point), NameOf(pair.point), Distance(pair), NameOf(pair.before),
                      Place(pair.before)}};
    });
    Summarize(alike.size(), near.size());
    const bool isFound = !alike.empty() || !near.empty();
    return m_status == kDone && isFound ? kPartly : m_status;
  }

 private:
  static constexpr std::size_t kListed = 10;

  double ChooseTolerance() {
    const Argument* given = m_line.Value(Option::Tolerance);
    if (given == nullptr) return ReadTolerance(m_console);
    return ParseTolerance(fieldbook::NameOf(Option::Tolerance), given->text, m_settings);
  }

  void Read() {
    const std::vector<Argument>& files = m_line.Operands();
    std::vector<WString> failures;
    {
      Progress progress(m_line, m_console);
      const Progress::Task task(progress, KTEXT("reading"), 1);
      const FileWork work = [&](std::size_t at, ByteSource& bytes, const Watch& watch) {
        ReadInto(m_files[at], bytes, m_wishes, watch);
        RequirePoints(files[at], m_files[at].positions.size(), m_files[at].faults);
      };
      failures = ForEachFile(files, work, progress);
    }
    std::vector<Argument> wellRead;
    for (std::size_t at = 0; at < files.size(); ++at) {
      if (!failures[at].empty()) {
        ComplainOfFailure(failures[at], m_console);
        m_status = kFailed;
        m_files[at] = CheckedFile();
        continue;
      }
      wellRead.push_back(files[at]);
      const WString layout = LayoutText(m_files[at].layout);
      m_console.PrintLine(files.size() > 1 ? InFile(files[at], layout) : layout);
      ComplainOfRows(m_files[at].faults, files[at], m_console);
      if (!m_files[at].faults.IsEmpty() && m_status == kDone) m_status = kPartly;
    }
    RememberFiles(wellRead);
  }

  // All files as one list.
  void Join() {
    for (const CheckedFile& file : m_files) {
      m_begins.push_back(m_positions.size());
      m_positions.insert(m_positions.end(), file.positions.begin(), file.positions.end());
      std::size_t begin = 0;
      for (const std::size_t end : file.nameEnds) {
        m_names.push_back(std::string_view(file.names).substr(begin, end - begin));
        begin = end;
      }
    }
  }

  template <class Tell>
  void List(const std::vector<PointPair>& pairs, const Tell& tell) {
    const std::size_t listed = std::min(pairs.size(), m_limit);
    for (std::size_t i = 0; i < listed; ++i) m_console.PrintLine(tell(pairs[i]).Text());
    if (listed == pairs.size() || listed == 0) return;
    m_console.PrintLine(
        Message{KTEXT("and {1} more"), {WString::ValueOf(static_cast<int>(pairs.size() - listed))}}
            .Text());
  }

  void Summarize(std::size_t alike, std::size_t near) {
    const auto count = [](std::size_t number) {
      return WString::ValueOf(static_cast<int>(number));
    };
    m_console.PrintLine(m_tolerance > 0
                            ? Message{KTEXT("{1} points: {2} with the name of another, {3} nearer "
                                            "than {4} to another"),
                                      {count(m_positions.size()), count(alike), count(near),
                                       ToleranceText(m_tolerance, m_settings)}}
                                  .Text()
                            : Message{KTEXT("{1} points: {2} with the name of another"),
                                      {count(m_positions.size()), count(alike)}}
                                  .Text());
  }

  // "FILE:LINE".
  WString Place(std::size_t at) const {
    const auto next = std::upper_bound(m_begins.begin(), m_begins.end(), at);
    const auto file = static_cast<std::size_t>(next - m_begins.begin()) - 1;
    const WString name = Shown(m_line.Operands()[file].text) + KTEXT(':');
    return name.Concat(WString::ValueOf(m_files[file].lines[at - m_begins[file]]));
  }

  WString NameOf(std::size_t at) const { return Quoted(Decode(m_names[at], true)); }

  WString Distance(const PointPair& pair) const {
    const PlanePosition& a = m_positions[pair.point];
    const PlanePosition& b = m_positions[pair.before];
    return ToleranceText(Distanza2pt(a.easting, a.northing, b.easting, b.northing), m_settings);
  }

  const CommandLine& m_line;
  Console& m_console;
  const Settings m_settings;
  const LayoutWishes m_wishes;
  const double m_tolerance;  // metres; 0: distances aren't looked at
  const std::size_t m_limit;
  std::vector<CheckedFile> m_files;
  std::vector<std::size_t> m_begins;  // of each file in the lists of all
  std::vector<PlanePosition> m_positions;
  std::vector<std::string_view> m_names;
  Status m_status = kDone;
};

}  // namespace

Status CheckCommand(const CommandLine& line, Console& console) {
  RequireFiles(line);
  return Check(line, console).Run();
}

}  // namespace fieldbook
