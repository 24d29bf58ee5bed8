#ifndef VOR_PERSISTENCE_HELD_H
#define VOR_PERSISTENCE_HELD_H

#include <utility>

namespace vor {

/// Takes one more reference on a shared object, null for none, and hands the pointer on.
template <typename X>
X* AddRefTo(X* shared) {
  if (shared != nullptr) shared->AddRef();
  return shared;
}

/// Gives a reference on a shared object back, null for none.
template <typename X>
void ReleaseRefOn(X* shared) {
  if (shared != nullptr) shared->Release();
}

/// Owns one reference on a shared object, or none, and releases it at the end of its life.
template <typename X>
class Held {
 public:
  /// Takes over a reference that the caller has: a new object, or what a getter gave.
  explicit Held(X* shared) : _shared(shared) {}
  Held(Held&& other) noexcept : _shared(other.Leave()) {}
  Held& operator=(Held&& other) noexcept {
    ReleaseRefOn(std::exchange(_shared, other.Leave()));
    return *this;
  }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;
  ~Held() { ReleaseRefOn(_shared); }

  X* Get() const { return _shared; }
  X* operator->() const { return _shared; }

  /// Hands the reference on to the caller.
  X* Leave() { return std::exchange(_shared, nullptr); }

 private:
  X* _shared;
};

}  // namespace vor

#endif  // VOR_PERSISTENCE_HELD_H
