#include "sarnutils/XmlTreeBuilder.h"

#include <boost/smart_ptr/make_shared_object.hpp>
#include <new>

namespace sarn::detail {

XmlTreeBuilder::XmlTreeBuilder(const boost::shared_ptr<XmlNames>& names, bool skipBlankText)
    : m_names(names), m_skipBlankText(skipBlankText), m_bare(nullptr) {}

void XmlTreeBuilder::Start(const XmlName* tag, const char* const* attribs) {
  if (!IsOpen()) m_tree = boost::make_shared<XmlTree>(m_names);
  auto* const element = new (m_tree->Allocate(sizeof(XmlElement))) XmlElement(tag);
  if (*attribs != nullptr) element->m_attribs = MakeAttribs(attribs);
  if (IsOpen()) {
    Open& parent = m_open.back();
    (parent.firstChild == nullptr ? parent.firstChild : parent.lastChild->m_next) = element;
    parent.lastChild = element;
    ++parent.childCount;
  }
  m_open.push_back({element, nullptr, nullptr, 0, m_text.size()});
}

const XmlElement::Attribs* XmlTreeBuilder::MakeAttribs(const char* const* attribs) {
  std::uint32_t count = 0;
  while (attribs[2 * count] != nullptr) ++count;
  const std::size_t size = offsetof(XmlElement::Attribs, list) + count * sizeof(XmlElement::Attrib);
  auto* const made = static_cast<XmlElement::Attribs*>(m_tree->Allocate(size));
  made->count = count;
  for (std::uint32_t i = 0; i < count; ++i) {
    made->list[i] = {m_names->Find(attribs[2 * i]), m_tree->AddText(attribs[2 * i + 1])};
  }
  return made;
}

void XmlTreeBuilder::AddText(std::string_view utf8) {
  m_text.append(utf8);
}

const XmlElement& XmlTreeBuilder::Bare(const XmlName* tag) {
  m_bare.m_tag = tag;
  return m_bare;
}

boost::shared_ptr<const XmlElement> XmlTreeBuilder::End() {
  const Open open = m_open.back();
  open.element->m_content = MakeContent(open);
  if (open.childCount > 0) open.element->m_children = MakeChildren(open);
  m_open.pop_back();
  m_text.resize(open.textBegin);
  boost::shared_ptr<const XmlElement> element(m_tree, open.element);
  if (!IsOpen()) m_tree.reset();
  return element;
}

const XmlElement::Children* XmlTreeBuilder::MakeChildren(const Open& open) {
  const std::size_t size =
      offsetof(XmlElement::Children, list) + open.childCount * sizeof(const XmlElement*);
  auto* const made = static_cast<XmlElement::Children*>(m_tree->Allocate(size));
  made->tree = m_tree.get();
  made->count = static_cast<std::uint32_t>(open.childCount);
  const XmlElement** place = made->list;
  for (XmlElement* child = open.firstChild; child != nullptr; child = child->m_next) {
    *place++ = child;
  }
  return made;
}

const WChar* XmlTreeBuilder::MakeContent(const Open& open) {
  const std::string_view text = std::string_view(m_text).substr(open.textBegin);
  if (text.empty()) return nullptr;
  if (m_skipBlankText && text.find_first_not_of(" \t\r\n") == text.npos) return nullptr;
  return m_tree->AddText(text);
}

}  // namespace sarn::detail
