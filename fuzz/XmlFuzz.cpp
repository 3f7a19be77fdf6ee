// XML of any content, as a layout and as a diff file. What is read is written again and comes back
// the same; a layout with any rules applied is a file that can be read, or there is none.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fuzz/XmlFuzzFiles.h"
#include "kelp0lang/XmlDiffManager.h"

using kelp::CGenericXmlElement;
using kelp::CXmlDiffManager;
using kelp::CXmlRootDomImporter;

namespace {

using ElementPtr = boost::shared_ptr<const sarn::XmlElement>;

constexpr std::string_view kLayout =
    "<Settings><NormalLayout><CommandBars><CommandBars>"
    "<CommandBar BarID='7'><Control Id='1'/><Control Id='2'/></CommandBar>"
    "<CommandBar BarID='8' Class='CXTPPopupBar'/></CommandBars></CommandBars></NormalLayout>"
    "</Settings>";

bool IsSame(const CGenericXmlElement& a, const CGenericXmlElement& b) {
  if (a.m_sTag != b.m_sTag || a.m_Attribs != b.m_Attribs ||
      a.m_Children.size() != b.m_Children.size()) {
    return false;
  }
  for (std::size_t i = 0; i < a.m_Children.size(); ++i) {
    if (!IsSame(*a.m_Children[i], *b.m_Children[i])) return false;
  }
  return true;
}

void ImportAndExport(const XmlFuzzFiles& files) {
  ElementPtr root;
  if (!CXmlRootDomImporter().Import(files.Path("input"), u"Settings", root) || root == nullptr)
    return;
  const CGenericXmlElement element(*root);
  Require(kelp::CXmlGenericExporter(files.Path("output"), element).Export());
  ElementPtr again;
  Require(CXmlRootDomImporter().Import(files.Path("output"), u"Settings", again));
  Require(again != nullptr && IsSame(element, CGenericXmlElement(*again)));
}

void ApplyToLayout(const XmlFuzzFiles& files, const char* layout, const char* rules) {
  std::remove(files.Name("output").c_str());
  if (!CXmlDiffManager().ApplyDiffFile(files.Path(layout), files.Path(rules),
                                       files.Path("output"))) {
    return;
  }
  ElementPtr root;
  CXmlRootDomImporter importer;
  Require(importer.Import(files.Path("output"), u"Settings", root) && root != nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const XmlFuzzFiles files;
  files.Write("input", {reinterpret_cast<const char*>(data), size});
  files.Write("layout", kLayout);
  ImportAndExport(files);
  kelp::WString name;
  CXmlDiffManager().GetOrigName(files.Path("input"), name);
  ApplyToLayout(files, "layout", "input");
  ApplyToLayout(files, "input", "input");
  return 0;
}
