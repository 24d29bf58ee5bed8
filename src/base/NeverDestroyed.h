#ifndef VOR_BASE_NEVERDESTROYED_H
#define VOR_BASE_NEVERDESTROYED_H

namespace vor {

/// A static object that exists before the first constructor runs and stays after the last
/// destructor has run.  Constructors and destructors of a tool's static objects may therefore use
/// it.
///
///     constinit vor::NeverDestroyed<VorListPtrX> all;
///     VorListPtrX& X::allOfThem = all.object;
template <typename T>
union NeverDestroyed {
  constexpr NeverDestroyed() : object() {}
  NeverDestroyed(const NeverDestroyed&) = delete;
  NeverDestroyed& operator=(const NeverDestroyed&) = delete;
  constexpr ~NeverDestroyed() {}

  T object;
};

}  // namespace vor

#endif  // VOR_BASE_NEVERDESTROYED_H
