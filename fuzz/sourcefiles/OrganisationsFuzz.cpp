#include <map>

#include "sourcefiles/Responsibles.h"
#include "sourcefiles/VorFwModRespHelper.h"

using namespace responsibles;

// The code of a line, scanned back from its end; "" for a bad line.
static std::string CodeOf(const std::string& line) {
  if (line.size() < 8 || line.back() != '.') return "";
  for (std::size_t dot = line.size() - 1; dot-- > 0;) {
    if (line[dot] != '.') continue;
    return line.size() - dot < 6 ? Upper(line.substr(dot + 1, line.size() - dot - 2)) : "";
  }
  return "";
}

// Input: the organisation file.  A declaration file with its codes makes its lines visible.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile org, kvr;
  static Printed printed;
  const std::string content = Content(data, size);
  org.Write(content);

  std::map<std::string, std::string> want;  // the line of each code
  std::string messages;
  std::string declarations = "a b c d Fw:none Resp:none\n";  // no code is that long
  for (const std::string& line : LinesOf(content)) {
    const std::string code = CodeOf(line);
    if (code.empty()) {
      messages += "# ERROR: Bad line in file " + org.Path() + ": " + Shown(line) + "\n";
    } else if (want.emplace(code, line).second && code.find(' ') == std::string::npos) {
      declarations += "a b c d Fw:" + code + " Resp:" + code + "\n";
    }
  }
  kvr.Write(declarations);

  VorFwModRespHelper helper;
  helper.parseFiles(org.Path().c_str(), kvr.Path().c_str());
  Expect(printed.Take() == messages);
  for (const auto& [code, line] : want) {
    if (code.find(' ') != std::string::npos) continue;
    Expect(IsSame(helper.getFrameworkLongResponsible(code.c_str()), &line));
  }
  Expect(helper.getFrameworkLongResponsible("none") == nullptr);
  return 0;
}
