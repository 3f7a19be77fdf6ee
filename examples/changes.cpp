// A point that can be moved, a view that hears of it, and the way back.
#include <kelp0lang/kelp0lang.h>

#include <cstdio>

namespace {

// What changes is a source of events; a command knows how to go back and forth.
class Point : public kelp::CSourceEvent {
 public:
  using CSourceEvent::CSourceEvent;
  double height = 512.25;

  void Raise(double metres) {
    const kelp::CSourceEventScope transaction(this);
    height += metres;
    GetChangeTransactionManager()->Add(new Raised(*this, metres));
  }

 private:
  class Raised : public kelp::ICmdExecuted {
   public:
    Raised(Point& point, double metres) : m_point(point), m_metres(metres) {}
    void Undo() override { Move(-m_metres); }
    void Redo() override { Move(m_metres); }
    unsigned int GetMemSize() override { return sizeof *this; }

   private:
    void Move(double metres) {
      const kelp::CSourceEventScope transaction(&m_point);
      m_point.height += metres;
    }
    Point& m_point;
    double m_metres;
  };
};

class View : public kelp::CSourceEvent::IEvent {
  void OnBeginEvent(kelp::CSourceEvent*) override {}
  void OnBeforeEndEvent(kelp::CSourceEvent*) override {}
  void OnEndEvent(kelp::CSourceEvent* source) override {
    std::printf("the view shows %.2f\n", static_cast<Point*>(source)->height);
  }
};

}  // namespace

int main() {
  kelp::CChangeTransactionManager manager;
  Point* const point = new Point(&manager);  // counts its references
  View view;
  point->Register(&view);

  point->Raise(1.5);
  {
    // Two changes in one transaction: one step to undo, one redraw.
    const kelp::CSourceEventScope transaction(point);
    point->Raise(10);
    point->Raise(0.25);
  }
  manager.Undo();
  manager.Undo();
  std::printf("anything to undo: %s, to redo: %s\n", manager.CanUndo() ? "yes" : "no",
              manager.CanRedo() ? "yes" : "no");
  manager.Redo();

  point->Unregister(&view);
  manager.FreeUndoList();
  point->SubReference();
}
