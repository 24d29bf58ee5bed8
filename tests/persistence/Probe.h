#ifndef VOR_TESTS_PERSISTENCE_PROBE_H
#define VOR_TESTS_PERSISTENCE_PROBE_H

#include <utility>

/// A shared object that tells how many references were held on it: make it with new.
template <typename Shared>
class Probe : public Shared {
 public:
  template <typename... Arguments>
  explicit Probe(bool& alive, Arguments&&... arguments)
      : Shared(std::forward<Arguments>(arguments)...), _alive(alive) {
    _alive = true;
  }
  ~Probe() override { _alive = false; }

  /// Releases all references, so nobody else may use what they held.
  int CountDown() {
    const bool& alive = _alive;
    int count = 0;
    for (; alive; ++count) this->Release();
    return count;
  }

 private:
  bool& _alive;
};

#endif  // VOR_TESTS_PERSISTENCE_PROBE_H
