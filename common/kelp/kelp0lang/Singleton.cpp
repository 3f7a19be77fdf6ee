#include "kelp0lang/Singleton.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace kelp {
namespace {

// In order of enrolment; made by the first one. What has gone by itself leaves a null behind, or
// nothing at the end of the list.
constinit std::vector<ISingleton*>* singletons = nullptr;

ISingleton* EntryAt(std::size_t place) {
  return place < singletons->size() ? (*singletons)[place] : nullptr;
}

}  // namespace

ISingleton::ISingleton() {
  if (singletons == nullptr) singletons = new std::vector<ISingleton*>;
  singletons->push_back(this);
}

// Also where the constructor of the whole object throws, and behind the end of the list.
ISingleton::~ISingleton() {
  if (singletons == nullptr) return;
  const auto entry = std::find(singletons->rbegin(), singletons->rend(), this);
  if (entry == singletons->rend()) return;
  *entry = nullptr;
  while (!singletons->empty() && singletons->back() == nullptr) singletons->pop_back();
}

bool ISingleton::CanDestroy() {
  return true;
}

bool ISingleton::DestroyForLast() {
  return false;
}

void CSingletonManager::DeleteSingletons() {
  if (singletons == nullptr) return;
  // Each takes itself out of the list, perhaps with others that it owned.
  std::size_t last = singletons->size();
  for (std::size_t i = singletons->size(); i-- > 0;) {
    ISingleton* const singleton = EntryAt(i);
    if (singleton == nullptr) continue;
    if (singleton->DestroyForLast()) {
      last = i;
    } else {
      delete singleton;
    }
  }
  delete EntryAt(last);
  singletons->clear();
}

void detail::DeleteSingletonList() {
  CSingletonManager::DeleteSingletons();
  delete singletons;
  singletons = nullptr;
}

}  // namespace kelp
