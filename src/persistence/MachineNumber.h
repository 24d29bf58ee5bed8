#ifndef VOR_PERSISTENCE_MACHINENUMBER_H
#define VOR_PERSISTENCE_MACHINENUMBER_H

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

#include "base/PosixFile.h"

namespace vor {

/// The 32 hexadecimal digits at the start of \a text, folded to 32 bits: the exclusive or of the
/// four groups of eight.  Hyphens between digits are skipped.  No value if \a text starts with
/// anything else, as on a machine that is not set up yet.
inline std::optional<std::uint32_t> FoldMachineId(std::string_view text) {
  constexpr std::size_t kGroup = 8;
  std::array<char, 4 * kGroup> digits;
  std::size_t count = 0;
  for (std::size_t i = 0; i < text.size() && count < digits.size(); ++i) {
    if (text[i] != '-') digits[count++] = text[i];
  }
  if (count < digits.size()) return std::nullopt;
  std::uint32_t folded = 0;
  for (const char* group = digits.begin(); group != digits.end(); group += kGroup) {
    std::uint32_t number = 0;
    const std::from_chars_result end = std::from_chars(group, group + kGroup, number, 16);
    if (end.ec != std::errc() || end.ptr != group + kGroup) return std::nullopt;
    folded ^= number;
  }
  return folded;
}

/// FoldMachineId of the text at the start of a file; no value if it cannot be read.
inline std::optional<std::uint32_t> FoldMachineIdIn(const char* path) {
  char text[64];
  const FileDescriptor file = OpenFile(path, O_RDONLY | O_NONBLOCK);
  const ssize_t size = file.IsOpen() ? ReadSome(file.Get(), text, sizeof text) : 0;
  if (size <= 0) return std::nullopt;
  return FoldMachineId({text, static_cast<std::size_t>(size)});
}

/// The number of a container on the machine \a machine.  Containers made from one image can share
/// the machine identifier, and process numbers start at 1 in each of them.  They differ in the boot
/// of their machine (\a boot) or in the inode of their namespace of process numbers.  Outside
/// containers that namespace is the first of the kernel, and the result is \a machine.
constexpr std::uint32_t ContainerNumber(std::uint32_t machine, std::uint32_t boot,
                                        std::uint64_t processNamespace) {
  constexpr std::uint64_t kFirstProcessNamespace = 0xeffffffc;  // the same in every Linux
  if (processNamespace == kFirstProcessNamespace) return machine;
  // Odd, so that two namespaces of one machine never have the same number.
  constexpr std::uint32_t kSpread = 0x9e3779b1;
  return machine ^ boot ^ static_cast<std::uint32_t>(processNamespace) * kSpread;
}

/// The number of this machine, from its identifier or else from the C library.  It is the same
/// after a restart; in a container, it changes when the container or the machine is restarted.  No
/// value if the machine has neither.
inline std::optional<std::uint32_t> MachineNumber() {
  const std::optional<std::uint32_t> id = FoldMachineIdIn("/etc/machine-id");
  const std::uint32_t machine = id ? *id : static_cast<std::uint32_t>(gethostid());
  if (!id && machine == 0) return std::nullopt;
  struct stat processNamespace;
  if (stat("/proc/self/ns/pid", &processNamespace) != 0) return machine;
  return ContainerNumber(machine, FoldMachineIdIn("/proc/sys/kernel/random/boot_id").value_or(0),
                         processNamespace.st_ino);
}

}  // namespace vor

#endif  // VOR_PERSISTENCE_MACHINENUMBER_H
