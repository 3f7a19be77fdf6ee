// Names and their values: the parameters of a request, and the headers of requests and responses.
//
//   Dovek::CHttpClientMapT<Dovek::CHttpToolW> params;
//   params.Add(KTEXT("name"), KTEXT("Monte Bianco"), 0);
//   params.Get(KTEXT("NAME"), 0).value;  // "Monte Bianco"
//
// A name may have several values. The entries are in the order of their names, compared by
// _wcsicmp; those of one name stay in the order in which they came. Names are kept as given.
#pragma once

#include <tchar.h>

#include <cwchar>
#include <iterator>
#include <map>
#include <utility>

#include "kelp0lang/HttpTool.h"

namespace Dovek {

// The flags of an entry.
enum enumHttpParam : std::uint32_t {
  ParamFile = 1,          // the value is the path of a file
  ParamEncodedName = 2,   // the name is URL-encoded already
  ParamEncodedValue = 4,  // the value is
};

template <class Tool>
class CHttpClientMapT {
 public:
  using Text = typename Tool::Text;
  struct Value {
    const WChar* value = nullptr;
    std::uint32_t flags = 0;
  };
  struct Entry {
    Text value;  // may be null
    std::uint32_t flags;
  };
  struct Less {
    using is_transparent = void;
    static const WChar* Of(const Text& name) { return name.get(); }
    static const WChar* Of(const WChar* name) { return name; }
    template <class A, class B>
    bool operator()(const A& a, const B& b) const {
      const WChar* const x = Of(a);
      const WChar* const y = Of(b);
      if (x == nullptr || y == nullptr) return x == nullptr && y != nullptr;
      return _wcsicmp(x, y) < 0;
    }
  };
  using Entries = std::multimap<Text, Entry, Less>;

  CHttpClientMapT() = default;
  CHttpClientMapT(const CHttpClientMapT&) = delete;
  CHttpClientMapT& operator=(const CHttpClientMapT&) = delete;
  virtual ~CHttpClientMapT() { RemoveAll(); }

  // Stores copies. The value may be null.
  void Add(const WChar* name, const WChar* value, std::uint32_t flags) {
    Tool::RequirePointer(name, KTEXT("CHttpClientMapT::Add"), KTEXT("szName"));
    Insert(Tool::Copy(name), Tool::Copy(value), flags);
  }
  // Takes over two texts from malloc, also where it fails.
  void AddPointerDirectly(WChar* name, WChar* value, std::uint32_t flags) {
    Text ownName(name);
    Text ownValue(value);
    Tool::RequirePointer(name, KTEXT("CHttpClientMapT::AddPointerDirectly"), KTEXT("szName"));
    Insert(std::move(ownName), std::move(ownValue), flags);
  }

  // The entries of a name; of all with null.
  std::uint32_t Count(const WChar* name) const {
    return static_cast<std::uint32_t>(name == nullptr ? m_entries.size() : m_entries.count(name));
  }
  // A null value where there is no such entry; the empty text where the entry has none.
  Value Get(const WChar* name, std::uint32_t index) const {
    Tool::RequirePointer(name, KTEXT("CHttpClientMapT::Get"), KTEXT("szName"));
    auto [entry, end] = m_entries.equal_range(name);
    for (; entry != end; ++entry, --index) {
      if (index == 0) return ValueOf(entry->second);
    }
    return {};
  }
  // What Get gives of an entry.
  static Value ValueOf(const Entry& entry) {
    return {entry.value == nullptr ? KTEXT("") : entry.value.get(), entry.flags};
  }
  // In order.
  const Entries& All() const { return m_entries; }

  // False where there was nothing to remove.
  bool RemoveAll() { return Remove(m_entries.begin(), m_entries.end()); }
  bool RemoveAll(const WChar* name) {
    Tool::RequirePointer(name, KTEXT("CHttpClientMapT::RemoveAll"), KTEXT("szName"));
    const auto [begin, end] = m_entries.equal_range(name);
    return Remove(begin, end);
  }

 private:
  void Insert(Text name, Text value, std::uint32_t flags) {
    if (m_entries.size() >= std::numeric_limits<std::uint32_t>::max()) {
      Tool::RaiseError(HttpErrorId::kOverflow);
    }
    try {
      m_entries.emplace(std::move(name), Entry{std::move(value), flags});
    } catch (const std::exception& error) {
      Tool::RaiseError(error.what(), HttpErrorId::kStdException);
    } catch (...) {
      Tool::RaiseError(HttpErrorId::kUnexpected);
    }
  }
  bool Remove(typename Entries::iterator begin, typename Entries::iterator end) {
    if (begin == end) return false;
    for (auto entry = begin; entry != end; ++entry) entry->second.value.reset();
    m_entries.erase(begin, end);
    return true;
  }

  Entries m_entries;
};

}  // namespace Dovek
