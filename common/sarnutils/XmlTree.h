// The memory of a tree of elements, and the names in it; internal to the library.
//
// All of a tree lies in a few blocks that grow with it, and goes with them in one step. A tree
// keeps the names that it uses, which several trees of one file share.
#pragma once

#include <boost/smart_ptr/enable_shared_from_this.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kelptext/WideChar.h"
#include "sarnutils/SarnString.h"

namespace sarn::detail {

using XmlName = sarn_text::CSarnStringT<WChar>;

// Each name once, so that a name is a pointer.
class XmlNames {
 public:
  XmlNames();
  XmlNames(const XmlNames&) = delete;
  XmlNames& operator=(const XmlNames&) = delete;

  // The name of these bytes of UTF-8.
  const XmlName* Find(std::string_view utf8);

 private:
  struct Entry {
    std::string utf8;
    std::uint32_t hash;
    XmlName name;
  };
  const XmlName* Add(std::size_t slot, std::string_view utf8, std::uint32_t hash);
  void Grow();

  std::deque<Entry> m_entries;
  std::vector<const Entry*> m_slots;  // a power of 2, at most half in use
};

class XmlTree : public boost::enable_shared_from_this<XmlTree> {
 public:
  explicit XmlTree(const boost::shared_ptr<XmlNames>& names) : m_names(names) {}
  XmlTree(const XmlTree&) = delete;
  XmlTree& operator=(const XmlTree&) = delete;

  // Memory for size bytes, aligned for pointers.
  void* Allocate(std::size_t size);
  // Terminated text, decoded from UTF-8.
  const WChar* AddText(std::string_view utf8);

 private:
  void AddBlock(std::size_t size);

  boost::shared_ptr<XmlNames> m_names;
  std::vector<std::unique_ptr<char[]>> m_blocks;
  char* m_next = nullptr;
  char* m_end = nullptr;
  std::size_t m_blockSize = 1024;
};

}  // namespace sarn::detail
