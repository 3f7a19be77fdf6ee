#include "fieldbook/points/PointFile.h"

#include <utility>

namespace fieldbook {
namespace {

constexpr double kLookShare = 0.1;  // of the work, for finding the encoding

}  // namespace

Point ToPoint(const PointScan& scan) {
  const PointRow& row = scan.Row();
  Point point{Decode(row.name, true),
              row.easting,
              row.northing,
              row.elevation,
              Decode(row.description, true),
              scan.LineNumber(),
              {}};
  for (const std::string_view other : scan.Others()) point.others.push_back(Decode(other, true));
  while (!point.others.empty() && point.others.back().empty()) point.others.pop_back();
  return point;
}

PointFile ReadPoints(ByteSource& bytes, const LayoutWishes& wishes, const Watch& watch) {
  Watch look;
  if (watch) look = [&watch](double fraction) { watch(kLookShare * fraction); };
  TextSource source(bytes, look);
  PointScan scan(source, wishes);
  PointFile file;
  file.layout = scan.Layout();
  while (const auto kind = scan.Next()) {
    const int line = scan.LineNumber();
    if (watch && static_cast<std::size_t>(line) % kWatchedRows == 0) {
      watch(kLookShare + (1 - kLookShare) * source.Fraction());
    }
    switch (*kind) {
      case LineKind::Point:
        file.points.push_back(ToPoint(scan));
        break;
      case LineKind::Fault:
        file.faults.Add(line, scan.Fault());
        break;
      case LineKind::Other:
        file.others.push_back({line, Decode(scan.Line(), true)});
        break;
    }
  }
  return file;
}

PointFile ReadPoints(std::string_view bytes, const LayoutWishes& wishes) {
  return ReadPoints(*BytesOf(bytes), wishes);
}

}  // namespace fieldbook
