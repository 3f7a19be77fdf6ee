// Dates and times out of text.
#include <langinfo.h>
#include <oleauto.h>
#include <tchar.h>
#include <windows.h>

#include <array>
#include <chrono>
#include <cmath>
#include <ctime>
#include <cwctype>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month_day;

namespace {

constexpr int kMonths = 12, kWeekdays = 7;
constexpr int kFirstYear = 100, kLastYear = 9999;
constexpr int kLastShortYear = 49;  // the default of CAL_ITWODIGITYEARMAX
constexpr sys_days kDayZero = year(1899) / 12 / 30;
constexpr LCID kEnglish = 0x0409;

constexpr std::array<nl_item, kMonths> kMonthNames = {MON_1, MON_2, MON_3, MON_4,  MON_5,  MON_6,
                                                      MON_7, MON_8, MON_9, MON_10, MON_11, MON_12};
constexpr std::array<nl_item, kMonths> kShortMonthNames = {ABMON_1, ABMON_2,  ABMON_3,  ABMON_4,
                                                           ABMON_5, ABMON_6,  ABMON_7,  ABMON_8,
                                                           ABMON_9, ABMON_10, ABMON_11, ABMON_12};
constexpr std::array<nl_item, kWeekdays> kWeekdayNames = {DAY_1, DAY_2, DAY_3, DAY_4,
                                                          DAY_5, DAY_6, DAY_7};
constexpr std::array<nl_item, kWeekdays> kShortWeekdayNames = {ABDAY_1, ABDAY_2, ABDAY_3, ABDAY_4,
                                                               ABDAY_5, ABDAY_6, ABDAY_7};

// The three numbers of a date by their letters.
using Order = std::string_view;

// A thread under the "C" locale for a scope, or where it was.
class LocaleScope {
 public:
  explicit LocaleScope(bool plain)
      : m_plain(plain ? newlocale(LC_ALL_MASK, "C", nullptr) : nullptr),
        m_old(uselocale(m_plain)) {}
  ~LocaleScope() {
    uselocale(m_old);
    if (m_plain != nullptr) freelocale(m_plain);
  }
  LocaleScope(const LocaleScope&) = delete;
  LocaleScope& operator=(const LocaleScope&) = delete;

 private:
  locale_t m_plain;
  locale_t m_old;
};

// Short names may bear a dot, which the text needn't repeat.
bool IsName(const std::u16string& word, nl_item item) {
  char16_t name[64] = {};
  if (mbstowcs(name, nl_langinfo(item), std::size(name) - 1) == static_cast<std::size_t>(-1)) {
    return false;
  }
  std::u16string_view wanted(name);
  if (wanted.ends_with(u'.')) wanted.remove_suffix(1);
  return !wanted.empty() && _wcsicmp(word.c_str(), std::u16string(wanted).c_str()) == 0;
}

// From 1, or 0.
int FindName(const std::u16string& word, std::span<const nl_item> names) {
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (IsName(word, names[i])) return static_cast<int>(i) + 1;
  }
  return 0;
}

int FindLocalOrEnglishName(const std::u16string& word, std::span<const nl_item> names,
                           std::span<const nl_item> shortNames) {
  for (const bool english : {false, true}) {
    const LocaleScope scope(english);
    if (const int name = FindName(word, names)) return name;
    if (const int name = FindName(word, shortNames)) return name;
  }
  return 0;
}

// Of the day, the month and the year in a short date of the locale.
std::string OrderOfLocale() {
  std::string order;
  for (const char* format = nl_langinfo(D_FMT); *format != 0 && order.size() < 3; ++format) {
    if (*format != '%' || *++format == 0) continue;
    while (*format == '-' || *format == 'E' || *format == 'O') ++format;
    switch (*format) {
      case 'd':
      case 'e':
        order += 'd';
        break;
      case 'm':
      case 'b':
      case 'B':
        order += 'm';
        break;
      case 'y':
      case 'Y':
        order += 'y';
        break;
      case 'F':
        order = "ymd";
        break;
      default:
        break;
    }
  }
  return order.size() == 3 ? order : "mdy";
}

