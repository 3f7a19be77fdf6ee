#include "kelp0lang/Object.h"

#include <cstdlib>

#include "sarnutils/Memory.h"

namespace kelp {

Object::~Object() = default;

IRefCounter::~IRefCounter() = default;

void IRefCounter::AddReference() noexcept {
  __atomic_fetch_add(&m_referenceCount, 1, __ATOMIC_SEQ_CST);
}

void IRefCounter::SubReference() noexcept {
  // Only the value that the decrement itself returned decides: once another thread holds the last
  // reference, this object may be gone.
  if (__atomic_fetch_sub(&m_referenceCount, 1, __ATOMIC_SEQ_CST) < 2) delete this;
}

void* IRefCounter::operator new(std::size_t size) {
  return sarn_operator_new(size);
}
void* IRefCounter::operator new[](std::size_t size) {
  return sarn_operator_new(size);
}
void IRefCounter::operator delete(void* block) noexcept {
  std::free(block);
}
void IRefCounter::operator delete[](void* block) noexcept {
  std::free(block);
}

}  // namespace kelp
