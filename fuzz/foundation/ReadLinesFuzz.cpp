#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>

#include <sstream>

#include "base/VorListValVorString.h"
#include "containers/TAIndex.h"
#include "foundation/FileUtilities.h"
#include "foundation/Naive.h"

namespace {

constexpr std::size_t kHalf = 2047;

void Expect(bool condition) {
  if (!condition) abort();
}

naive::Fields LinesOf(const std::string& content) {
  std::istringstream stream(content);
  naive::Fields lines;
  for (;;) {
    char buffer[4095];
    stream.getline(buffer, sizeof buffer, '\n');
    if (stream.eof()) return lines;
    const bool isPiece = stream.fail();  // the buffer was full before the line ended
    stream.clear();
    std::string line(buffer, static_cast<std::size_t>(stream.gcount()) - (isPiece ? 0 : 1));
    for (char& c : line) {
      const auto byte = static_cast<unsigned char>(c);
      if (byte < 32 || byte >= 128) c = ' ';
    }
    lines.push_back(line);
  }
}

}  // namespace

// Input: the file; each "~" stands for half of the longest piece of a line.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const int file = memfd_create("lines", MFD_CLOEXEC);
  static const VorString path(("/proc/self/fd/" + std::to_string(file)).c_str());
  std::string content(reinterpret_cast<const char*>(data), size);
  for (std::size_t i = content.find('~'); i < content.size() && i < 100000;
       i = content.find('~', i + 1)) {
    content.replace(i, 1, kHalf, content[i / 2] == '\n' ? 'x' : content[i / 2]);
    i += kHalf - 1;
  }
  Expect(ftruncate(file, 0) == 0);
  Expect(pwrite(file, content.data(), content.size(), 0) == static_cast<ssize_t>(content.size()));

  const naive::Fields want = LinesOf(content);
  VorListValVorString lines;
  Expect(ReadFile(path, lines) == 0);
  Expect(static_cast<std::size_t>(lines.Size()) == want.size());
  TAIndex index;
  Expect(ReadFile(path, index) == 0);
  for (int i = 1; i <= lines.Size(); ++i) {
    Expect(lines[i].View() == want[static_cast<std::size_t>(i - 1)]);
    Expect(index.IsIn(lines[i]) >= 0);
  }
  return 0;
}
