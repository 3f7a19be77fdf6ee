// Mementos: an object's state, kept aside so that it can be set again.
//
//   kelp::IMemento* before = point.CreateMemento();  // one reference, the caller's
//   point.Move(1.5, 0.0);
//   point.SetMemento(before);                        // back where it was
//   before->SubReference();
//
// What a memento holds is known only to the class that makes it. Nothing here is locked.
#pragma once

#include "kelp0lang/Export.h"
#include "kelp0lang/Object.h"

namespace kelp {

class IMementable;

// A kept state.
class KELP0LANG_API IMemento : public IRefCounter {
 public:
  // The object whose state is kept; the pointer itself isn't.
  explicit IMemento(const IMementable* object);

 protected:
  ~IMemento() override;

 public:
  // What the state takes, in bytes, as ICmdExecuted::GetMemSize wants it.
  virtual unsigned int GetMemSize() const = 0;
};

// Something whose state can be kept.
class KELP0LANG_API IMementable {
 public:
  virtual ~IMementable();
  // Keeps the present state. The caller gets the one reference.
  virtual IMemento* CreateMemento() const = 0;
  // Whether the present state is that of the memento: then there is nothing to undo.
  virtual bool IsEqualToMemento(const IMemento* memento) const = 0;

 protected:
  // Takes on a state that this object, or one of its class, has kept.
  virtual void DoSetMemento(IMemento* memento) = 0;

 public:
  // Takes on a kept state.
  void SetMemento(IMemento* memento) { DoSetMemento(memento); }
};

// Both in one: an object with holders whose state can be kept. A copy counts 1 reference.
class KELP0LANG_API IMementableObject : public IRefCounter, public IMementable {
 public:
  IMementableObject() = default;
  IMementableObject(const IMementableObject&) = default;
  IMementableObject& operator=(const IMementableObject&) = default;
  ~IMementableObject() override;
};

}  // namespace kelp
