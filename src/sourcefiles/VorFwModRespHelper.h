#ifndef VOR_SOURCEFILES_VORFWMODRESPHELPER_H
#define VOR_SOURCEFILES_VORFWMODRESPHELPER_H

#include <memory>

#include "../base/Export.h"

class VorHashSCMap;

/// Who is responsible for a framework, and for a module of a framework.
///
/// Two text files record it.  The KVR file assigns a short responsible, a code, to frameworks and
/// modules:
///
///     a b c d Fw:FW1 Resp:ab
///     a b c 1234567FW1 Mod:mod1 Resp:xyz
///
/// The QX organisation file has one line for each code.  The code stands between the last two dots
/// of the line, and the whole line is the long responsible:
///
///     Some Team Name.ab.
///
/// The ASCII letters of codes are upper-cased, whatever the locale.  An object reads each file at
/// most once; for other files, construct another object.  A look-up searches at most three hash
/// maps.
///
/// Declare a framework before its modules.  A framework or module that is declared twice keeps its
/// first responsible.  Text after the last newline of a file is dropped, and callers rely on it.  A
/// NUL byte ends its line.  A carriage return before the newline is part of the line: in files with
/// such line ends every organisation line is bad, and every code of the KVR file ends with a
/// carriage return.
///
/// Ownership: the texts returned belong to the object and stay valid while it lives.
/// Errors:    bad lines are reported on standard output, with control characters as C escapes, and
///            skipped.  A file that cannot be read counts as empty.  Running out of memory ends the
///            process.
/// Threads:   an object belongs to one thread at a time; distinct objects are independent.
class VOR_API VorFwModRespHelper {
 public:
  VorFwModRespHelper() noexcept;
  VorFwModRespHelper(const VorFwModRespHelper&) = delete;
  VorFwModRespHelper& operator=(const VorFwModRespHelper&) = delete;
  virtual ~VorFwModRespHelper();

  /// Reads both files.  Always returns 0.
  int parseFiles(const char* orgFile, const char* kvrFile) noexcept;

  /// Reads the organisation file.  Returns 0, also if the file cannot be read.  Returns 1 and
  /// changes nothing if an organisation file was read before.
  ///
  /// A line must have at least eight bytes.  Its last byte must be a dot, with another dot before
  /// it, and one to three bytes between the two.
  int parseQXOrgFile(const char* file) noexcept;

  /// Reads the KVR file.  Returns 0, also if the file cannot be read.  Returns 1 and changes
  /// nothing if a KVR file was read before.
  ///
  /// A line has five fields, each followed by one blank, and a rest.  Two blanks in a row have an
  /// empty field between them.  The rest is "Resp:" and the short responsible, which may hold
  /// blanks.  The first three fields are ignored.  The fifth is "Fw:" and the name of a framework,
  /// or "Mod:" and the name of a module.  The framework of that module is the fourth field without
  /// its first seven bytes, or "" if the field is shorter.  A line with any other fifth field is
  /// ignored without a message.
  int parseKVRFile(const char* file) noexcept;

  /// The short responsible; null if there is none or a name is null.
  const char* getFrameworkShortResponsible(const char* fw) const;
  const char* getModuleShortResponsible(const char* fw, const char* mod) const;

  /// The line of the organisation file for the short responsible; null if there is none.
  const char* getFrameworkLongResponsible(const char* fw) const;
  const char* getModuleLongResponsible(const char* fw, const char* mod) const;

 private:
  struct Framework;

  void _addOrganisation(const char* line, const char* file);
  void _addDeclaration(char* line, const char* file);
  void _addFramework(const char* field, const char* responsible, const char* file);
  void _addModule(const char* framework, const char* module, const char* responsible,
                  const char* file);
  Framework* _findFramework(const char* name) const;
  VorHashSCMap* _modulesOf(const char* framework) const;

  std::unique_ptr<VorHashSCMap> _frameworks;     // of Framework*; null until a file was read
  std::unique_ptr<VorHashSCMap> _organisations;  // of lines by code; null until a file was read
};

#endif  // VOR_SOURCEFILES_VORFWMODRESPHELPER_H
