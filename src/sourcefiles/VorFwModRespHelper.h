#ifndef VOR_SOURCEFILES_VORFWMODRESPHELPER_H
#define VOR_SOURCEFILES_VORFWMODRESPHELPER_H

#include <memory>

#include "base/Export.h"

class VorHashSCMap;

/// Tells who is responsible for a framework, and for a module of a framework.
///
/// Two text files say it.  The KVR file gives frameworks and modules a short responsible, a code:
///
///     a b c d Fw:FW1 Resp:ab
///     a b c 1234567FW1 Mod:mod1 Resp:xyz
///
/// The QX organisation file has one line for each code, which stands between its last two dots;
/// the whole line is the long responsible:
///
///     Some Team Name.ab.
///
/// Codes are upper-cased.  Each file is read at most once for an object; for new files make a new
/// object.  Look-ups take a look into one to three hash maps, whatever the size of the files.
///
/// A framework is declared before its modules.  What is declared twice keeps its first
/// responsible.  What stands behind the last newline of a file is dropped, and callers rely on it.
/// A NUL byte ends its line; a carriage return before the newline belongs to it, so that files with
/// such line ends have bad organisation lines and codes that end with it.
///
/// Ownership: the texts handed out belong to the object and stay valid while it lives.
/// Errors:    bad lines are reported on standard output and skipped.  A file that cannot be read
///            counts as empty.  Running out of memory ends the process.
/// Threads:   an object belongs to one thread at a time; distinct objects are independent.
class VOR_API VorFwModRespHelper {
 public:
  VorFwModRespHelper() noexcept;
  VorFwModRespHelper(const VorFwModRespHelper&) = delete;
  VorFwModRespHelper& operator=(const VorFwModRespHelper&) = delete;
  virtual ~VorFwModRespHelper();

  /// Reads both files.  Always returns 0.
  int parseFiles(const char* orgFile, const char* kvrFile) noexcept;

  /// Reads the organisation file.  Returns 1 if one was read before, which changes nothing, else
  /// 0, also if the file cannot be read.
  ///
  /// A line is bad unless it has eight bytes, ends with a dot but not with two, and has another dot
  /// with at most three bytes between it and the last one.
  int parseQXOrgFile(const char* file) noexcept;

  /// Reads the KVR file.  Returns 1 if one was read before, which changes nothing, else 0, also if
  /// the file cannot be read.
  ///
  /// A line is five fields, each with one blank behind it (so two blanks have an empty field
  /// between them), and the rest: "Resp:" and the short responsible, which may hold blanks.  The
  /// first three fields mean nothing.  The fifth is "Fw:" and a framework, or "Mod:" and a module
  /// of the framework that the fourth names behind its first seven bytes; a fourth field that is
  /// shorter names the framework "".  A line with another fifth field is ignored in silence.
  int parseKVRFile(const char* file) noexcept;

  /// The code of the one responsible; null if there is none or a name is null.
  const char* getFrameworkShortResponsible(const char* fw) const;
  const char* getModuleShortResponsible(const char* fw, const char* mod) const;

  /// The line of the organisation file for that code; null if there is none.
  const char* getFrameworkLongResponsible(const char* fw) const;
  const char* getModuleLongResponsible(const char* fw, const char* mod) const;

 private:
  struct Framework;

  void AddOrganisation(const char* line, const char* file);
  void AddDeclaration(char* line, const char* file);
  void AddFramework(const char* field, const char* responsible, const char* file);
  void AddModule(const char* framework, const char* module, const char* responsible,
                 const char* file);
  Framework* FindFramework(const char* name) const;
  VorHashSCMap* ModulesOf(const char* framework) const;

  std::unique_ptr<VorHashSCMap> _frameworks;     // of Framework*; null until a file was read
  std::unique_ptr<VorHashSCMap> _organisations;  // of lines by code; null until a file was read
};

#endif  // VOR_SOURCEFILES_VORFWMODRESPHELPER_H
