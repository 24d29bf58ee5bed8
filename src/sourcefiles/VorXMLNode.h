#ifndef VOR_SOURCEFILES_VORXMLNODE_H
#define VOR_SOURCEFILES_VORXMLNODE_H

#include <memory>
#include <utility>

#include "base/Export.h"
#include "base/VorString.h"

class VorXMLNodeListener;

/// An element of an XML document: a name, attributes in the order in which they were set, child
/// elements and listeners.
///
/// A node is a handle: its copies stand for the same element, and a change through one of them
/// shows in all.  The empty node stands for no element; it has no parts and takes none.
///
/// Elements form trees: an element has one parent at most and is no ancestor of itself.  Positions
/// are 1-based.
///
/// Ownership: an element lives as long as a handle of it or its parent does.
/// Errors:    0 success, 1 failure with nothing changed.  Running out of memory ends the process.
/// Threads:   a tree and its handles belong to one thread at a time.
class VOR_API VorXMLNode {
 public:
  /// The empty node.
  VorXMLNode() noexcept = default;
  /// A new element.  A name is made of ASCII letters, digits, "_", "-" and ".", and begins with a
  /// letter or "_"; any other \a name makes the empty node.
  explicit VorXMLNode(const VorString& name) noexcept;

  /// 1 for the empty node, else 0.
  int IsNull() const { return _element == nullptr; }
  /// True if both stand for the same element, or for none.
  bool operator==(const VorXMLNode& other) const = default;
  /// "" for the empty node.
  VorString GetName() const noexcept;

  /// Sets an attribute; a new one goes behind the others.  Fails for the empty node and for a
  /// \a name that no element could have.
  int SetAttribute(const VorString& name, const VorString& value) noexcept;
  /// "" if there is none of that name.
  VorString GetAttribute(const VorString& name) const noexcept;
  int AttributeCount() const;
  /// The name of the attribute at a position; "" outside.
  VorString GetAttributeName(int position) const noexcept;

  /// Makes \a child the last child.  Fails if one of the two is empty, if the child has a parent
  /// already, or if it is this element or an ancestor of it.
  int AppendChild(const VorXMLNode& child) noexcept;
  int ChildCount() const;
  /// The child at a position; the empty node outside.
  VorXMLNode GetChild(int position) const;
  /// The empty node if there is none.
  VorXMLNode GetParent() const;

  /// Attaches \a listener, once however often it is added.  Fails for the empty node and null.
  int AddListener(VorXMLNodeListener* listener) noexcept;
  /// Fails if \a listener is not attached.
  int RemoveListener(VorXMLNodeListener* listener);
  int ListenerCount() const;
  /// Notifies the listeners in the order in which they were added.  Those that are removed
  /// meanwhile and were not reached yet are left out, and so are those that are added meanwhile.
  void NotifyListeners() noexcept;

  /// The element with all below it as XML text in UTF-8, a document of its own: one line for each
  /// tag, two blanks more for each level.  "" for the empty node.
  ///
  /// The text is well-formed whatever the values hold.  Bytes that are no UTF-8 and characters that
  /// XML does not allow come out as "?"; line ends and tabs come out as references, so that a
  /// reader sees them again.
  VorString ToText() const noexcept;

 private:
  struct Element;

  explicit VorXMLNode(std::shared_ptr<Element> element) : _element(std::move(element)) {}

  std::shared_ptr<Element> _element;  // null for the empty node
};

#endif  // VOR_SOURCEFILES_VORXMLNODE_H
