// Builds a tree of elements from what a parser meets; internal to the library.
#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "sarnutils/XmlElement.h"
#include "sarnutils/XmlTree.h"

namespace sarn::detail {

class XmlTreeBuilder {
 public:
  // With skipBlankText an element keeps no text that is blanks alone.
  XmlTreeBuilder(const boost::shared_ptr<XmlNames>& names, bool skipBlankText);
  XmlTreeBuilder(const XmlTreeBuilder&) = delete;
  XmlTreeBuilder& operator=(const XmlTreeBuilder&) = delete;

  // Whether an element of a tree is open.
  bool IsOpen() const { return !m_open.empty(); }
  // Opens an element, the first of a tree or a child of that which is open. The attributes are
  // names and values in turn, UTF-8, ended by null.
  void Start(const XmlName* tag, const char* const* attribs);
  void AddText(std::string_view utf8);
  // An element with nothing but its tag, outside of any tree; valid until the next one.
  const XmlElement& Bare(const XmlName* tag);
  // Closes the element that is open. It stays within its tree.
  boost::shared_ptr<const XmlElement> End();

 private:
  struct Open {
    XmlElement* element;
    XmlElement* firstChild;
    XmlElement* lastChild;
    std::size_t childCount;
    std::size_t textBegin;
  };
  const XmlElement::Attribs* MakeAttribs(const char* const* attribs);
  const XmlElement::Children* MakeChildren(const Open& open);
  const WChar* MakeContent(const Open& open);

  boost::shared_ptr<XmlNames> m_names;
  bool m_skipBlankText;
  boost::shared_ptr<XmlTree> m_tree;
  XmlElement m_bare;
  std::vector<Open> m_open;
  std::string m_text;  // of all open elements; that of the innermost is the last
};

}  // namespace sarn::detail