std::optional<sys_days> MakeDate(int y, int m, int d) {
  if (y < 0) return {};
  if (y <= kLastShortYear) {
    y += 2000;
  } else if (y < 100) {
    y += 1900;
  }
  const auto date = year(y) / m / d;
  if (y < kFirstYear || y > kLastYear || m < 1 || d < 1 || !date.ok()) return {};
  return sys_days(date);
}

int CurrentYear() {
  const std::time_t now = std::time(nullptr);
  tm fields;
  localtime_r(&now, &fields);
  return fields.tm_year + 1900;
}

enum class Half { None, Morning, Afternoon };

// What a text says, piece by piece.
class DateText {
 public:
  explicit DateText(const char16_t* text) : m_text(text) {}

  // False for a text with anything that belongs to no date or time.
  bool Read() {
    while (SkipSpace(), *m_text != 0) {
      const bool isWord = std::iswalpha(*m_text) != 0;
      if (!(isWord ? ReadWord() : ReadNumber())) return false;
      if (!SkipSeparator(isWord)) return false;
    }
    return true;
  }

  bool HasDate() const { return m_month != 0 || !m_numbers.empty(); }
  bool HasTime() const { return m_hasTime; }

  std::optional<sys_days> Date() const {
    if (m_month != 0) return DateWithName();
    if (m_numbers.size() == 3) return DateOfThree();
    if (m_numbers.size() == 2) return DateOfTwo();
    return {};
  }

  // The part of the day; nothing for a time that isn't.
  std::optional<double> Time() const {
    int hour = m_time[0];
    if (m_half == Half::Morning && hour == 12) hour = 0;
    if (m_half == Half::Afternoon && hour < 12) hour += 12;
    if (hour > 23 || m_time[1] > 59 || m_time[2] > 59) return {};
    return (hour * 3600 + m_time[1] * 60 + m_time[2]) / 86400.0;
  }

 private:
  static constexpr std::u16string_view kSeparators = u"/-,";

