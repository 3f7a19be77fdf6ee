// Who is registered somewhere: pointers that aren't owned, in ascending order, each live or marked
// for removal. Marking instead of erasing lets a member leave while the members are being told.
#pragma once

#include <functional>
#include <iterator>
#include <map>

namespace kelp::detail {

template <class T>
class RegistrationMap {
 public:
  // Makes a member live, also one that was marked for removal.
  void Register(T* member) { m_members[member] = true; }

  // Marks a member for removal; an unknown one is ignored.
  void Unregister(T* member) noexcept {
    const auto found = m_members.find(member);
    if (found == m_members.end()) return;
    found->second = false;
    m_anyMarked = true;
  }

  void RemoveUnregistered() noexcept {
    if (!m_anyMarked) return;
    m_anyMarked = false;
    std::erase_if(m_members, [](const auto& member) { return !member.second; });
    ++m_erased;
  }

  // Calls tell(T*) for each live member, in ascending order of pointer. What tell does to the map
  // counts at once: a member that left isn't told any more, and a new one is told if its pointer is
  // above that of the member now being told. The map itself has to outlive the walk.
  template <class Tell>
  void ForEach(Tell&& tell) const {
    for (auto it = m_members.begin(); it != m_members.end();) {
      T* const member = it->first;
      const unsigned erased = m_erased;
      if (it->second) tell(member);
      it = erased == m_erased ? std::next(it) : m_members.upper_bound(member);
    }
  }

 private:
  std::map<T*, bool, std::less<>> m_members;
  bool m_anyMarked = false;
  unsigned m_erased = 0;  // removals so far; a walk that sees a new one looks its place up again
};

}  // namespace kelp::detail
