#include "kelp0lang/XmlDiffManager.h"

#include "sarnutils/FileNames.h"

namespace kelp {

CXmlDiffManager::CXmlDiffManager() = default;
CXmlDiffManager::~CXmlDiffManager() = default;

CXmlDiffManager::CXmlDiffManager(const CXmlDiffManager& other)
    : m_ValidatedIds(other.m_ValidatedIds),
      m_OrigToNewBarIds(other.m_OrigToNewBarIds),
      m_NewToOrigBarIds(other.m_NewToOrigBarIds),
      m_nNextBarId(other.m_nNextBarId) {
  for (const auto& rule : other.m_Rules) m_Rules.push_back(rule->Copy());
}

CXmlDiffManager& CXmlDiffManager::operator=(const CXmlDiffManager& other) {
  CXmlDiffManager copy(other);
  m_Rules.swap(copy.m_Rules);
  m_ValidatedIds.swap(copy.m_ValidatedIds);
  m_OrigToNewBarIds.swap(copy.m_OrigToNewBarIds);
  m_NewToOrigBarIds.swap(copy.m_NewToOrigBarIds);
  m_nNextBarId = copy.m_nNextBarId;
  return *this;
}

WString CXmlDiffManager::GetXmlElementId(const CGenericXmlElement& element) {
  static const WString kId(KTEXT("Id"));
  static const WString kBarId(KTEXT("BarID"));
  const WString id = element.GetOptAttribValue(kId, WString());
  return id.empty() ? element.GetOptAttribValue(kBarId, WString()) : id;
}

const WChar* CXmlDiffManager::GetXmlElementId(const sarn::XmlElement& element) {
  const WChar* const id = element.getOptAttribValue(KTEXT("Id"), KTEXT(""));
  return *id != 0 ? id : element.getOptAttribValue(KTEXT("BarID"), KTEXT(""));
}

bool CXmlDiffManager::GenerateDiffFile(const WString& firstPath, const WString& secondPath,
                                       const WString& diffPath) {
  Clear();
  CXmlRootDomImporter importer;
  importer.setMaxDepth(kMaxLevels);
  boost::shared_ptr<const sarn::XmlElement> first;
  boost::shared_ptr<const sarn::XmlElement> second;
  if (!importer.Import(firstPath, kRootTag, first) ||
      !importer.Import(secondPath, kRootTag, second) || !GenerateDiffRules(first, second)) {
    return false;
  }
  const auto name = sarn::file_names::extractFileNameWithoutExtFromPathName(firstPath.c_str());
  return WriteDiffFile(diffPath, name.c_str());
}

bool CXmlDiffManager::GenerateEmptyDiffFile(const WString& diffPath, const WString& origName) {
  Clear();
  return WriteDiffFile(diffPath, origName);
}

bool CXmlDiffManager::ApplyDiffFile(const WString& layoutPath, const WString& diffPath,
                                    const WString& outputPath) {
  TRuleEvents ignored;
  return ApplyDiffFile(layoutPath, diffPath, outputPath, ignored);
}

bool CXmlDiffManager::ApplyDiffFile(const WString& layoutPath, const WString& diffPath,
                                    const WString& outputPath, TRuleEvents& events) {
  const auto layout = ReadAndChange(layoutPath, diffPath, events);
  return layout != nullptr && CXmlGenericExporter(outputPath, *layout).Export();
}

bool CXmlDiffManager::CheckDiffFile(const WString& layoutPath, const WString& diffPath,
                                    TRuleEvents& events) {
  return ReadAndChange(layoutPath, diffPath, events) != nullptr;
}

// Null where the layout can't be read.
std::unique_ptr<CGenericXmlElement> CXmlDiffManager::ReadAndChange(const WString& layoutPath,
                                                                   const WString& diffPath,
                                                                   TRuleEvents& events) {
  events.clear();
  Clear();
  boost::shared_ptr<const sarn::XmlElement> root;
  CXmlRootDomImporter importer;
  importer.setMaxDepth(kMaxLevels);
  if (!importer.Import(layoutPath, kRootTag, root) || root == nullptr) return nullptr;
  ReadDiffFile(diffPath);
  ExtractMaxOrigBarId(*root);
  auto layout = std::make_unique<CGenericXmlElement>(*root);
  ApplyDiffRules(*layout, events);
  return layout;
}

}  // namespace kelp
