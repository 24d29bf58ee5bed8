#ifndef VOR_PERSISTENCE_OWNERS_H
#define VOR_PERSISTENCE_OWNERS_H

#include <memory>
#include <utility>

namespace vor {

/// Owns a value on the heap.  A copy owns a copy of the value.
template <typename X>
class Owned {
 public:
  explicit Owned(std::unique_ptr<X> value) noexcept : _value(std::move(value)) {}
  Owned(const Owned& other) noexcept : _value(std::make_unique<X>(*other._value)) {}
  Owned(Owned&& other) noexcept = default;
  Owned& operator=(Owned other) noexcept {
    _value.swap(other._value);
    return *this;
  }
  ~Owned() = default;

  X& operator*() const { return *_value; }
  X* operator->() const { return _value.get(); }

 private:
  std::unique_ptr<X> _value;  // null after a move
};

/// Holds one reference on a shared object (see TARefCounter), or none.  A copy takes one more.
template <typename X>
class Reference {
 public:
  Reference() = default;
  /// Takes one more reference on \a shared, which may be null.
  static Reference To(X* shared) noexcept {
    if (shared != nullptr) shared->AddRef();
    return Reference(shared);
  }
  /// Takes over a reference that the caller has: on a new object, or from a getter.
  static Reference Adopt(X* shared) noexcept { return Reference(shared); }

  Reference(const Reference& other) noexcept : Reference(To(other._shared)) {}
  Reference(Reference&& other) noexcept : _shared(other.Leave()) {}
  Reference& operator=(Reference other) noexcept {
    std::swap(_shared, other._shared);
    return *this;
  }
  ~Reference() {
    if (_shared != nullptr) _shared->Release();
  }

  X* Get() const { return _shared; }
  X* operator->() const { return _shared; }

  /// Passes the reference to the caller, who releases it.
  X* Leave() { return std::exchange(_shared, nullptr); }

 private:
  explicit Reference(X* shared) noexcept : _shared(shared) {}

  X* _shared = nullptr;
};

}  // namespace vor

#endif  // VOR_PERSISTENCE_OWNERS_H
