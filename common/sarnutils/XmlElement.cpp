#include "sarnutils/XmlElement.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>

#include "sarnutils/XmlException.h"
#include "sarnutils/XmlTree.h"

namespace sarn {

using sarn_text::CSarnStringT;

namespace {

[[noreturn]] void RiseMissing(const XmlElement& element, const WChar* what, const WChar* name) {
  // Whoever reads the file knows its name and the line.
  const std::basic_string<WChar> text =
      element.getTag().c_str() + std::basic_string<WChar>(KTEXT(" lacks ")) + what + name;
  throw XmlException(KTEXT(""), 0, eXmlMissing, text.c_str());
}

bool IsBlank(WChar unit) {
  return unit == ' ' || (unit >= '\t' && unit <= '\r');
}

bool IsDigit(WChar unit) {
  return unit >= '0' && unit <= '9';
}

}  // namespace

XmlElement::AttribEnumerator::AttribEnumerator(const XmlElement& element) : m_element(element) {}

bool XmlElement::AttribEnumerator::getNext(const WChar*& name, const WChar*& value) {
  const Attribs* const attribs = m_element.m_attribs;
  if (attribs == nullptr || m_next == attribs->count) return false;
  const Attrib& attrib = attribs->list[m_next++];
  name = attrib.name->c_str();
  value = attrib.value;
  return true;
}

XmlElement::ChildEnumerator::ChildEnumerator(const XmlElement& element, const WChar* tag)
    : m_element(element), m_tag(tag) {}

bool XmlElement::ChildEnumerator::getNext(boost::shared_ptr<const XmlElement>& child) {
  const Children* const children = m_element.m_children;
  while (children != nullptr && m_next != children->count) {
    const XmlElement* const next = children->list[m_next++];
    if (*m_tag != 0 && next->m_tag->Compare(m_tag) != 0) continue;
    child = m_element.Share(next);
    return true;
  }
  child.reset();
  return false;
}

const WChar* XmlElement::getReqContent() const {
  return getOptContent(KTEXT(""));
}

const WChar* XmlElement::getOptContent(const WChar* def) const {
  return m_content == nullptr ? def : m_content;
}

const WChar* XmlElement::getReqChildContent(const WChar* tag) const {
  const XmlElement* const child = FindChild(tag);
  if (child == nullptr) RiseMissing(*this, KTEXT("the element "), tag);
  return child->getReqContent();
}

const WChar* XmlElement::getOptChildContent(const WChar* tag, const WChar* def) const {
  const XmlElement* const child = FindChild(tag);
  return child == nullptr ? def : child->getOptContent(def);
}

const WChar* XmlElement::getReqAttribValue(const WChar* name) const {
  const WChar* value = nullptr;
  if (!findAttribValue(name, value)) RiseMissing(*this, KTEXT("the attribute "), name);
  return value;
}

const WChar* XmlElement::getOptAttribValue(const WChar* name, const WChar* def) const {
  findAttribValue(name, def);
  return def;
}

int XmlElement::getOptAttribValueAsInt(const WChar* name, int def) const {
  using Limits = std::numeric_limits<int>;
  const WChar* text = getOptAttribValue(name, KTEXT(""));
  while (IsBlank(*text)) ++text;
  const bool negative = *text == '-';
  if (negative || *text == '+') ++text;
  if (!IsDigit(*text)) return def;
  std::int64_t value = 0;
  for (; IsDigit(*text) && value <= Limits::max(); ++text) value = 10 * value + (*text - '0');
  if (negative) value = -value;
  return static_cast<int>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

bool XmlElement::findAttribValue(const WChar* name, const WChar*& value) const {
  if (m_attribs == nullptr) return false;
  const Attrib* const end = m_attribs->list + m_attribs->count;
  const Attrib* const found = std::find_if(m_attribs->list, end, [name](const Attrib& attrib) {
    return attrib.name->Compare(name) == 0;
  });
  if (found == end) return false;
  value = found->value;
  return true;
}

int XmlElement::getChildCount() const {
  return m_children == nullptr ? 0 : static_cast<int>(m_children->count);
}

boost::shared_ptr<const XmlElement> XmlElement::getChildAt(int index) const {
  if (index < 0 || index >= getChildCount()) return {};
  return Share(m_children->list[index]);
}

boost::shared_ptr<const XmlElement> XmlElement::getReqChildByTag(const WChar* tag) const {
  const XmlElement* const child = FindChild(tag);
  if (child == nullptr) RiseMissing(*this, KTEXT("the element "), tag);
  return Share(child);
}

const XmlElement* XmlElement::FindChild(const WChar* tag) const {
  if (m_children == nullptr) return nullptr;
  const XmlElement* const* const end = m_children->list + m_children->count;
  const auto* const found = std::find_if(m_children->list, end, [tag](const XmlElement* child) {
    return child->m_tag->Compare(tag) == 0;
  });
  return found == end ? nullptr : *found;
}

boost::shared_ptr<const XmlElement> XmlElement::Share(const XmlElement* child) const {
  return {m_children->tree->shared_from_this(), child};
}

}  // namespace sarn
