#include "fieldbook/points/FaultList.h"

#include <algorithm>

namespace fieldbook {
namespace {

constexpr std::size_t kMostTold = 10;

}  // namespace

void FaultList::Add(int line, const Message& message) {
  ++m_count;
  const auto isLike = [&message](const Kind& kind) {
    return kind.told.front().message.source == message.source;
  };
  auto kind = std::find_if(m_kinds.begin(), m_kinds.end(), isLike);
  if (kind == m_kinds.end()) kind = m_kinds.emplace(m_kinds.end());
  ++kind->count;
  if (kind->told.size() < kMostTold) kind->told.push_back({line, message});
}

std::vector<RowFault> FaultList::Told() const {
  std::vector<RowFault> all;
  for (const Kind& kind : m_kinds) all.insert(all.end(), kind.told.begin(), kind.told.end());
  std::sort(all.begin(), all.end(),
            [](const RowFault& a, const RowFault& b) { return a.line < b.line; });
  return all;
}

std::vector<FaultList::Rest> FaultList::Rests() const {
  std::vector<Rest> rests;
  for (const Kind& kind : m_kinds) {
    if (kind.count == kind.told.size()) continue;
    rests.push_back({kind.count - kind.told.size(), kind.told.back().line});
  }
  return rests;
}

}  // namespace fieldbook