  static bool IsDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }
  void SkipSpace() {
    while (std::iswspace(*m_text) != 0) ++m_text;
  }

  // One behind each piece, where another follows; a dot may also end an abbreviation.
  bool SkipSeparator(bool behindWord) {
    const bool endsWord = behindWord && *m_text == u'.';
    if (endsWord) ++m_text;
    SkipSpace();
    const bool isDot = *m_text == u'.' && m_hasDots;
    if (*m_text == 0 || (!isDot && kSeparators.find(*m_text) == std::u16string_view::npos)) {
      return true;
    }
    ++m_text;
    SkipSpace();
    return *m_text != 0;
  }

  std::optional<int> TakeNumber() {
    if (!IsDigit(*m_text)) return {};
    int value = 0;
    for (; IsDigit(*m_text) && value <= kLastYear; ++m_text) value = value * 10 + (*m_text - u'0');
    if (value > kLastYear) return {};
    return value;
  }

  bool ReadNumber() {
    const std::optional<int> number = TakeNumber();
    if (!number) return false;
    if (*m_text == u':') return ReadTime(*number);
    m_numbers.push_back(*number);
    return m_numbers.size() <= 4;
  }

  bool ReadTime(int hour) {
    if (m_hasTime) return false;
    m_hasTime = true;
    m_time = {hour, 0, 0};
    for (int part = 1; part < 3 && *m_text == u':'; ++part) {
      ++m_text;
      const std::optional<int> number = TakeNumber();
      if (!number) return false;
      m_time[part] = *number;
    }
    return *m_text != u':';
  }

  bool ReadWord() {
    std::u16string word;
    while (std::iswalpha(*m_text) != 0) word += *m_text++;
    if (const int month = FindLocalOrEnglishName(word, kMonthNames, kShortMonthNames)) {
      if (m_month != 0) return false;
      m_month = month;
      return true;
    }
    if (FindLocalOrEnglishName(word, kWeekdayNames, kShortWeekdayNames) != 0) return true;
    const Half half = HalfOf(word);
    return half != Half::None && TakeHalf(half);
  }

  static Half HalfOf(const std::u16string& word) {
    if (_wcsicmp(word.c_str(), u"am") == 0) return Half::Morning;
    if (_wcsicmp(word.c_str(), u"pm") == 0) return Half::Afternoon;
    return Half::None;
  }

  // It belongs to the time before it, or makes the number before it one.
  bool TakeHalf(Half half) {
    if (m_half != Half::None) return false;
    m_half = half;
    if (m_hasTime) return true;
    if (m_numbers.empty()) return false;
    m_hasTime = true;
    m_time = {m_numbers.back(), 0, 0};
    m_numbers.pop_back();
    return true;
  }

  std::optional<sys_days> DateWithName() const {
    if (m_numbers.size() > 2 || m_numbers.empty()) return {};
    const int first = m_numbers.front(), second = m_numbers.back();
    if (m_numbers.size() == 2) {
      if (const auto date = MakeDate(second, m_month, first)) return date;
      return MakeDate(first, m_month, second);
    }
    if (const auto date = MakeDate(CurrentYear(), m_month, first)) return date;
    return MakeDate(first, m_month, 1);
  }

  std::optional<sys_days> DateOfThree() const {
    const std::string local = OrderOfLocale();
    for (const Order order :
         {Order(local), Order("ymd"), Order("ydm"), Order("mdy"), Order("dmy")}) {
      const auto number = [&](char letter) { return m_numbers[order.find(letter)]; };
      if (const auto date = MakeDate(number('y'), number('m'), number('d'))) return date;
    }
    return {};
  }

  std::optional<sys_days> DateOfTwo() const {
    const std::string local = OrderOfLocale();
    const bool dayFirst = local.find('d') < local.find('m');
    const int first = m_numbers[0], second = m_numbers[1];
    const int thisYear = CurrentYear();
    if (const auto date =
            MakeDate(thisYear, dayFirst ? second : first, dayFirst ? first : second)) {
      return date;
    }
    if (const auto date =
            MakeDate(thisYear, dayFirst ? first : second, dayFirst ? second : first)) {
      return date;
    }
    if (const auto date = MakeDate(second, first, 1)) return date;
    return MakeDate(first, second, 1);
  }

  const char16_t* m_text;
  // The short date of the locale has them.
  const bool m_hasDots = std::string_view(nl_langinfo(D_FMT)).find('.') != std::string_view::npos;
  std::vector<int> m_numbers;
  int m_month = 0;
  bool m_hasTime = false;
  std::array<int, 3> m_time = {};
  Half m_half = Half::None;
};

std::optional<double> ReadDate(const char16_t* text, ULONG flags) {
  DateText read(text);
  if (!read.Read() || (!read.HasDate() && !read.HasTime())) return {};
  const std::optional<double> time = read.Time();
  const std::optional<sys_days> day = read.HasDate() ? read.Date() : kDayZero;
  if (!time || !day) return {};
  const int number = static_cast<int>((*day - kDayZero).count());
  if ((flags & VAR_TIMEVALUEONLY) != 0) return *time;
  if ((flags & VAR_DATEVALUEONLY) != 0) return number;
  return number < 0 ? number - *time : number + *time;
}

}  // namespace

HRESULT VarDateFromStr(const OLECHAR* text, LCID locale, ULONG flags, DATE* date) {
  const bool isDefault =
      locale == 0 || locale == LOCALE_USER_DEFAULT || locale == LOCALE_SYSTEM_DEFAULT;
  if (date == nullptr || (!isDefault && locale != LOCALE_INVARIANT && locale != kEnglish)) {
    return E_INVALIDARG;
  }
  const LocaleScope scope(!isDefault);
  const std::optional<double> read = text == nullptr ? std::nullopt : ReadDate(text, flags);
  if (!read) return DISP_E_TYPEMISMATCH;
  *date = *read;
  return S_OK;
}
