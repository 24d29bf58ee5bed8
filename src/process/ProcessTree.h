#ifndef VOR_PROCESS_PROCESSTREE_H
#define VOR_PROCESS_PROCESSTREE_H

#include <cstddef>
#include <string>
#include <vector>

#include "process/ProcessTable.h"

class VorListValVorString;

namespace vor {

/// The process \a root and its descendants, in this order: the root, then repeatedly the row
/// nearest to the end of \a table whose parent is already in the result.
ProcessTable FindTree(int root, const ProcessTable& table);

/// Goes once through \a table and appends to \a pids, identifiers as decimal texts, each process
/// that is not in it if its parent is.
void AppendChildrenInOnePass(const ProcessTable& table, VorListValVorString& pids);

/// The shell commands that kill \a tree from its last to its first entry; one, unless that is
/// longer than \a longest bytes.  The value of the environment variable whence_ro goes before the
/// command; if KVR_UXT_NULL is set, a redirection goes after it.
std::vector<std::string> KillCommands(const ProcessTable& tree, std::size_t longest);

}  // namespace vor

#endif  // VOR_PROCESS_PROCESSTREE_H
