#include "kernel32/ZoneFile.h"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>

using std::chrono::seconds;
using std::chrono::sys_seconds;

namespace {

constexpr std::string_view kMagic = "TZif";
constexpr char kSecondVersion = '2';

// Nothing where it isn't one, or can't be read.
std::optional<std::string> BytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string head(kMagic.size(), '\0');
  if (!file.read(head.data(), static_cast<std::streamsize>(head.size())) || head != kMagic) {
    return std::nullopt;
  }
  std::string bytes = head + std::string((std::istreambuf_iterator<char>(file)), {});
  if (bytes.size() <= kMagic.size()) return std::nullopt;
  return bytes;
}

bool HasTwoParts(std::string_view bytes) {
  return bytes[kMagic.size()] >= kSecondVersion;
}

std::string LastLineOf(std::string_view bytes) {
  if (!HasTwoParts(bytes) || !bytes.ends_with('\n')) return {};
  bytes.remove_suffix(1);
  return std::string(bytes.substr(bytes.rfind('\n') + 1));
}

}  // namespace

std::optional<std::string> LastLineOfZoneFile(const std::string& path) {
  const std::optional<std::string> bytes = BytesOf(path);
  if (!bytes) return std::nullopt;
  return LastLineOf(*bytes);
}

// Takes a part of a file, a head and the tables whose sizes it tells, off the bytes. All numbers
// are big-endian. What isn't there reads as 0, and is told by Failed.
class ZoneFile::Reader {
 public:
  Reader(std::string_view& bytes, std::size_t sizeOfMoment)
      : m_bytes(bytes), m_sizeOfMoment(sizeOfMoment) {
    Take(kMagic.size() + 1 + 15);
    for (std::size_t* const count :
         {&m_marksOfUtc, &m_marksOfStandard, &m_leapSeconds, &m_changes, &m_periods, &m_letters}) {
      *count = static_cast<std::uint32_t>(ToNumber(Take(4)));
    }
  }

  void Tables(ZoneFile& file) {
    const std::string_view moments = Take(m_changes * m_sizeOfMoment);
    const std::string_view periods = Take(m_changes);
    const std::string_view kinds = Take(m_periods * kSizeOfPeriod);
    const std::string_view letters = Take(m_letters);
    Take(m_leapSeconds * (m_sizeOfMoment + 4) + m_marksOfStandard + m_marksOfUtc);
    if (m_failed) return;
    for (std::size_t i = 0; i < m_periods; ++i) {
      const std::string_view kind = kinds.substr(i * kSizeOfPeriod, kSizeOfPeriod);
      const auto name = static_cast<unsigned char>(kind[kSizeOfPeriod - 1]);
      m_failed = m_failed || name >= letters.size();
      if (m_failed) return;
      const std::string_view rest = letters.substr(name);
      file.m_periods.push_back(
          {std::string(rest.substr(0, rest.find('\0'))), seconds(ToNumber(kind.substr(0, 4)))});
    }
    for (std::size_t i = 0; i < m_changes; ++i) {
      const auto period = static_cast<unsigned char>(periods[i]);
      m_failed = m_failed || period >= m_periods;
      file.m_changes.push_back(
          {ToNumber(moments.substr(i * m_sizeOfMoment, m_sizeOfMoment)), period});
    }
  }

  bool Failed() const { return m_failed; }

 private:
  static constexpr std::size_t kSizeOfPeriod = 6;  // offset, whether daylight, place of the name

  static std::int64_t ToNumber(std::string_view bytes) {
    if (bytes.empty()) return 0;
    std::uint64_t number = 0;
    for (const char byte : bytes) number = number << 8 | static_cast<unsigned char>(byte);
    const auto unused = static_cast<int>(8 * (sizeof number - bytes.size()));
    return static_cast<std::int64_t>(number << unused) >> unused;
  }
  std::string_view Take(std::size_t size) {
    if (size > m_bytes.size()) {
      m_failed = true;
      return {};
    }
    const std::string_view taken = m_bytes.substr(0, size);
    m_bytes.remove_prefix(size);
    return taken;
  }

  std::string_view& m_bytes;
  const std::size_t m_sizeOfMoment;
  bool m_failed = false;
  std::size_t m_marksOfUtc, m_marksOfStandard, m_leapSeconds, m_changes, m_periods, m_letters;
};

std::optional<ZoneFile> ZoneFile::Read(const std::string& path) {
  const std::optional<std::string> bytes = BytesOf(path);
  if (!bytes) return std::nullopt;
  std::string_view rest = *bytes;
  ZoneFile file;
  Reader first(rest, 4);
  first.Tables(file);
  bool failed = first.Failed();
  // The second part says all once more, in 64 bits.
  if (!failed && HasTwoParts(*bytes)) {
    file = {};
    Reader second(rest, 8);
    second.Tables(file);
    failed = second.Failed();
  }
  const auto isBefore = [](const Change& a, const Change& b) { return a.moment < b.moment; };
  if (failed || file.m_periods.empty() ||
      !std::is_sorted(file.m_changes.begin(), file.m_changes.end(), isBefore)) {
    return std::nullopt;
  }
  file.m_lastLine = LastLineOf(*bytes);
  file.m_rule = ParseZoneRule(file.m_lastLine);
  return file;
}

ZonePeriod ZoneFile::PeriodAt(sys_seconds moment) const {
  const std::int64_t time = moment.time_since_epoch().count();
  const auto next =
      std::upper_bound(m_changes.begin(), m_changes.end(), time,
                       [](std::int64_t t, const Change& change) { return t < change.moment; });
  if (next == m_changes.end() && m_rule) {
    return m_rule->IsDaylight(moment) ? m_rule->daylight->period : m_rule->standard;
  }
  return m_periods[next == m_changes.begin() ? 0 : std::prev(next)->period];
}
