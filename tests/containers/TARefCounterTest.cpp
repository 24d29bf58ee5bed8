#include "containers/TARefCounter.h"

#include <gtest/gtest.h>

#include <new>

namespace {

class Shared : public TARefCounter {
 public:
  explicit Shared(bool& alive) : _alive(alive) { _alive = true; }
  ~Shared() override { _alive = false; }

 private:
  bool& _alive;
};

TEST(TARefCounter, LivesUntilItsLastReferenceIsReleased) {
  bool alive = false;
  auto* shared = new Shared(alive);
  shared->AddRef();
  shared->Release();
  EXPECT_TRUE(alive);
  shared->Release();
  EXPECT_FALSE(alive);
}

TEST(TARefCounterDeathTest, RefusesSurplusDeletionsAndReleases) {
  bool alive = false;
  auto* shared = new Shared(alive);
  shared->AddRef();
  EXPECT_DEATH(delete shared, "Delete on referenced object");
  shared->Release();
  shared->Release();

  alignas(Shared) unsigned char room[sizeof(Shared)];
  auto* dead = new (room) Shared(alive);
  dead->~Shared();
  // A sanitizer may notice the dead object before the count does.
  EXPECT_DEATH(dead->Release(), "Too many release on object|does not point to an object");
}

}  // namespace
