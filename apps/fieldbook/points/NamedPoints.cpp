#include "fieldbook/points/NamedPoints.h"

#include <algorithm>
#include <map>

namespace fieldbook {
namespace {

bool SamePlace(const Point& a, const Point& b) {
  return a.northing == b.northing && a.easting == b.easting && a.elevation == b.elevation;
}

class Search {
 public:
  Search(const Argument& file, const std::vector<WString>& names) : m_file(file) {
    for (const WString& name : names) {
      std::string bytes;
      AppendUtf8(bytes, name);
      if (std::find(m_names.begin(), m_names.end(), bytes) == m_names.end()) {
        m_names.push_back(std::move(bytes));
      }
    }
  }

  PointLayout Run(ByteSource& bytes, const LayoutWishes& wishes, const Watch& watch) {
    TextSource source(bytes);
    PointScan scan(source, wishes);
    while (const auto kind = scan.NextNamed(m_names)) {
      watch(source.Fraction());
      if (*kind == LineKind::Fault) {
        throw Failure(
            {KTEXT("{1}:{2}: {3}"),
             {Shown(m_file.text), WString::ValueOf(scan.LineNumber()), scan.Fault().Text()}});
      }
      Take(ToPoint(scan));
    }
    return scan.Layout();
  }

  // A name that stands for several places is a failure, since either could be meant.
  void Take(const Point& point) {
    const auto [found, isNew] = m_found.emplace(point.name, point);
    if (isNew || SamePlace(found->second, point)) return;
    throw Failure({KTEXT("{1}: there are several points \"{2}\", in lines {3} and {4}"),
                   {Shown(m_file.text), Quoted(point.name), WString::ValueOf(found->second.line),
                    WString::ValueOf(point.line)}});
  }

  const Point& Require(const WString& name) const {
    const auto found = m_found.find(name);
    if (found != m_found.end()) return found->second;
    throw Failure({KTEXT("{1}: there is no point \"{2}\""), {Shown(m_file.text), Quoted(name)}});
  }

 private:
  const Argument& m_file;
  std::vector<std::string> m_names;
  std::map<WString, Point> m_found;
};

}  // namespace

NamedPoints FindPoints(const Argument& file, const std::vector<WString>& names,
                       const LayoutWishes& wishes, const CommandLine& line, Console& console) {
  Progress progress(line, console);
  const Progress::Task reading(progress, KTEXT("reading"), 1);
  NamedPoints found;
  Search search(file, names);
  WithFile(
      file,
      [&](ByteSource& bytes, const Watch& watch) {
        found.layout = search.Run(bytes, wishes, watch);
      },
      progress);
  for (const WString& name : names) found.points.push_back(search.Require(name));
  return found;
}

std::vector<WString> NamesBehind(const std::vector<Argument>& operands, std::size_t first) {
  std::vector<WString> names;
  for (std::size_t at = first; at < operands.size(); ++at) names.push_back(operands[at].text);
  return names;
}

}  // namespace fieldbook
