#include "kelp0lang/Memento.h"

namespace kelp {

IMemento::IMemento(const IMementable*) {}

IMemento::~IMemento() = default;

IMementable::~IMementable() = default;

IMementableObject::~IMementableObject() = default;

}  // namespace kelp
