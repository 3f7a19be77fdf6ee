// Two layouts at random within the reach of the rules: the first one with their diff applied has
// the structure of the second.
//
// Within reach are children that tag and id tell apart, in any order, with attributes of any value.
// New controls aren't among them: those that the layout doesn't know aren't inserted.
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

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

CGenericXmlElement* MakeElement(Bytes& bytes, unsigned id, int depth) {
  auto* const element = new CGenericXmlElement;
  element->m_sTag = KTEXT("Group");
  element->m_Attribs[KTEXT("Id")] = WString::ValueOf(id);
  for (unsigned count = bytes.Below(3); count > 0; --count) {
    const WString name = WString(KTEXT("a")) + static_cast<WChar>('a' + bytes.Below(3));
    element->m_Attribs[name] = WString::ValueOf(bytes.Below(4));
  }
  if (depth == 0) return element;
  std::vector<unsigned> ids = {1, 2, 3, 4, 5, 6};
  for (unsigned count = bytes.Below(6); count > 0; --count) {
    const auto taken = ids.begin() + bytes.Below(static_cast<unsigned>(ids.size()));
    element->m_Children.push_back(MakeElement(bytes, *taken, depth - 1));
    ids.erase(taken);
  }
  return element;
}

CGenericXmlElement MakeLayout(Bytes& bytes) {
  CGenericXmlElement root;
  root.m_sTag = KTEXT("Settings");
  root.m_Children.push_back(MakeElement(bytes, 1, 3));
  return root;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const XmlFuzzFiles files;
  Bytes bytes(data, size);
  for (const char* name : {"first", "second"}) {
    Require(kelp::CXmlGenericExporter(files.Path(name), MakeLayout(bytes)).Export());
  }
  Require(CXmlDiffManager().GenerateDiffFile(files.Path("first"), files.Path("second"),
                                             files.Path("diff")));
  Require(CXmlDiffManager().ApplyDiffFile(files.Path("first"), files.Path("diff"),
                                          files.Path("output")));
  Require(files.Read("second") == files.Read("output"));
  return 0;
}
