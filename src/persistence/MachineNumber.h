#ifndef VOR_PERSISTENCE_MACHINENUMBER_H
#define VOR_PERSISTENCE_MACHINENUMBER_H

#include <fcntl.h>
#include <unistd.h>

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

#include "base/PosixFile.h"

namespace vor {

/// The 32 hexadecimal digits with which \a text begins, folded to 32 bits: the exclusive or of the
/// four groups of eight.  Nothing if it does not begin so, as on a machine that is not set up yet.
inline std::optional<std::uint32_t> FoldMachineId(std::string_view text) {
  constexpr std::size_t kDigits = 32;
  constexpr std::size_t kGroup = 8;
  if (text.size() < kDigits) return std::nullopt;
  std::uint32_t folded = 0;
  for (std::size_t start = 0; start < kDigits; start += kGroup) {
    const char* const group = text.data() + start;
    std::uint32_t number = 0;
    const std::from_chars_result end = std::from_chars(group, group + kGroup, number, 16);
    if (end.ec != std::errc() || end.ptr != group + kGroup) return std::nullopt;
    folded ^= number;
  }
  return folded;
}

/// A number of this machine that stays the same from start to start: the identifier in the file
/// \a idFile, else the number that the C library gives.  Nothing where neither is there.
inline std::optional<std::uint32_t> MachineNumber(const char* idFile = "/etc/machine-id") {
  char text[64];
  const FileDescriptor file = OpenFile(idFile, O_RDONLY | O_NONBLOCK);
  const ssize_t size = file.IsOpen() ? ReadSome(file.Get(), text, sizeof text) : 0;
  if (size > 0) {
    const auto folded = FoldMachineId({text, static_cast<std::size_t>(size)});
    if (folded) return folded;
  }
  const auto number = static_cast<std::uint32_t>(gethostid());
  return number == 0 ? std::nullopt : std::optional(number);
}

}  // namespace vor

#endif  // VOR_PERSISTENCE_MACHINENUMBER_H
