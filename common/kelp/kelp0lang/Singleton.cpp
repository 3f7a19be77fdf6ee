#include "kelp0lang/Singleton.h"

#include <cstddef>
#include <vector>

namespace kelp {
namespace {

// In order of enrolment; made by the first one.
constinit std::vector<ISingleton*>* singletons = nullptr;

}  // namespace

ISingleton::ISingleton() {
  if (singletons == nullptr) singletons = new std::vector<ISingleton*>;
  singletons->push_back(this);
}

ISingleton::~ISingleton() = default;

bool ISingleton::CanDestroy() {
  return true;
}

bool ISingleton::DestroyForLast() {
  return false;
}

void CSingletonManager::DeleteSingletons() {
  if (singletons == nullptr) return;
  ISingleton* last = nullptr;
  for (std::size_t i = singletons->size(); i-- > 0;) {
    ISingleton* singleton = (*singletons)[i];
    if (singleton->DestroyForLast()) {
      last = singleton;
    } else {
      delete singleton;
    }
  }
  delete last;
  singletons->clear();
}

void detail::DeleteSingletonList() {
  CSingletonManager::DeleteSingletons();
  delete singletons;
  singletons = nullptr;
}

}  // namespace kelp
