// What a user changed in a ribbon layout, carried into the next one that is shipped.
#include <kelp0lang/kelp0lang.h>

#include <cstdio>
#include <string>

namespace {

// A layout with one bar of two controls.
void WriteLayout(const kelp::WString& path, const WChar* caption, const WChar* style) {
  kelp::CGenericXmlElement layout;
  layout.m_sTag = kelp::CXmlDiffManager::kRootTag;
  auto* const bar = new kelp::CGenericXmlElement;  // the layout's own from here on
  bar->m_sTag = KTEXT("CommandBar");
  bar->m_Attribs[KTEXT("BarID")] = KTEXT("7");
  layout.m_Children.push_back(bar);
  for (const WChar* id : {KTEXT("32771"), KTEXT("32772")}) {
    auto* const control = new kelp::CGenericXmlElement;
    control->m_sTag = KTEXT("Control");
    control->m_Attribs[KTEXT("Id")] = id;
    control->m_Attribs[KTEXT("Caption")] = caption;
    control->m_Attribs[KTEXT("Style")] = style;
    bar->m_Children.push_back(control);
  }
  kelp::CXmlGenericExporter(path, layout).Export();
}

void Print(const kelp::WString& path) {
  const CMemoryMappedFile file(path.c_str(), false, false, 0);
  std::string text(file.getData(), file.getLength());
  std::erase(text, '\r');
  std::printf("%s\n", text.c_str());
}

}  // namespace

int main() {
  const kelp::WString shipped = KTEXT("shipped.xml");
  const kelp::WString users = KTEXT("users.xml");
  const kelp::WString next = KTEXT("next.xml");
  const kelp::WString diff = KTEXT("users.diff.xml");
  WriteLayout(shipped, KTEXT("Station"), KTEXT("icon"));
  WriteLayout(users, KTEXT("Station"), KTEXT("iconAndCaption"));  // the user's style
  WriteLayout(next, KTEXT("Set-up"), KTEXT("icon"));              // a new caption

  kelp::CXmlDiffManager().GenerateDiffFile(shipped, users, diff);
  kelp::CXmlDiffManager().ApplyDiffFile(next, diff, users);
  Print(diff);
  Print(users);

  for (const kelp::WString& path : {shipped, users, next, diff}) kelp::CFile(path).Delete();
}
