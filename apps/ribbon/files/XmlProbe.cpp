#include "ribbon/files/XmlProbe.h"

#include "kelp0lang/XmlDiffManager.h"
#include "sarnutils/XmlParser.h"

namespace ribbon {
namespace {

using SarnText = sarn_text::CSarnStringT<WChar>;

// What stands above an inserted element in a diff file.
constexpr int kLevelsOfRule = 4;
constexpr int kBufferSize = 4096;

constexpr const WChar* kDiffRoot = KTEXT("RibbonDiffRules");
constexpr const WChar* kRulePath[] = {kDiffRoot, KTEXT("Rules"), KTEXT("Rule")};

// Reads a file through without keeping anything of it.
class Probe : public sarn::XmlExpatHybridParser {
 public:
  Probe(const WChar* rootTag, int maxDepth)
      : XmlExpatHybridParser(nullptr, false), m_rootTag(rootTag) {
    InitParser(nullptr);
    setMaxDepth(maxDepth);
  }

  void Read(const Argument& file, const WString& path) {
    SarnText error;
    int line = 0;
    bool isRead = false;
    try {
      isRead = ProcessXmlFile(path.c_str(), kBufferSize, &error, &line);
    } catch (const Exception&) {
      // It is told in the error.
    }
    if (isRead) return;
    if (m_root.IsEmpty() || m_hasRoot) FailInFile(file, line, error.c_str());
    FailInFile(
        file, m_rootLine,
        Message{KTEXT("the root is {1}, not {2}"), {Quoted(m_root.c_str()), m_rootTag}}.Text());
  }
  const std::vector<int>& RuleLines() const { return m_ruleLines; }

 protected:
  bool processXmlSaxElementStart(const SarnText& tag) override {
    if (m_depth == 0) {
      m_root = tag;
      m_rootLine = getCurrentLine();
      m_hasRoot = tag.Compare(m_rootTag) == 0;
    }
    const bool isOnPath = m_depth == m_matched && m_depth < std::ssize(kRulePath) &&
                          tag.Compare(kRulePath[m_depth]) == 0;
    ++m_depth;
    if (isOnPath) m_matched = m_depth;
    if (isOnPath && m_matched == std::ssize(kRulePath)) m_ruleLines.push_back(getCurrentLine());
    return !m_hasRoot;
  }
  bool processXmlSaxElementEnd(const sarn::XmlElement&) override {
    m_matched = std::min(m_matched, --m_depth);
    return false;
  }

 private:
  const WChar* m_rootTag;
  SarnText m_root;
  int m_rootLine = 0;
  bool m_hasRoot = false;
  int m_depth = 0;
  int m_matched = 0;  // tags of the path of a rule, as far as the open elements agree with it
  std::vector<int> m_ruleLines;
};

}  // namespace

void RequireLayout(const Argument& file, const WString& path) {
  Probe(kelp::CXmlDiffManager::kRootTag, kelp::CXmlDiffManager::kMaxLevels).Read(file, path);
}

std::vector<int> RequireDiff(const Argument& file, const WString& path) {
  Probe probe(kDiffRoot, kelp::CXmlDiffManager::kMaxLevels + kLevelsOfRule);
  probe.Read(file, path);
  return probe.RuleLines();
}

void FailInFile(const Argument& file, int line, const WString& what) {
  const WString name = Shown(file.text);
  if (line == 0) throw Failure({KTEXT("{1}: {2}"), {name, Shown(what)}});
  throw Failure({KTEXT("{1}:{2}: {3}"), {name, WString::ValueOf(line), Shown(what)}});
}

}  // namespace ribbon
