#ifndef VOR_SOURCEFILES_VORXMLNODELISTENER_H
#define VOR_SOURCEFILES_VORXMLNODELISTENER_H

#include "../base/Export.h"

class VorXMLNode;

/// Receives the notifications of the nodes to which it is attached (see VorXMLNode::AddListener).
///
/// Ownership: nodes do not own their listeners; a listener must outlive its attachments.
/// Threads:   called on the thread that notifies.
class VOR_API VorXMLNodeListener {
 public:
  /// Called when \a node notifies its listeners.  The listener may attach and detach itself and
  /// others meanwhile, and may destroy or change any handle of the node.
  virtual void Notify(VorXMLNode& node) = 0;

 protected:
  VorXMLNodeListener() = default;
  VorXMLNodeListener(const VorXMLNodeListener&) = default;
  VorXMLNodeListener& operator=(const VorXMLNodeListener&) = default;
  ~VorXMLNodeListener() = default;  // never deleted through this class
};

#endif  // VOR_SOURCEFILES_VORXMLNODELISTENER_H
