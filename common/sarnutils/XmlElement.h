// An element of an XML file with all that it holds, read-only.
//
//   void OnRule(const boost::shared_ptr<const sarn::XmlElement>& rule) {
//     const WChar* type = rule->getReqAttribValue(KTEXT("type"));
//     sarn::XmlElement::ChildEnumerator ids(*rule, KTEXT("Id"));
//     for (boost::shared_ptr<const sarn::XmlElement> id; ids.getNext(id);) { ... }
//   }
//
// A tree is one piece of memory that goes when the last pointer to any of its elements goes. Texts
// are terminated and valid as long as the tree is. The content of an element is its own text, all
// pieces between its children joined; blanks and line feeds belong to it.
//
// A missing required item raises XmlException. One that is there but empty isn't missing.
//
// Threads: any number may read a tree.
#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstdint>

#include "kelptext/WideChar.h"
#include "sarnutils/Export.h"
#include "sarnutils/SarnString.h"

namespace sarn {

namespace detail {
class XmlTree;
class XmlTreeBuilder;
}  // namespace detail

class SARNUTILS_API XmlElement {
 public:
  // The attributes, in the order of the file.
  class SARNUTILS_API AttribEnumerator {
   public:
    explicit AttribEnumerator(const XmlElement& element);
    // False at the end.
    bool getNext(const WChar*& name, const WChar*& value);

   private:
    const XmlElement& m_element;
    std::uint32_t m_next = 0;
  };

  // The children with a tag, or all of them where it is empty, in the order of the file.
  class SARNUTILS_API ChildEnumerator {
   public:
    // The tag stays where it is while the enumerator is used.
    ChildEnumerator(const XmlElement& element, const WChar* tag);
    // False, and null, at the end.
    bool getNext(boost::shared_ptr<const XmlElement>& child);

   private:
    const XmlElement& m_element;
    const WChar* m_tag;
    std::uint32_t m_next = 0;
  };

  XmlElement(const XmlElement&) = delete;
  XmlElement& operator=(const XmlElement&) = delete;

  const sarn_text::CSarnStringT<WChar>& getTag() const { return *m_tag; }

  // An element without text has the empty one.
  const WChar* getReqContent() const;
  // The default where there is no text.
  const WChar* getOptContent(const WChar* def) const;
  // The content of the first child with a tag.
  const WChar* getReqChildContent(const WChar* tag) const;
  // The default where there is no such child, or it has no text.
  const WChar* getOptChildContent(const WChar* tag, const WChar* def) const;

  const WChar* getReqAttribValue(const WChar* name) const;
  const WChar* getOptAttribValue(const WChar* name, const WChar* def) const;
  // The whole number that the value begins with, behind blanks: a sign, digits. One that an int
  // doesn't hold gives the nearest that it does, a value that begins with no number the default.
  int getOptAttribValueAsInt(const WChar* name, int def) const;
  // False, and value as it was, where the attribute is missing.
  bool findAttribValue(const WChar* name, const WChar*& value) const;

  int getChildCount() const;
  // Null for an index outside.
  boost::shared_ptr<const XmlElement> getChildAt(int index) const;
  // The first child with a tag.
  boost::shared_ptr<const XmlElement> getReqChildByTag(const WChar* tag) const;

 private:
  friend class detail::XmlTreeBuilder;

  struct Attrib {
    const sarn_text::CSarnStringT<WChar>* name;
    const WChar* value;
  };
  struct Attribs {
    std::uint32_t count;
    Attrib list[1];  // of count
  };
  struct Children {
    detail::XmlTree* tree;
    std::uint32_t count;
    const XmlElement* list[1];  // of count
  };

  explicit XmlElement(const sarn_text::CSarnStringT<WChar>* tag) : m_tag(tag) {}
  ~XmlElement() = default;
  const XmlElement* FindChild(const WChar* tag) const;
  boost::shared_ptr<const XmlElement> Share(const XmlElement* child) const;

  const sarn_text::CSarnStringT<WChar>* m_tag;
  const Attribs* m_attribs = nullptr;    // null where there are none
  const Children* m_children = nullptr;  // likewise
  const WChar* m_content = nullptr;      // likewise
  XmlElement* m_next = nullptr;          // the sibling behind this one, while the tree is built
};

}  // namespace sarn
