#include "kelp0lang/XmlGeneric.h"

#include <memory>
#include <unordered_map>
#include <utility>

namespace kelp {
namespace {

// The code of the errors that a missing element raises in a callback.
constexpr int kNoElement = 10;
constexpr int kBufferSize = 4096;

// The few names of a tree, each as one text that all its elements share.
class NameTexts {
 public:
  const WString& Of(const WChar* name) { return m_texts.try_emplace(name, name).first->second; }

 private:
  // A tree has each name at one place.
  std::unordered_map<const WChar*, WString> m_texts;
};

CGenericXmlElement& AddChild(CGenericXmlElement& parent) {
  auto child = std::make_unique<CGenericXmlElement>();
  parent.m_Children.push_back(child.get());
  return *child.release();
}

}  // namespace

CGenericXmlElement::CGenericXmlElement(const CGenericXmlElement& other) : CGenericXmlElement() {
  CopyFrom(other);
}

CGenericXmlElement::CGenericXmlElement(const sarn::XmlElement& element) : CGenericXmlElement() {
  CopyFrom(element);
}

CGenericXmlElement& CGenericXmlElement::operator=(const CGenericXmlElement& other) {
  CGenericXmlElement copy(other);
  m_Attribs.swap(copy.m_Attribs);
  std::swap(m_sTag, copy.m_sTag);
  std::swap(m_sContent, copy.m_sContent);
  m_Children.swap(copy.m_Children);
  return *this;
}

CGenericXmlElement::~CGenericXmlElement() {
  Clear();
}

WString CGenericXmlElement::GetOptAttribValue(const WString& name, const WString& def) const {
  const auto found = m_Attribs.find(name);
  return found == m_Attribs.end() ? def : found->second;
}

void CGenericXmlElement::CopyFrom(const sarn::XmlElement& element) {
  Clear();
  NameTexts names;
  std::vector<std::pair<const sarn::XmlElement*, CGenericXmlElement*>> pending{{&element, this}};
  while (!pending.empty()) {
    const auto [source, target] = pending.back();
    pending.pop_back();
    target->m_sTag = names.Of(source->getTag().c_str());
    target->m_sContent = source->getOptContent(KTEXT(""));
    sarn::XmlElement::AttribEnumerator attribs(*source);
    for (const WChar *name, *value; attribs.getNext(name, value);) {
      target->m_Attribs.emplace(names.Of(name), value);
    }
    target->m_Children.reserve(static_cast<std::size_t>(source->getChildCount()));
    sarn::XmlElement::ChildEnumerator children(*source, KTEXT(""));
    for (boost::shared_ptr<const sarn::XmlElement> child; children.getNext(child);) {
      pending.emplace_back(child.get(), &AddChild(*target));
    }
  }
}

void CGenericXmlElement::CopyFrom(const CGenericXmlElement& other) {
  Clear();
  std::vector<std::pair<const CGenericXmlElement*, CGenericXmlElement*>> pending{{&other, this}};
  while (!pending.empty()) {
    const auto [source, target] = pending.back();
    pending.pop_back();
    target->m_sTag = source->m_sTag;
    target->m_sContent = source->m_sContent;
    target->m_Attribs = source->m_Attribs;
    target->m_Children.reserve(source->m_Children.size());
    for (const CGenericXmlElement* child : source->m_Children) {
      pending.emplace_back(child, &AddChild(*target));
    }
  }
}

// Walks down to the last child again and again. The slot of a child that is walked into keeps the
// way back to its grandparent, so that a tree of any depth needs neither stack nor memory to go.
void CGenericXmlElement::Clear() noexcept {
  m_Attribs.clear();
  CGenericXmlElement* current = this;
  CGenericXmlElement* parent = nullptr;
  for (;;) {
    if (!current->m_Children.empty()) {
      CGenericXmlElement* const child = std::exchange(current->m_Children.back(), parent);
      parent = std::exchange(current, child);
      continue;
    }
    if (current == this) return;
    delete current;
    current = parent;
    parent = current->m_Children.back();
    current->m_Children.pop_back();
  }
}

CXmlGenericExporter::CXmlGenericExporter(const WString& path, const CGenericXmlElement& root)
    : ::XmlWriter(path.c_str(), root.m_sTag.c_str(), nullptr), m_pRoot(&root) {}

CXmlGenericExporter::~CXmlGenericExporter() = default;

bool CXmlGenericExporter::Export() {
  if (!openFile()) return false;
  WriteXmlElement(*m_pRoot, false);
  closeFile();
  return true;
}

void CXmlGenericExporter::WriteXmlElement(const CGenericXmlElement& element, bool writeEndTag) {
  detail::WriteXmlElementTo(*this, element, writeEndTag);
}

namespace detail {
namespace {

void WriteStart(::XmlWriter& writer, const CGenericXmlElement& element) {
  XmlStartTag startTag(element.m_sTag.c_str());
  for (const auto& [name, value] : element.m_Attribs) {
    writer.appendReqAttrib(startTag, name.c_str(), value.c_str());
  }
  writer.writeStartTagWithAttribs(startTag, element.m_Children.empty());
}

}  // namespace

void WriteXmlElementTo(::XmlWriter& writer, const CGenericXmlElement& element, bool writeEndTag) {
  struct Open {
    const CGenericXmlElement* element;
    std::size_t next;
  };
  WriteStart(writer, element);
  std::vector<Open> open{{&element, 0}};
  while (!open.empty()) {
    const CGenericXmlElement& current = *open.back().element;
    if (open.back().next < current.m_Children.size()) {
      const CGenericXmlElement& child = *current.m_Children[open.back().next++];
      WriteStart(writer, child);
      if (!child.m_Children.empty()) open.push_back({&child, 0});
      continue;
    }
    open.pop_back();
    const bool isTop = open.empty();
    if (!current.m_Children.empty() && (writeEndTag || !isTop)) {
      writer.writeEndTag(current.m_sTag.c_str());
    }
  }
}

}  // namespace detail

CXmlRootDomImporter::CXmlRootDomImporter() : XmlExpatHybridParser(nullptr, false) {
  InitParser(nullptr);
}

CXmlRootDomImporter::CXmlRootDomImporter(const CXmlRootDomImporter&) = default;
CXmlRootDomImporter& CXmlRootDomImporter::operator=(const CXmlRootDomImporter&) = default;
CXmlRootDomImporter::~CXmlRootDomImporter() = default;

bool CXmlRootDomImporter::processXmlSaxElementStart(const sarn_text::CSarnStringT<WChar>&) {
  return false;
}

bool CXmlRootDomImporter::processXmlSaxElementEnd(const sarn::XmlElement&) {
  return false;
}

bool CXmlRootDomImporter::Import(const WString& path, const WString& rootTag,
                                 boost::shared_ptr<const sarn::XmlElement>& result) {
  try {
    registerXmlDomCallback(&CXmlRootDomImporter::ImportRootDom, 1, rootTag.c_str());
    if (!ProcessXmlFile(path.c_str(), kBufferSize, nullptr, nullptr)) return false;
  } catch (const Exception&) {
    return false;
  }
  result = m_pRootDom;
  return true;
}

void CXmlRootDomImporter::ImportRootDom(const boost::shared_ptr<const sarn::XmlElement>& element) {
  if (element == nullptr) {
    riseError(KTEXT("common/kelp/kelp0lang/XmlGeneric"), 181, kNoElement, KTEXT(""));
  }
  m_pRootDom = element;
}

}  // namespace kelp
