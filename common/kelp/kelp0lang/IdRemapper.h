// What became of old ids and old objects, so that references to them can be set anew: after a copy,
// a paste or a load.
//
//   kelp::CIdRemapper ids;
//   ids.InsertId(point.Id(), copy.Id());
//   leg.from = ids.FindId(leg.from);
//
// Copies are deep. Nothing here is locked.
#pragma once

#include <cstdint>
#include <map>

#include "kelp0lang/Export.h"
#include "kelp0lang/Object.h"

namespace kelp {

class KELP0LANG_API CIdRemapper {
 public:
  // Replaces what was noted for the old id.
  void InsertId(std::int64_t oldId, std::int64_t newId);
  // 0 where nothing is noted.
  std::int64_t FindId(std::int64_t oldId) const;

 private:
  std::map<std::int64_t, std::int64_t> m_ids;
};

// The same with objects. It takes no references.
class KELP0LANG_API CRefObjIdRemapper {
 public:
  CRefObjIdRemapper() = default;
  CRefObjIdRemapper(const CRefObjIdRemapper&) = default;
  CRefObjIdRemapper& operator=(const CRefObjIdRemapper&) = default;
  // The source is empty afterwards.
  CRefObjIdRemapper(CRefObjIdRemapper&& other) noexcept;
  CRefObjIdRemapper& operator=(CRefObjIdRemapper&& other) noexcept;

  // Replaces what was noted for the old object.
  void InsertId(IRefCounter* oldObject, IRefCounter* newObject);
  // Null where nothing is noted.
  IRefCounter* FindId(IRefCounter* oldObject) const;

 private:
  std::map<IRefCounter*, IRefCounter*> m_objects;
};

}  // namespace kelp
