#include "kelp0lang/IdRemapper.h"

#include <utility>

namespace kelp {

namespace {

// The value of a key, or 0.
template <class Key, class Value>
Value Find(const std::map<Key, Value>& map, Key key) {
  const auto found = map.find(key);
  return found == map.end() ? Value{} : found->second;
}

}  // namespace

void CIdRemapper::InsertId(std::int64_t oldId, std::int64_t newId) {
  m_ids[oldId] = newId;
}

std::int64_t CIdRemapper::FindId(std::int64_t oldId) const {
  return Find(m_ids, oldId);
}

CRefObjIdRemapper::CRefObjIdRemapper(CRefObjIdRemapper&& other) noexcept {
  m_objects.swap(other.m_objects);
}

CRefObjIdRemapper& CRefObjIdRemapper::operator=(CRefObjIdRemapper&& other) noexcept {
  CRefObjIdRemapper taken(std::move(other));
  m_objects.swap(taken.m_objects);
  return *this;
}

void CRefObjIdRemapper::InsertId(IRefCounter* oldObject, IRefCounter* newObject) {
  m_objects[oldObject] = newObject;
}

IRefCounter* CRefObjIdRemapper::FindId(IRefCounter* oldObject) const {
  return Find(m_objects, oldObject);
}

}  // namespace kelp
