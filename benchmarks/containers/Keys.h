#ifndef VOR_BENCHMARKS_CONTAINERS_KEYS_H
#define VOR_BENCHMARKS_CONTAINERS_KEYS_H

#include <algorithm>
#include <random>
#include <string>
#include <vector>

// Keys that look like the paths of a build tree.

/// \a count sorted paths that end in \a suffix.
inline std::vector<std::string> Paths(int count, const char* suffix) {
  static const char* const kDirectories[] = {"src", "include", "LocalInterfaces", "tests"};
  std::mt19937 random(1);
  std::vector<std::string> paths;
  for (int i = 0; i < count; ++i) {
    paths.push_back("/build/level12/Framework" + std::to_string(i / 400) + "/Module" +
                    std::to_string(i / 20 % 20) + ".m/" + kDirectories[random() % 4] + "/File" +
                    std::to_string(random() % 10000) + "_" + std::to_string(i % 20) + suffix);
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

template <typename T>
void Shuffle(std::vector<T>& items) {
  std::shuffle(items.begin(), items.end(), std::mt19937(2));
}

/// Elements of a pool in an order that repeats too late for the branch predictor to learn it.  They
/// are adjacent in memory, like the words of a file that has just been read.
template <typename T>
std::vector<T> Draws(const std::vector<T>& pool) {
  std::mt19937 random(3);
  const std::size_t size = std::max<std::size_t>(pool.size(), 1 << 16);
  std::vector<T> draws;
  draws.reserve(size);
  while (draws.size() < size) draws.push_back(pool[random() % pool.size()]);
  return draws;
}

#endif  // VOR_BENCHMARKS_CONTAINERS_KEYS_H
