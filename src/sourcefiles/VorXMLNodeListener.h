#ifndef VOR_SOURCEFILES_VORXMLNODELISTENER_H
#define VOR_SOURCEFILES_VORXMLNODELISTENER_H

#include "base/Export.h"

class VorXMLNode;

/// Told of the notifications of the nodes that it is attached to (see VorXMLNode::AddListener).
///
/// Ownership: nodes do not own their listeners; a listener outlives its attachments.
/// Threads:   called on the thread that notifies.
class VOR_API VorXMLNodeListener {
 public:
  /// \a node notifies its listeners.  This one may attach and detach itself and others meanwhile,
  /// and let go of every handle of the node.
  virtual void Notify(VorXMLNode& node) = 0;

 protected:
  VorXMLNodeListener() = default;
  VorXMLNodeListener(const VorXMLNodeListener&) = default;
  VorXMLNodeListener& operator=(const VorXMLNodeListener&) = default;
  ~VorXMLNodeListener() = default;  // nobody deletes a listener that is not theirs
};

#endif  // VOR_SOURCEFILES_VORXMLNODELISTENER_H
