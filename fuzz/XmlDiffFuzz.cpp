// Two layouts at random within the reach of the rules: the first one with their diff applied has
// the structure of the second.
//
// Within reach are children that tag and id tell apart, with attributes of any value, in any order.
// Under one parent children only go or only come: where as many come as go, the places of those
// that stay tell nothing of the order. New controls aren't among them, since those that the layout
// doesn't know aren't inserted.
#include <cstdint>
#include <string>
#include <utility>

#include "fuzz/XmlFuzzFiles.h"
#include "kelp0lang/XmlDiffManager.h"

using kelp::CGenericXmlElement;
using kelp::CXmlDiffManager;
using kelp::WString;

namespace {

class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}
  unsigned Below(unsigned end) { return m_at < m_size ? m_data[m_at++] % end : 0; }

 private:
  const std::uint8_t* m_data;
  std::size_t m_size;
  std::size_t m_at = 0;
};

void SetAttribs(Bytes& bytes, CGenericXmlElement& element) {
  for (unsigned count = bytes.Below(3); count > 0; --count) {
    const WString name = WString(KTEXT("a")) + static_cast<WChar>('a' + bytes.Below(3));
    element.m_Attribs[name] = WString::ValueOf(bytes.Below(4));
  }
}

CGenericXmlElement* MakeElement(Bytes& bytes, unsigned id, int depth) {
  auto* const element = new CGenericXmlElement;
  element->m_sTag = KTEXT("Group");
  element->m_Attribs[KTEXT("Id")] = WString::ValueOf(id);
  SetAttribs(bytes, *element);
  if (depth == 0) return element;
  for (unsigned child = 0, count = bytes.Below(6); child < count; ++child) {
    element->m_Children.push_back(MakeElement(bytes, child, depth - 1));
  }
  return element;
}

void Change(Bytes& bytes, CGenericXmlElement& element) {
  auto& children = element.m_Children;
  for (CGenericXmlElement* child : children) Change(bytes, *child);
  if (bytes.Below(3) == 0) element.m_Attribs.erase(KTEXT("aa"));
  SetAttribs(bytes, element);
  for (std::size_t i = 1; i < children.size(); ++i) {
    std::swap(children[i], children[bytes.Below(static_cast<unsigned>(i + 1))]);
  }
  if (bytes.Below(2) == 0) {
    for (unsigned count = bytes.Below(3); count > 0 && !children.empty(); --count) {
      delete children.back();
      children.pop_back();
    }
    return;
  }
  for (unsigned count = bytes.Below(3); count > 0; --count) {
    const auto place = children.begin() + bytes.Below(static_cast<unsigned>(children.size() + 1));
    children.insert(place, MakeElement(bytes, 10 + count, 1));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const XmlFuzzFiles files;
  Bytes bytes(data, size);
  CGenericXmlElement layout;
  layout.m_sTag = KTEXT("Settings");
  layout.m_Children.push_back(MakeElement(bytes, 1, 3));
  Require(kelp::CXmlGenericExporter(files.Path("first"), layout).Export());
  Change(bytes, *layout.m_Children[0]);
  Require(kelp::CXmlGenericExporter(files.Path("second"), layout).Export());
  Require(CXmlDiffManager().GenerateDiffFile(files.Path("first"), files.Path("second"),
                                             files.Path("diff")));
  Require(CXmlDiffManager().ApplyDiffFile(files.Path("first"), files.Path("diff"),
                                          files.Path("output")));
  Require(files.Read("second") == files.Read("output"));
  return 0;
}
