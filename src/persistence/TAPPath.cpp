// A path is a chain of steps from its last name to its first.  Paths that begin alike share their
// steps, so the paths of all objects of a deep tree take memory in proportion to their number.
//
// Each step also has a jump to an earlier one.  The lengths of the jumps follow the skew binary
// numbers: the jump of a step spans the two jumps before it if these are equally long; otherwise it
// leads to the step before.  So each position is found in a logarithmic number of moves.

#include "persistence/TAPPath.h"

#include "foundation/Tracing.h"
#include "persistence/Owners.h"

struct TAPPath::Step {
  explicit Step(TAPName* first) : name(vor::Reference<TAPName>::To(first)), jump(this) {}
  Step(Step* shared, TAPName* next)
      : name(vor::Reference<TAPName>::To(next)),
        before(Share(shared)),
        jump(shared->Distance() == shared->jump->Distance() ? shared->jump->jump : shared),
        size(shared->size + 1) {}

  int Distance() const { return size - jump->size; }

  static Step* Share(Step* step) {
    ++step->references;
    return step;
  }
  // Not recursive: a chain may be too long for the stack.
  static void Release(Step* step) {
    while (step != nullptr && --step->references == 0) {
      const std::unique_ptr<Step> unused(step);
      step = unused->before;
    }
  }

  vor::Reference<TAPName> name;
  Step* before = nullptr;  // one reference held, or null for the first
  Step* jump;              // the first jumps to itself
  int size = 1;            // names up to this one
  int references = 1;
};

TAPPath::TAPPath(TAPName* name) noexcept : _size(1), _last(new Step(name)) {}

TAPPath::TAPPath(const TAPPath& other) noexcept
    : TARefCounter(), _size(other._size), _last(Step::Share(other._last)) {}

TAPPath::TAPPath(const TAPPath* parent, TAPName* name) noexcept
    : _size(parent->_size + 1), _last(new Step(parent->_last, name)) {}

TAPPath::~TAPPath() {
  Step::Release(_last);
}

TAPName* TAPPath::operator[](int position) const {
  FATAL(position < 1 || position > _size, "TAPPath::[] : bad index");
  const Step* step = _last;
  while (step->size != position) step = step->jump->size >= position ? step->jump : step->before;
  return vor::Reference<TAPName>(step->name).Leave();
}
