// How far a post has come, for a host that shows it.
//
//   const auto& stat = client.PostStat();
//   Show(stat.ActualPostedByte(), stat.ActualTotalByte());
//
// Readers throw a contract error while no post context runs. The operations that begin with "_" are
// the client's. Actual bytes are those of the whole body, with names and separators; the others are
// those of values.
#pragma once

#include <string_view>
#include <utility>

#include "kelp0lang/HttpTool.h"

namespace Dovek {

template <class Tool>
class CHttpPostStatT {
 public:
  using Text = typename Tool::Text;

  CHttpPostStatT() = default;
  CHttpPostStatT(const CHttpPostStatT& other) { *this = other; }
  // With copies of the two texts; where there is no memory for them nothing has changed.
  CHttpPostStatT& operator=(const CHttpPostStatT& other) {
    if (this == &other) return *this;
    Text name = Tool::Copy(other.m_name.get());
    Text filePath = Tool::Copy(other.m_filePath.get());
    m_active = other.m_active;
    m_numbers = other.m_numbers;
    m_name = std::move(name);
    m_filePath = std::move(filePath);
    m_current = other.m_current;
    return *this;
  }
  virtual ~CHttpPostStatT() = default;

  bool IsActive() const { return m_active != 0; }
  std::uint64_t ActualTotalByte() const {
    return Active(KTEXT("CHttpPostStatT::ActualTotalByte")).m_numbers.actualTotal;
  }
  std::uint64_t ActualPostedByte() const {
    return Active(KTEXT("CHttpPostStatT::ActualPostedByte")).m_numbers.actualPosted;
  }
  // Of parameters; one that is posted has at least been started.
  std::uint32_t TotalCount() const {
    return Active(KTEXT("CHttpPostStatT::TotalCount")).m_numbers.totalCount;
  }
  std::uint32_t PostedCount() const {
    return Active(KTEXT("CHttpPostStatT::PostedCount")).m_numbers.postedCount;
  }
  std::uint32_t FileCount() const {
    return Active(KTEXT("CHttpPostStatT::FileCount")).m_numbers.fileCount;
  }
  std::uint32_t PostedFileCount() const {
    return Active(KTEXT("CHttpPostStatT::PostedFileCount")).m_numbers.postedFileCount;
  }
  // Of the parameter under way.
  std::uint64_t CurrParamTotalByte() const {
    return Active(KTEXT("CHttpPostStatT::CurrParamTotalByte")).m_current.total;
  }
  std::uint64_t CurrParamPostedByte() const {
    return Active(KTEXT("CHttpPostStatT::CurrParamPostedByte")).m_current.posted;
  }
  std::uint64_t CurrParamRemainByte() const {
    const Current& current = Active(KTEXT("CHttpPostStatT::CurrParamRemainByte")).m_current;
    return current.total - current.posted;
  }
  bool CurrParamIsFile() const {
    return Active(KTEXT("CHttpPostStatT::CurrParamIsFile")).m_filePath != nullptr;
  }
  bool CurrParamIsComplete() const {
    const Current& current = Active(KTEXT("CHttpPostStatT::CurrParamIsComplete")).m_current;
    return current.total == current.posted;
  }
  bool IsActualFinished() const {
    const Numbers& numbers = Active(KTEXT("CHttpPostStatT::IsActualFinished")).m_numbers;
    return numbers.actualTotal == numbers.actualPosted;
  }

  void _MakeActive(std::uint64_t actualTotal, std::uint64_t total, std::uint32_t count,
                   std::uint32_t fileCount) {
    _MakeInactive();
    m_numbers.actualTotal = actualTotal;
    m_numbers.total = total;
    m_numbers.totalCount = count;
    m_numbers.fileCount = fileCount;
    m_active = 1;
  }
  void _MakeInactive() {
    m_active = 0;
    m_numbers = {};
    m_name.reset();
    m_filePath.reset();
    m_current = {};
  }

  // Id 112 where a number couldn't rise.
  void _TestAddActualPostedBytes(std::uint64_t bytes) const {
    Test({{m_numbers.actualPosted, bytes}});
  }
  void _TestAddPostedBytes(std::uint64_t bytes) const {
    Test({{m_numbers.actualPosted, bytes}, {m_numbers.posted, bytes}, {m_current.posted, bytes}});
  }
  void _TestStartNewEntry(bool isFile) const {
    constexpr std::uint32_t kLast = std::numeric_limits<std::uint32_t>::max();
    if (m_numbers.postedCount == kLast || (isFile && m_numbers.postedFileCount == kLast)) {
      Tool::RaiseError(HttpErrorId::kOverflow);
    }
  }
  void _AddActualPostedBytes(std::uint64_t bytes) {
    _TestAddActualPostedBytes(bytes);
    m_numbers.actualPosted += bytes;
  }
  void _AddPostedBytes(std::uint64_t bytes) {
    _TestAddPostedBytes(bytes);
    m_numbers.posted += bytes;
    m_current.posted += bytes;
    m_numbers.actualPosted += bytes;
  }
  void _StartNewEntry(const WChar* name, std::uint64_t bytes, bool isFile, const WChar* filePath) {
    _TestStartNewEntry(isFile);
    // What needs memory comes first, so that a failure leaves the numbers as they were.
    Store(m_filePath, isFile ? filePath : nullptr);
    Store(m_name, name);
    if (isFile) ++m_numbers.postedFileCount;
    ++m_numbers.postedCount;
    m_current = {bytes, 0};
  }

 private:
  struct Numbers {
    std::uint64_t actualTotal = 0;
    std::uint64_t actualPosted = 0;
    std::uint64_t total = 0;
    std::uint64_t posted = 0;
    std::uint32_t totalCount = 0;
    std::uint32_t postedCount = 0;
    std::uint32_t fileCount = 0;
    std::uint32_t postedFileCount = 0;
  };
  struct Current {
    std::uint64_t total = 0;
    std::uint64_t posted = 0;
  };
  struct Sum {
    std::uint64_t number;
    std::uint64_t more;
  };

  const CHttpPostStatT& Active(const WChar* operation) const {
    if (m_active == 0) Tool::RaiseBreach(operation, KTEXT("The post context is not active."));
    return *this;
  }
  static void Test(std::initializer_list<Sum> sums) {
    Tool::Guard([&] {
      for (const Sum& sum : sums) detail::CheckedAdd(sum.number, sum.more);
      return 0;
    });
  }
  static void Store(Text& place, const WChar* text) {
    const bool same =
        place != nullptr && text != nullptr && std::basic_string_view<WChar>(place.get()) == text;
    if (!same) place = Tool::Copy(text);
  }

  std::uint32_t m_active = 0;
  Numbers m_numbers;
  Text m_name;
  Text m_filePath;  // null where the parameter is no file
  Current m_current;
};

}  // namespace Dovek
