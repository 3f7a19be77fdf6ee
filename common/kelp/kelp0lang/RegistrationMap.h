// Who is registered somewhere: pointers that aren't owned, in ascending order, each live or marked
// for removal. Marking instead of erasing lets a member leave while the members are being told.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <vector>

namespace kelp::detail {

template <class T>
class RegistrationMap {
 public:
  // Makes a member live, also one that was marked for removal.
  void Register(T* member) {
    bool& live = m_members[member];
    if (!live) ++m_changes;
    live = true;
  }

  // Marks a member for removal; an unknown one is ignored.
  void Unregister(T* member) noexcept {
    const auto found = m_members.find(member);
    if (found == m_members.end()) return;
    found->second = false;
    m_anyMarked = true;
    ++m_changes;
  }

  void RemoveUnregistered() noexcept {
    if (!m_anyMarked) return;
    m_anyMarked = false;
    std::erase_if(m_members, [](const auto& member) { return !member.second; });
  }

  // Calls tell(T*) for each live member, in ascending order of pointer. What tell does to the map
  // counts at once: a member that left isn't told any more, and a new one is told if its pointer is
  // above that of the member now being told. The map itself has to outlive the walk.
  template <class Tell>
  void ForEach(Tell&& tell) {
    ListLive();
    const unsigned changes = m_changes;
    for (std::size_t i = 0; i < m_live.size(); ++i) {
      T* const member = m_live[i];
      tell(member);
      if (changes != m_changes) return ForEachAbove(member, tell);
    }
  }

 private:
  void ListLive() {
    if (m_listedChanges == m_changes) return;
    m_live.clear();
    for (const auto& [member, live] : m_members) {
      if (live) m_live.push_back(member);
    }
    m_listedChanges = m_changes;
  }

  // The rest of a walk in which the map has changed: each step looks its place up.
  template <class Tell>
  void ForEachAbove(T* member, Tell& tell) {
    for (;;) {
      auto next = m_members.upper_bound(member);
      while (next != m_members.end() && !next->second) ++next;
      if (next == m_members.end()) return;
      member = next->first;
      tell(member);
    }
  }

  std::map<T*, bool, std::less<>> m_members;
  bool m_anyMarked = false;
  unsigned m_changes = 0;  // of what is live
  // The live members as a plain array, which is walked much faster than the map; up to date while
  // the two counts are equal.
  std::vector<T*> m_live;
  unsigned m_listedChanges = 0;
};

}  // namespace kelp::detail
