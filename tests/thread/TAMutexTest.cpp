#include "thread/TAMutex.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/InProcess.h"

namespace {

// A mutex name of this test alone, whose file goes away with it.
class TAMutexFile : public testing::Test {
 protected:
  ~TAMutexFile() override { std::filesystem::remove(_path); }

  const VorString _name = "_test_" + std::to_string(getpid());
  const std::string _path = "/tmp/TAMutex" + std::string(_name.View());
};

// Whether it can be locked and unlocked, twice.
bool Works(TAMutex& mutex) {
  return mutex.Lock() == 0 && mutex.Unlock() == 0 && mutex.Lock() == 0 && mutex.Unlock() == 0;
}

}  // namespace

TEST_F(TAMutexFile, IsMadeOnceOpenToAllAndStays) {
  struct stat first, second;
  {
    TAMutex mutex(_name);
    ASSERT_EQ(stat(_path.c_str(), &first), 0);
    EXPECT_EQ(mutex.CreateSharedMemory(), 1);
    EXPECT_TRUE(Works(mutex));
  }
  TAMutex again(_name);
  ASSERT_EQ(stat(_path.c_str(), &second), 0);
  EXPECT_EQ(first.st_size, 64);
  EXPECT_EQ(first.st_mode & 07777, 0777u);
  EXPECT_EQ(first.st_ino, second.st_ino);
}

// Processes that make the mutex at the same moment, and then count together.
TEST_F(TAMutexFile, ExcludesOtherProcessesFromItsCreationOn) {
  volatile int* const ready = static_cast<volatile int*>(
      mmap(nullptr, 2 * sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  volatile int* const count = ready + 1;
  std::vector<pid_t> children;
  for (int i = 0; i < 4; ++i) {
    children.push_back(fork());
    if (children.back() != 0) continue;
    while (*ready == 0) continue;
    TAMutex mutex(_name);
    for (int k = 0; k < 5000; ++k) {
      if (mutex.Lock() != 0) _exit(1);
      *count = *count + 1;
      mutex.Unlock();
    }
    _exit(0);
  }
  *ready = 1;
  for (const pid_t child : children) {
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }
  EXPECT_EQ(*count, 20000);
}

TEST_F(TAMutexFile, SurvivesAnOwnerThatDies) {
  EXPECT_EQ(InProcess([this] {
              TAMutex(_name).Lock();
              return raise(SIGKILL);
            }),
            -1);
  TAMutex mutex(_name);
  EXPECT_TRUE(Works(mutex));

  // One that went down with the machine.
  const pid_t gone = fork();
  if (gone == 0) _exit(0);
  waitpid(gone, nullptr, 0);
  // The word of the lock comes first and names its owner.
  std::fstream file(_path);
  file.write(reinterpret_cast<const char*>(&gone), sizeof gone);
  file.close();
  EXPECT_TRUE(Works(mutex));
}

TEST_F(TAMutexFile, SurvivesAnObjectThatIsDestroyedWhileLocked) {
  EXPECT_EQ(InProcess([this] {
              TAMutex other(_name + "_other");
              TAMutex(_name).Lock();
              return Works(other) ? 0 : 1;
            }),
            0);
  std::filesystem::remove(_path + "_other");
  TAMutex mutex(_name);
  EXPECT_TRUE(Works(mutex));
}

TEST_F(TAMutexFile, PrintsThatItCouldNotBeMapped) {
  std::ofstream(_path) << "short";  // touching it beyond its end would be fatal
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  TAMutex tooShort(_name);
  EXPECT_EQ(tooShort.Lock(), -1);
  EXPECT_EQ(tooShort.Unlock(), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "TAMutex init failed : mmap error\nmutex not initialized.\nmutex not initialized.\n");
  testing::internal::CaptureStdout();  // the rest prints the same again
  EXPECT_EQ(TAMutex("/no/such/directory").CreateSharedMemory(), -1);
  std::filesystem::remove(_path);
  std::filesystem::create_symlink(_path + "nowhere", _path);  // a planted link
  EXPECT_EQ(TAMutex(_name).CreateSharedMemory(), -1);
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(
      testing::internal::GetCapturedStderr().find("TAMutex::TAMutex()@mmap: Invalid argument\n"
                                                  "TAMutex shared memory creation : mmap failed: "),
      0u);
}
